"""The log: records of ten fields appended, each in the file when the call returns; a log opened, and every
field of it looked at."""
import os
import subprocess

from harness import *

COUNT = os.environ.get("BENCH_LOG_RECORDS", "300000")
plain = build("log_packets")
spdlog = build("log_spdlog", packages=["spdlog"])
path = os.path.join(TMP, "log")
job = Job("log_append", rounds=min(ROUNDS, 5))
job.add("limit_write_ready_made", [plain, "write", path + ".limit", COUNT], measures_itself=True)
job.add("plain_format_write", [plain, "format", path + ".plain", COUNT], measures_itself=True)
job.add("spdlog_flushed_each", [spdlog, path + ".spdlog", COUNT], measures_itself=True)
job.ours("LOG_APPEND", file=path + ".ours", count=COUNT)
job.run()

for count in ("25000", COUNT):
    subprocess.check_call([plain, "format", path, count], stdout=subprocess.DEVNULL)
    for task, key in (("frames", "LOG_OPEN"), ("fields", "LOG_READ")):
        job = Job("log_%s_%s" % (key[4:].lower(), count))
        job.add("plain_" + task, [plain, task, path, count], measures_itself=True)
        job.ours(key, file=path, count=count)
        job.run()
