# LIST FOLDER: the whole relaunch pass as a Python script; FOLDER stands for /Applications.
import os
import plistlib
import sys


def bundle_identifier(executable):
    folder, programs = os.path.split(os.path.dirname(executable))
    bundle, contents = os.path.split(folder)
    if programs.lower() != "macos" or contents.lower() != "contents":
        return None
    try:
        with open(bundle + "/Contents/Info.plist", "rb") as file:
            return plistlib.load(file).get("CFBundleIdentifier")
    except OSError:
        return None


def find(identifier):
    for entry in os.scandir("/proc"):
        if entry.name.isdigit():
            try:
                executable = os.readlink("/proc/%s/exe" % entry.name)
            except OSError:
                continue
            if os.path.exists(executable) and bundle_identifier(executable) == identifier:
                return int(entry.name)
    return None


with open(sys.argv[1], "rb") as file:
    configuration = plistlib.load(file)
find(configuration["kCrashReporterID"])
name = configuration["kMainAppName"]
background = "%s/%s/%s.app/Contents/SharedSupport/%s Background.app" % (sys.argv[2], name, name, name)
if not find(configuration["kMainAppID"]):
    find(configuration["kBackgroundAppID"])
    os.path.exists(background)
