# shellcheck shell=bash
# The sample suite in the hands of its installer and its user: functions for the demonstration and for
# the end-to-end tests, which source this file and run inside private-root.
#
# Wanted before: programs, the folder with the built sample_* programs. ROOT is the applications folder.
: "${programs:?is to be set before suite.sh is sourced}"

suite_name="Sample Suite"
main_id=org.example.SampleSuite # also in main_app.cpp
background_id=org.example.SampleSuite.Background
crash_reporter_id=org.example.SampleSuite.CrashReporter

# --- where things lie ---

main_bundle() { # ROOT
    echo "$1/$suite_name/$suite_name.app"
}

background_bundle() { # ROOT
    echo "$(main_bundle "$1")/Contents/SharedSupport/$suite_name Background.app"
}

crash_reporter_bundle() { # ROOT
    echo "$1/$suite_name/Crash Reporter.app"
}

tool_bundle() { # ROOT
    echo "$1/$suite_name Installer/Installer Helper.app"
}

executable_of() { # BUNDLE
    echo "$1/Contents/MacOS/$(basename "$1" .app)"
}

# --- installing ---

# A property list of texts; none of them may need an escape.
write_dictionary() { # FILE [KEY TEXT]...
    local file=$1
    shift
    {
        echo '<?xml version="1.0" encoding="UTF-8"?>'
        echo '<plist version="1.0">'
        echo '<dict>'
        (($# == 0)) || printf '    <key>%s</key><string>%s</string>\n' "$@"
        echo '</dict>'
        echo '</plist>'
    } >"$file"
}

write_info_plist() { # BUNDLE IDENTIFIER VERSION
    write_dictionary "$1/Contents/Info.plist" CFBundleIdentifier "$2" \
        CFBundleExecutable "$(basename "$(executable_of "$1")")" CFBundleVersion "$3"
}

write_bundle() { # BUNDLE IDENTIFIER VERSION PROGRAM
    mkdir -p "$1/Contents/MacOS"
    write_info_plist "$1" "$2" "$3"
    cp "$4" "$(executable_of "$1")"
}

# The main application with the background application inside.
write_main_bundle() { # VERSION ROOT
    write_bundle "$(main_bundle "$2")" "$main_id" "$1" "$programs/sample_main_app_$1"
    write_bundle "$(background_bundle "$2")" "$background_id" "$1" "$programs/sample_background_app_$1"
}

install_suite() { # VERSION ROOT
    write_main_bundle "$1" "$2"
    write_bundle "$(crash_reporter_bundle "$2")" "$crash_reporter_id" "$1" \
        "$programs/sample_crash_reporter_$1"
}

# Puts another version in the place of the running main application, as installers do: the new bundle
# is complete before it takes its place, and the old one is `removed` at once or moved `aside` first.
replace_main_application() { # VERSION ROOT removed|aside
    local bundle new_root=$2/.new old="$2/$suite_name/.old.app"
    bundle=$(main_bundle "$2")
    write_main_bundle "$1" "$new_root"
    case $3 in
    removed)
        rm -r "$bundle"
        mv "$(main_bundle "$new_root")" "$bundle"
        ;;
    aside)
        mv "$bundle" "$old"
        mv "$(main_bundle "$new_root")" "$bundle"
        rm -r "$old"
        ;;
    *) return 2 ;;
    esac
    rm -r "$new_root"
}

