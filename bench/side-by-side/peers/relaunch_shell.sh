#!/bin/sh
# LIST FOLDER: the whole relaunch pass with the usual tools of the shell, which know processes by
# patterns of their paths only; FOLDER stands for /Applications.
list=$1
name=$(sed -n '/<key>kMainAppName</{n;s/.*<string>\(.*\)<\/string>.*/\1/p;}' "$list")
pgrep -f "/CrashReporter.app/Contents/MacOS/" >/dev/null
if ! pgrep -f "/$name.app/Contents/MacOS/" >/dev/null; then
    pgrep -f "/$name Background.app/Contents/MacOS/" >/dev/null
    [ -e "$2/$name/$name.app/Contents/SharedSupport/$name Background.app" ] || exit 0
fi
