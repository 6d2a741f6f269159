"""Files copied: a large one with a report for each MiB, and many small ones on a memory file system and on
disk. Data reach the page cache, not the medium; the source is in it."""
from harness import *

MEGABYTES = int(os.environ.get("BENCH_COPY_MB", "512"))
FILES = int(os.environ.get("BENCH_COPY_FILES", "20000"))
PARTS = os.environ.get("BENCH_COPY_PARTS", "large,memory,disk").split(",")
MEMORY = os.environ.get("BENCH_SHM", "/dev/shm")

plain = build("copy_plain")
gio = build("copy_gio", packages=["gio-2.0"])
cp, dd, rsync, gio_tool = have("cp"), have("dd"), have("rsync"), have("gio")


def make_large(path):
    block = bytes((i * 7919 >> 3) & 255 for i in range(1 << 20))
    with open(path, "wb") as file:
        for i in range(MEGABYTES):
            file.write(i.to_bytes(8, "little") + block[8:])
    with open(path, "rb") as file:
        while file.read(1 << 22):
            pass


def large():
    source, destination = os.path.join(TMP, "source"), os.path.join(TMP, "destination")
    make_large(source)

    # As many pages as a run needs are filled and freed before it: a virtual machine may have given free memory
    # back to its host, and would charge whoever comes first for it.
    def before():
        if os.path.exists(destination):
            os.unlink(destination)
        os.sync()
        subprocess.run([plain, "limit", source, destination], stdout=subprocess.DEVNULL, check=True)
        os.unlink(destination)

    job = Job("copy_one_%d_mb" % MEGABYTES, before=before)
    job.add("limit_write_hot_buffer", [plain, "limit", source, destination], measures_itself=True)
    for mode in ("read_write", "in_kernel", "filesystem"):
        job.add("plain_" + mode, [plain, mode, source, destination], measures_itself=True)
    job.add("gio", [gio, "one", source, destination], measures_itself=True)
    job.ours("COPY_ONE", source=source, destination=destination)
    job.ours("COPY_ONE_SAFE", peer="ours_safe", source=source, destination=destination)
    job.run()

    job = Job("copy_one_%d_mb_process" % MEGABYTES, before=before)
    job.add("cp", [cp, source, destination])
    job.add("dd_1_mb", [dd, "if=" + source, "of=" + destination, "bs=1M", "status=none"])
    job.add("rsync_whole", [rsync, "-W", "--inplace", "-t", source, destination])
    job.add("gio_copy", [gio_tool, "copy", source, destination])
    job.ours("COPY_ONE", measures_itself=False, source=source, destination=destination)
    job.run()
    os.unlink(source)
    if os.path.exists(destination):
        os.unlink(destination)


def small(name, root):
    source, link = os.path.join(root, "small"), os.path.join(root, "place")
    os.mkdir(source)
    for i in range(FILES):
        with open(os.path.join(source, "file%05d.dat" % i), "wb") as file:
            file.write(bytes([i & 255]) * 4096)
    places = []

    # Each run gets a folder of its own and nothing is removed before the end: a file system that has just freed
    # so many inodes hands out new ones far more slowly.
    def before():
        os.sync()
        if places:
            os.unlink(link)
        places.append(os.path.join(root, "place%d" % len(places)))
        os.mkdir(places[-1])
        os.symlink(places[-1], link)

    destination = os.path.join(link, "to")
    job = Job("copy_many_" + name, rounds=min(ROUNDS, 5), before=before)
    job.add("limit_read_write", [plain, "read_write-many", source, destination], measures_itself=True)
    job.add("plain_careful", [plain, "careful-many", source, destination], measures_itself=True)
    job.add("plain_filesystem", [plain, "filesystem-many", source, destination], measures_itself=True)
    job.add("gio", [gio, "many", source, destination], measures_itself=True)
    job.ours("COPY_MANY", source=source, destination=destination)
    job.ours("COPY_EACH", peer="ours_each", source=source, destination=destination)
    job.ours("COPY_MANY_SAFE", peer="ours_safe", source=source, destination=destination)
    job.run()

    job = Job("copy_many_%s_process" % name, rounds=min(ROUNDS, 5), before=before)
    job.add("cp_r", [cp, "-r", source, destination])
    job.add("cp_a", [cp, "-a", source, destination])
    job.add("rsync_a_whole", [rsync, "-aW", source + "/", destination])
    job.ours("COPY_MANY", measures_itself=False, source=source, destination=destination)
    job.ours("COPY_EACH", peer="ours_each", measures_itself=False, source=source, destination=destination)
    job.run()
    for place in (source, *places):
        shutil.rmtree(place)
    os.unlink(link)


if "large" in PARTS:
    large()
if "memory" in PARTS and os.path.isdir(MEMORY):
    with tempfile.TemporaryDirectory(prefix="tav-bench.", dir=MEMORY) as folder:
        small("in_memory", folder)
if "disk" in PARTS:
    small("on_disk", TMP)
