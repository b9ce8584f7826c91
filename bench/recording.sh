#!/usr/bin/env bash
# Measures recordings in the desktop program inside of a virtual desktop: recording.sh BIN. Prints a line a value,
# "NAME VALUE", each the median of the runs:
#
#   click_to_first_frame_ms  from the click on "Start Recording" to the first picture of the movie
#   stop_to_review_ms        from the click on the stop item to the review window with the movie
set -euo pipefail
bin=$1
walk=bench pictures=$HOME
scripts=$(dirname "$(readlink -f "$0")")/../scripts/desktop
. "$scripts/watching.sh"
. "$scripts/agent.sh"
runs=7

median() { sort -n | sed -n "$((($1 + 1) / 2))p"; }

# How often the program has written that word, and when it did last, in ms since its start.
count_of() { trace "$1" | wc -l || true; }
last_of() { trace "$1" | tail -n 1 | cut -d ' ' -f 2; }
came() { [ "$(count_of "$1")" -ge "$2" ]; }

overlay() { xdotool search --onlyvisible --name '^Quenby Recording Area' 2>/dev/null | tail -n 1 | grep .; }
no_overlay() { ! overlay; }
# Left of the gauge.
stop_item() {
    local item
    for item in $(xdotool search --onlyvisible --name '^Quenby Status' 2>/dev/null); do
        echo "$(place_of "$item" | cut -d ' ' -f 1) $item"
    done | sort -n | head -n 1 | cut -d ' ' -f 2
}

sign_in
for ((run = 0; run <= runs; run++)); do
    xdotool windowmap "$(xdotool search --name '^Quenby$' | tail -n 1)"
    wait_until 20 "The workspace window" window Quenby
    xdotool windowactivate --sync "$(window Quenby)" key alt+m
    wait_until 20 "A calm screen" is_still
    xdotool key r
    wait_until 20 "The overlay" overlay
    xdotool mousemove 200 150 mousedown 1 mousemove 400 300 mousemove 1000 650 mouseup 1
    sleep 0.5
    click 600 400
    wait_until 20 "A recording" came recording $((run + 1))
    sleep 2
    # shellcheck disable=SC2046
    click $(middle_of "$(stop_item)")
    wait_until 20 "The review window" came review $((run + 1))
    # The first one warms up what the others find in the computer's memory.
    if [ $run -gt 0 ]; then
        echo $(($(last_of recording) - $(last_of selected))) >>"$HOME/starts"
        echo $(($(last_of review) - $(last_of stopped))) >>"$HOME/ends"
    fi
    sleep 1
done
end_quenby
echo "click_to_first_frame_ms $(median $runs <"$HOME/starts")"
echo "stop_to_review_ms $(median $runs <"$HOME/ends")"
