"""What the jobs share: building the peers, running them in turn, telling the measurements.

Every measurement is one line of JSON on standard output:
  {"job": ..., "peer": ..., "metric": ..., "value": median, "n": runs, "min": ..., "max": ...}
The peers of a job are run in turn (A B C A B C ...), so that a drift of the machine's speed hits all
of them alike; the first round is a warm-up and is not counted.
"""
import atexit
import contextlib
import json
import os
import shlex
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))
PEERS = os.path.join(HERE, "peers")
ROUNDS = int(os.environ.get("BENCH_N", "7"))
ONLY = set(filter(None, os.environ.get("BENCH_PEERS", "").split(",")))
PYTHON = os.environ.get("BENCH_PYTHON", "/usr/bin/python3")
TMP = tempfile.mkdtemp(prefix="tav-bench.", dir=os.environ.get("BENCH_TMP"))
BIN = os.environ.get("BENCH_BIN") or os.path.join(TMP, "bin")
os.makedirs(BIN, exist_ok=True)
atexit.register(shutil.rmtree, TMP, ignore_errors=True)


def note(*words):
    print("#", *words, file=sys.stderr, flush=True)


def script(name):
    return os.path.join(PEERS, name)


def build(name, packages=(), libraries=(), static=False):
    """Compiles peers/NAME.cpp; answers the program's path, or None with a remark when that fails."""
    program = os.path.join(BIN, name)
    source = script(name + ".cpp")
    if os.path.exists(program) and os.path.getmtime(program) > os.path.getmtime(source):
        return program
    command = [os.environ.get("CXX", "g++"), "-std=c++20", "-O2", "-w", source, "-o", program]
    if static:
        command.append("-static")
    if packages:
        flags = subprocess.run(["pkg-config", "--cflags", "--libs", *packages], capture_output=True, text=True)
        if flags.returncode:
            note("skipped", name, "(not installed:", " ".join(packages) + ")")
            return None
        command += shlex.split(flags.stdout)
    command += libraries
    built = subprocess.run(command, capture_output=True, text=True)
    if built.returncode:
        note("skipped", name, "(does not build)", built.stderr[:400])
        return None
    return program


def build_gnustep(name):
    """Compiles peers/NAME.m against GNUstep Base; None with a remark when that fails."""
    program = os.path.join(BIN, name)
    command = "gcc -x objective-c $(gnustep-config --objc-flags) -std=gnu11 -O2 -w %s -o %s $(gnustep-config --base-libs)"
    built = subprocess.run(command % (shlex.quote(script(name + ".m")), shlex.quote(program)), shell=True,
                           capture_output=True, text=True, cwd=TMP, env=dict(os.environ, HOME=TMP))
    if built.returncode:
        note("skipped", name, "(not installed, or does not build)", built.stderr[:400])
        return None
    return program


def have(program):
    """The path of an installed program, or None with a remark."""
    path = shutil.which(program)
    if not path:
        note("skipped", program, "(not installed)")
    return path


def in_process_namespaces(job, counts):
    """Runs the job's script again for each count, as process 1's child of a process namespace of its
    own, with which all that it starts will end."""
    for name in ("process_crowd", "run_timed"):
        build(name, static=True)
    own = ["unshare", "--pid", "--fork", "--kill-child", "--mount-proc"]
    if os.geteuid() != 0:
        own += ["--user", "--map-root-user"]
    for count in counts:
        subprocess.run([*own, PYTHON, os.path.abspath(job), str(count)], env=dict(os.environ, BENCH_BIN=BIN), check=True)


@contextlib.contextmanager
def crowd(count, folder):
    """That many sleeping processes, some of them run from applications in the folder."""
    ready = os.path.join(folder, "ready")
    process = subprocess.Popen([build("process_crowd", static=True), str(count), folder, ready])
    try:
        while not os.path.exists(ready):
            if process.poll() is not None:
                sys.exit("process_crowd ended with status %d" % process.returncode)
            time.sleep(0.05)
        yield
    finally:
        process.kill()
        process.wait()


class Job:
    def __init__(self, name, rounds=None, before=None):
        """`before` is called before every run and is not measured."""
        self.name, self.rounds, self.before, self.peers = name, rounds or ROUNDS, before, []

    def add(self, peer, command, expect=0, measures_itself=False):
        """A peer that `build` or `have` could not provide (command[0] is None) is left out. Lines
        "RESULT metric value" of one that measures itself become metrics; wall_ms and peak_rss_mb of
        the whole process are always taken. `expect`: an exit status that is as good as 0."""
        if command[0] and not (ONLY and not peer.startswith("ours") and peer not in ONLY):
            self.peers.append((peer, [str(word) for word in command], {0, expect}, measures_itself))

    def ours(self, key, peer="ours", measures_itself=True, **fields):
        """Adds our own program when BENCH_OURS_<key> holds a command; {name} in it is replaced by
        this job's data."""
        text = os.environ.get("BENCH_OURS_" + key)
        if text:
            command = [word.format(**fields) for word in shlex.split(text)]
            self.add(peer, command, measures_itself=measures_itself)
        else:
            note(self.name + ": without ours, BENCH_OURS_" + key + " is not set")

    def run(self):
        timer = build("run_timed", static=True)
        output = os.path.join(TMP, "output")
        values = {}
        for turn in range(self.rounds + 1):
            for entry in list(self.peers):
                peer, command, good, measures_itself = entry
                target = output if measures_itself else "/dev/null"
                if self.before:
                    self.before()
                ran = subprocess.run([timer, target, *command], capture_output=True, text=True)
                told = ran.stdout.split()
                status = int(told[4]) if len(told) == 5 else None
                if status not in good:
                    reason = "cannot be started" if status is None else "too slow" if status == 137 else "status %d" % status
                    note("skipped", self.name, peer, "(" + reason + ")", ran.stderr[-300:])
                    self.peers.remove(entry)
                    values.pop(peer, None)
                    continue
                if turn == 0:
                    continue
                metrics = values.setdefault(peer, {})
                metrics.setdefault("wall_ms", []).append(int(told[0]) / 1e6)
                metrics.setdefault("peak_rss_mb", []).append(int(told[3]) / 1024)
                if measures_itself:
                    with open(output, errors="replace") as file:
                        for words in map(str.split, file):
                            if len(words) == 3 and words[0] == "RESULT":
                                metrics.setdefault(words[1], []).append(float(words[2]))
        for peer, metrics in values.items():
            for metric, found in metrics.items():
                tell(self.name, peer, metric, found)


def tell(job, peer, metric, values):
    short = lambda value: float("%.6g" % value)
    print(json.dumps(dict(job=job, peer=peer, metric=metric, value=short(statistics.median(values)), n=len(values),
                          min=short(min(values)), max=short(max(values)))), flush=True)
