"""Snapshot of all processes, and the lookup of one by its bundle identifier (the wanted one is the
last), among about 200 and 2000 processes."""
import os
import sys

from harness import *

WANTED = "com.example.wanted"


def among(count):
    folder = os.path.join(TMP, "apps")
    os.mkdir(folder)
    walk = build("process_walk", static=True)
    psutil = script("process_psutil.py")
    with crowd(count, folder):
        job = Job("process_snapshot_%d" % count)
        job.add("limit_list_and_links", [walk, "links"], measures_itself=True)
        job.add("plain_walk", [walk, "full"], measures_itself=True)
        job.add("plain_walk_fewer_calls", [walk, "memory"], measures_itself=True)
        job.add("libproc2", [build("process_libproc2", libraries=["-lproc2"])], measures_itself=True)
        job.add("psutil", [PYTHON, psutil, "snapshot"], measures_itself=True)
        job.add("ps_all_fields", [have("ps"), "eww", "-eo", "pid,ppid,uid,exe,args"])
        job.ours("PROCESS_SNAPSHOT")
        job.run()

        job = Job("process_find_%d" % count)
        job.add("limit_plain_find", [walk, "find", WANTED], measures_itself=True)
        job.add("plain_find_existing", [walk, "find-existing", WANTED], measures_itself=True)
        job.add("psutil", [PYTHON, psutil, "find", WANTED], measures_itself=True)
        job.add("pgrep_f", [have("pgrep"), "-f", "Wanted.app"])
        job.ours("PROCESS_FIND", id=WANTED)
        job.run()


if len(sys.argv) > 1:
    among(int(sys.argv[1]))
else:
    in_process_namespaces(__file__, (200, 2000))
