# shellcheck shell=bash
# Running long commands quietly. Sourced by the scripts that build.

# Copies its input to a file, and tells every 15 seconds how far it has come.
tell_progress() { # LABEL FILE
    local line next=$((SECONDS + 5))
    while IFS= read -r line || [[ -n $line ]]; do # the last line may have no line feed
        printf '%s\n' "$line" >&3
        if ((SECONDS >= next)); then
            printf '%s: %.100s\n' "$1" "$line"
            next=$((SECONDS + 15))
        fi
    done 3>"$2"
}

# Runs a command whose output is of interest only when it fails; then it is shown.
run_quietly() { # LABEL COMMAND ARGUMENTS...
    local label=$1 log
    shift
    log=$(mktemp)
    if ! "$@" 2>&1 </dev/null | tell_progress "$label" "$log"; then
        cat "$log" >&2
        rm -f "$log"
        echo "$label: failed: $*" >&2
        return 1
    fi
    rm -f "$log"
}