# The tool in a bundle of its own, with the list that it reads. Pairs given here replace the suite's.
install_relaunch_tool() { # TOOL ROOT [KEY TEXT]...
    local tool=$1 bundle
    bundle=$(tool_bundle "$2")
    shift 2
    if (($# == 0)); then
        set -- kCrashReporterID "$crash_reporter_id" kMainAppName "$suite_name" \
            kMainAppID "$main_id" kBackgroundAppID "$background_id"
    fi
    mkdir -p "$bundle/Contents/MacOS" "$bundle/Contents/Resources"
    cp "$tool" "$bundle/Contents/MacOS/RelaunchAfterInstall"
    write_dictionary "$bundle/Contents/Resources/RelaunchAfterInstall.plist" "$@"
}

installed_tool() { # ROOT
    echo "$(tool_bundle "$1")/Contents/MacOS/RelaunchAfterInstall"
}

# --- processes ---

# Tries a command every 20 ms until it succeeds; fails when the time is over.
wait_until() { # SECONDS COMMAND ARGUMENTS...
    local end=$((SECONDS + $1))
    shift
    until "$@"; do
        ((SECONDS <= end)) || return 1
        sleep 0.02
    done
}

# The running processes that were started by this path, whatever lies there now; one a line.
processes_of() { # EXECUTABLE
    local folder argument
    for folder in /proc/[0-9]*; do
        argument=
        { IFS= read -r -d '' argument <"$folder/cmdline"; } 2>/dev/null || continue
        if [[ $argument == "$1" ]]; then
            echo "${folder#/proc/}"
        fi
    done
}

# The number of such processes is this one.
has_processes() { # EXECUTABLE NUMBER
    [[ $(processes_of "$1" | wc -l) == "$2" ]]
}

# Gone, or waited for by nobody yet.
has_ended() { # PID
    ! readlink -q "/proc/$1/exe" >/dev/null
}

# It is this program already, and far enough to end in order on SIGTERM, which it catches.
has_started() { # PID EXECUTABLE
    local field mask
    [[ $(processes_of "$2") =~ (^|$'\n')$1($|$'\n') ]] || return 1
    while read -r field mask; do
        if [[ $field == SigCgt: ]]; then
            ((16#$mask >> 14 & 1)) # signal 15
            return
        fi
    done <"/proc/$1/status"
    return 1
}

# Asked of the very program that runs, also after its file was replaced.
version_of() { # PID
    "/proc/$1/exe" --version
}

# Starts an application as a desktop does: by its absolute path, in a session of its own. Its process is
# `started`, a child of this shell.
start_application() { # BUNDLE [ARGUMENTS...]
    local executable
    executable=$(executable_of "$1")
    shift
    setsid "$executable" "$@" </dev/null >/dev/null 2>&1 &
    started=$!
    wait_until 10 has_started "$started" "$executable"
}

start_main_application() { # ROOT [ARGUMENTS...]
    start_application "$(main_bundle "$1")" "${@:2}"
    wait_until 10 owns_name "$started" "$main_id"
}

# Ends whatever runs of the suite.
stop_suite() { # ROOT
    local executable process
    for executable in "$(executable_of "$(main_bundle "$1")")" \
        "$(executable_of "$(background_bundle "$1")")" \
        "$(executable_of "$(crash_reporter_bundle "$1")")"; do
        for process in $(processes_of "$executable"); do
            kill -TERM "$process" 2>/dev/null || true
            wait_until 10 has_ended "$process"
        done
    done
}

# How a child of this shell ended: with status 0.
ended_in_order() { # PID
    local status=0
    wait_until 5 has_ended "$1" || return 1
    wait "$1" || status=$?
    ((status == 0))
}

# One process alone runs, another one than before, of this version.
runs_anew() { # EXECUTABLE OLD-PID VERSION
    local process
    process=$(processes_of "$1")
    [[ $process =~ ^[0-9]+$ && $process != "$2" && $(version_of "$process") == "$3" ]]
}

is_untouched() { # PID EXECUTABLE
    [[ $(processes_of "$2") == "$1" ]]
}

# --- the session bus ---

# The process that owns a name; nothing when nobody does.
owner_of_name() { # NAME
    dbus-send --session --print-reply=literal --dest=org.freedesktop.DBus / \
        org.freedesktop.DBus.GetConnectionUnixProcessID "string:$1" 2>/dev/null | awk '{ print $2 }'
}

owns_name() { # PID NAME
    [[ $1 && $(owner_of_name "$2") == "$1" ]]
}

# --- checks ---

# How many checks have failed.
failures=0

# Prints a fact and whether the command confirms it.
check() { # FACT COMMAND ARGUMENTS...
    if "${@:2}"; then
        printf 'OK      %s\n' "$1"
    else
        printf 'FAILED  %s\n' "$1"
        failures=$((failures + 1))
    fi
}
