# shellcheck shell=bash
# What a process and those that it started hold in memory. Sourced, not run.

# The process and those that it started.
family() {
    local pid=$1 child
    echo "$pid"
    cat /proc/"$pid"/task/*/children 2>/dev/null | tr ' ' '\n' | while read -r child; do family "$child"; done
}

# memory_mib PID: proportional: what several share counts as their shares.
memory_mib() {
    local pid
    for pid in $(family "$1"); do cat "/proc/$pid/smaps_rollup"; done 2>/dev/null |
        awk '/^Pss:/ { sum += $2 } END { printf "%.1f\n", sum / 1024 }'
}
