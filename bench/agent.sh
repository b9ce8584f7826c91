#!/usr/bin/env bash
# Measures the desktop program inside of a virtual desktop: agent.sh BIN. Prints a line a value, "NAME VALUE":
#
#   launch_ms               from exec to the visible gauge with a stored sign-in, the median of the runs
#   idle_*                  60 s with nothing to do, in the tray alone, before any web page
#   after_page_*            the same after a web page was shown and closed
#
# where * is: cpu_ticks (1/100 s), wakeups (voluntary context switches of all threads), memory_mib (proportional, with
# the processes of the web engine), own_memory_mib (of that, neither programs nor libraries), bus_messages (to or from
# the process), repaints (of the status item).
set -euo pipefail
bin=$1
walk=bench pictures=$HOME
scripts=$(dirname "$(readlink -f "$0")")/../scripts/desktop
. "$scripts/watching.sh"
. "$scripts/agent.sh"
. "$scripts/../../bench/memory.sh"
runs=7 idle_seconds=60

median() { sort -n | sed -n "$((($1 + 1) / 2))p"; }

cpu_ticks() { sed 's/.*) //' "/proc/$quenby/stat" | awk '{ print $12 + $13 }'; }
# A thread's number and its voluntary context switches, a line each.
wakeups() { awk '/^Pid:/ { thread = $2 } /^voluntary_ctxt_switches/ { print thread, $2 }' /proc/"$quenby"/task/*/status; }
# wakeups_since FILE: those after the ones in the file. A thread that has ended since takes its own with it.
wakeups_since() { wakeups | awk 'NR == FNR { before[$1] = $2; next } { sum += $2 - before[$1] } END { print sum + 0 }' "$1" -; }
repaints() { trace repaint | wc -l || true; }

# The process's own names on the bus, one a line: each of its connections has one.
bus_names() {
    local name
    gdbus call --session --dest org.freedesktop.DBus --object-path /org/freedesktop/DBus \
        --method org.freedesktop.DBus.ListNames | grep -o "':[0-9.]*'" | tr -d "'" | while read -r name; do
        gdbus call --session --dest org.freedesktop.DBus --object-path /org/freedesktop/DBus \
            --method org.freedesktop.DBus.GetConnectionUnixProcessID "$name" 2>/dev/null |
            grep -q "uint32 $quenby," && echo "$name"
    done || true
}

# Quiet is when a whole two seconds have passed without work.
is_quiet() {
    local before
    before=$(cpu_ticks)
    sleep 2
    [ "$(cpu_ticks)" -eq "$before" ]
}

# measure_idle PREFIX
measure_idle() {
    wait_until 60 "An end of the work after the start" is_quiet
    bus_names >"$HOME/names"
    stdbuf -oL dbus-monitor --session --profile >"$HOME/bus.log" 2>/dev/null &
    local monitor=$!
    wait_until 10 "The recording of the bus" test -s "$HOME/bus.log"
    sleep 1 # what the monitor's own arrival caused
    local ticks paints start
    start=$(wc -l <"$HOME/bus.log") paints=$(repaints) ticks=$(cpu_ticks)
    wakeups >"$HOME/wakeups"
    sleep $idle_seconds
    echo "$1_cpu_ticks $(($(cpu_ticks) - ticks))"
    echo "$1_wakeups $(wakeups_since "$HOME/wakeups")"
    kill $monitor
    wait $monitor || true
    echo "$1_bus_messages $(tail -n +$((start + 1)) "$HOME/bus.log" | cut -f 4,5 | grep -cwFf "$HOME/names" || true)"
    echo "$1_repaints $(($(repaints) - paints))"
    echo "$1_memory_mib $(memory_mib "$quenby")"
    echo "$1_own_memory_mib $(own_memory_mib "$quenby")"
}

close_workspace() {
    window Quenby >/dev/null || return 0
    xdotool windowactivate --sync "$(window Quenby)" key alt+F4
    wait_until 20 "The closing of the workspace window" no_window Quenby
}

sign_in
close_workspace
measure_idle after_page
end_quenby

for ((run = 0; run <= runs; run++)); do
    start_quenby
    wait_until 60 "The gauge" trace gauge
    # The first one warms up what the others find in the computer's memory.
    [ $run -eq 0 ] || trace gauge | head -n 1 | cut -d ' ' -f 2 >>"$HOME/launches"
    end_quenby
done
echo "launch_ms $(median $runs <"$HOME/launches")"

start_quenby --hidden
wait_until 60 "The gauge" trace gauge
measure_idle idle
end_quenby
