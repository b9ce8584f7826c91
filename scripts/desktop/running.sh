# shellcheck shell=bash
# The life of a virtual desktop's session, from its name to the end of its command. Sourced, not run, with parts.sh and
# ending.sh.

begin_session() { # begin_session FOLDER-OF-THE-SCRIPTS
    QUENBY_DESKTOP_SESSION=$(mktemp -d "${TMPDIR:-/tmp}/quenby-desktop.XXXXXX")
    # The keeper waits for the end of this pipe, which only this script holds: even if it is killed, all is ended.
    exec 9> >(exec setsid --fork "$1/ending.sh" "$QUENBY_DESKTOP_SESSION" >/dev/null 2>&1)
    export QUENBY_DESKTOP_SESSION
    trap 'end_session "$QUENBY_DESKTOP_SESSION"' EXIT
    trap 'exit 129' HUP
    trap 'exit 130' INT
    trap 'exit 143' TERM
}

# Ends the script with the command's exit code.
run_command() { # run_command COMMAND...
    # In the background, because bash answers no signal while it waits for a command in the foreground.
    exec 8<&0
    "$@" <&8 8<&- 9>&- &
    local command_pid=$! code=0
    exec 8<&-
    wait "$command_pid" || code=$?
    exit "$code"
}
