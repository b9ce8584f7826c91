# shellcheck shell=bash
# The screen and its window manager. Sourced, not run.

start_display() {
    local numbers=$QUENBY_DESKTOP_SESSION/display
    # The server looks for a free number by itself, and says it when it takes clients.
    start_part display Xvfb -displayfd 7 -screen 0 "${1}x24" -nolisten tcp -noreset 7>"$numbers"
}

finish_display() {
    wait_for display test -s "$QUENBY_DESKTOP_SESSION/display"
    DISPLAY=:$(cat "$QUENBY_DESKTOP_SESSION/display")
    export DISPLAY
}

start_window_manager() {
    start_part window_manager openbox --sm-disable --startup "touch $QUENBY_DESKTOP_SESSION/managed"
}

finish_window_manager() {
    wait_for window_manager test -e "$QUENBY_DESKTOP_SESSION/managed"
}
