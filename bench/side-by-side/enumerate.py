"""Folders listed through a filter by name that then asks for the size: 100 000 files in one folder,
200 000 in 20 000 folders; warm caches. And an item and its size for everything."""
from harness import *

tree = build("enumerate_tree", static=True)
walk, filesystem = build("enumerate_walk", static=True), build("enumerate_filesystem")
find, fd = have("find"), have("fdfind")

for shape, files, folders in (("flat", 100000, 1), ("deep", 200000, 20000)):
    folder = os.path.join(TMP, shape)
    subprocess.run([tree, folder, str(files), str(folders)], check=True)

    job = Job("enumerate_" + shape, rounds=min(ROUNDS, 5))
    job.add("limit_names", [walk, "names", folder], measures_itself=True)
    job.add("lazy_walk", [walk, "lazy", folder], measures_itself=True)
    job.ours("ENUMERATE", dir=folder)
    job.run()

    job = Job("enumerate_process_" + shape, rounds=min(ROUNDS, 5))
    job.add("find", [find, folder, "-type", "f", "-name", "*.jpg", "-size", "+0"])
    for threads in (1, 2):
        job.add("fd_%d_threads" % threads, [fd, "-u", "-j", str(threads), "-t", "f", "-S", "+1b", "-e", "jpg", ".", folder])
    job.ours("ENUMERATE_ONCE", dir=folder)
    job.run()

    job = Job("enumerate_sizes_" + shape, rounds=min(ROUNDS, 5))
    job.add("eager_walk", [walk, "eager", folder], measures_itself=True)
    job.add("std_filesystem", [filesystem, folder], measures_itself=True)
    job.ours("ENUMERATE_SIZES", dir=folder)
    job.run()
    shutil.rmtree(folder)
