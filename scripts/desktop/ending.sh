#!/usr/bin/env bash
# The end of a virtual desktop. Sourced for its functions; run as "ending.sh SESSION", it is the keeper: it waits until
# its input ends, which it does when the session's script is gone for whatever reason, and then ends what is left.

# The processes that carry the session's name, except those listed in the file, one a line.
session_processes() {
    local session=$1 except=$2 found
    found=$(grep -lzxF -- "QUENBY_DESKTOP_SESSION=$session" /proc/[0-9]*/environ 2>/dev/null | cut -d/ -f3) || true
    [ -n "$found" ] || return 0
    grep -vxF -f "$except" <<<"$found" || true
}

# end_processes SESSION EXCEPT SECONDS: asks them to end, and makes them after that time.
end_processes() {
    local session=$1 except=$2 until=$((SECONDS + $3)) left
    left=$(session_processes "$session" "$except")
    # shellcheck disable=SC2086
    [ -z "$left" ] || kill -TERM $left 2>/dev/null || true
    while left=$(session_processes "$session" "$except"); [ -n "$left" ]; do
        if [ $SECONDS -ge $until ]; then
            # shellcheck disable=SC2086
            kill -KILL $left 2>/dev/null || true
        fi
        sleep 0.02
    done
}

# First what ran on the desktop, which may still need it; then the desktop.
end_session() {
    local session=$1
    trap '' HUP INT TERM
    # The helpers of this function must not carry the name that they look for.
    unset QUENBY_DESKTOP_SESSION
    [ -d "$session" ] || return 0
    touch "$session/parts"
    end_processes "$session" "$session/parts" 10
    end_processes "$session" /dev/null 3
    rm -rf "$session"
}

if [ "${BASH_SOURCE[0]}" = "$0" ]; then
    trap '' HUP INT TERM
    cat >/dev/null
    end_session "$1"
fi
