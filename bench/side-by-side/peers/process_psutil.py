# snapshot | find IDENTIFIER: all processes, or the first of a bundle identifier, with psutil.
import os
import plistlib
import statistics
import sys
import time

import psutil


def snapshot():
    return [p.info for p in psutil.process_iter(["pid", "ppid", "uids", "exe", "cmdline", "environ"])]


def find(identifier):
    for process in psutil.process_iter(["exe"]):
        executable = process.info["exe"]
        if not executable or not os.path.exists(executable):
            continue
        folder, programs = os.path.split(os.path.dirname(executable))
        bundle, contents = os.path.split(folder)
        if programs.lower() != "macos" or contents.lower() != "contents":
            continue
        try:
            with open(bundle + "/Contents/Info.plist", "rb") as file:
                if plistlib.load(file).get("CFBundleIdentifier") == identifier:
                    return process.pid
        except OSError:
            pass
    return None


def timed(call):
    times = []
    for _ in range(5):
        begin = time.perf_counter()
        answer = call()
        times.append(time.perf_counter() - begin)
    return statistics.median(times), answer


if sys.argv[1] == "find":
    seconds, answer = timed(lambda: find(sys.argv[2]))
    print("RESULT found", int(answer is not None))
else:
    seconds, answer = timed(snapshot)
    print("RESULT processes", len(answer))
print("RESULT pass_us", seconds * 1e6)
