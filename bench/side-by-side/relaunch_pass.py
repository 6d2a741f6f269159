"""One whole relaunch pass from start to exit, with nothing to stop and nothing to start (the common
case right after an installation), among 20 and 200 other processes."""
import contextlib
import os
import subprocess
import sys
import time

from harness import *

LIST = os.path.join(HERE, "RelaunchAfterInstall.plist")


@contextlib.contextmanager
def message_bus():
    """The address of a message bus of our own, or None."""
    if not have("dbus-daemon"):
        yield None
        return
    configuration, socket = os.path.join(TMP, "bus.conf"), os.path.join(TMP, "bus.socket")
    with open(configuration, "w") as file:
        file.write('<busconfig><type>session</type><listen>unix:path=%s</listen><auth>EXTERNAL</auth>'
                   '<policy context="default"><allow send_destination="*" eavesdrop="true"/>'
                   '<allow eavesdrop="true"/><allow own="*"/></policy></busconfig>' % socket)
    daemon = subprocess.Popen(["dbus-daemon", "--nofork", "--config-file=" + configuration], stderr=subprocess.DEVNULL)
    try:
        for _ in range(100):
            if os.path.exists(socket):
                break
            time.sleep(0.05)
        yield "unix:path=" + socket
    finally:
        daemon.terminate()
        daemon.wait()


def among(count):
    # Stands for /Applications: the main application is installed, but has no background application.
    folder = os.path.join(TMP, "apps")
    os.makedirs(os.path.join(folder, "Suite", "Suite.app", "Contents", "MacOS"))
    bus_name, bus_path = "org.freedesktop.DBus", "/org/freedesktop/DBus"
    with crowd(count, folder), message_bus() as bus:
        job = Job("relaunch_pass_%d" % count, rounds=max(ROUNDS, 21))
        job.add("limit_empty_static", [build("empty", static=True)])
        job.add("empty_dynamic_c++", [build("empty_with_streams")])
        job.add("plain_pass_static", [build("relaunch_plain", static=True), LIST, folder])
        job.add("shell_pgrep", ["/bin/sh", script("relaunch_shell.sh"), LIST, folder])
        job.add("python", [PYTHON, "-I", script("relaunch_python.py"), LIST, folder])
        job.add("gjs", [have("gjs"), script("relaunch_gjs.js"), LIST, folder])
        if bus:
            job.add("busctl_call", [have("busctl"), "--address=" + bus, "call", bus_name, bus_path, bus_name, "ListNames"])
            job.add("gdbus_call", [have("gdbus"), "call", "--address", bus, "--dest", bus_name, "--object-path", bus_path,
                                   "--method", bus_name + ".ListNames"])
        job.ours("RELAUNCH")
        job.run()


if len(sys.argv) > 1:
    among(int(sys.argv[1]))
else:
    in_process_namespaces(__file__, (20, 200))
