# parse-xml|parse-binary|write-xml|write-binary FILE: Python's own plistlib.
import plistlib
import statistics
import sys
import time

job, path = sys.argv[1:3]
with open(path, "rb") as file:
    text = file.read()
times = []
for _ in range(3):
    begin = time.perf_counter()
    value = plistlib.loads(text)
    seconds = time.perf_counter() - begin
    if job.startswith("write"):
        begin = time.perf_counter()
        plistlib.dumps(value, fmt=plistlib.FMT_XML if job == "write-xml" else plistlib.FMT_BINARY)
        seconds = time.perf_counter() - begin
    times.append(seconds)
print("RESULT", "write_ms" if job.startswith("write") else "parse_ms", statistics.median(times) * 1e3)
