# shellcheck shell=bash
# What a process and those that it started hold in memory. Sourced, not run.

# The process and those that it started.
family() {
    local pid=$1 child
    echo "$pid"
    cat /proc/"$pid"/task/*/children 2>/dev/null | tr ' ' '\n' | while read -r child; do family "$child"; done
}

# memory_mib PID: proportional: what several share counts as their shares.
memory_mib() { rollup_mib "$1" Pss; }

# own_memory_mib PID: what nothing but these processes accounts for. Programs and libraries are not in it, whose share
# depends on what else runs on the computer.
own_memory_mib() { rollup_mib "$1" Anonymous; }

# rollup_mib PID FIELD
rollup_mib() {
    local pid
    for pid in $(family "$1"); do cat "/proc/$pid/smaps_rollup"; done 2>/dev/null |
        awk -v field="$2:" '$1 == field { sum += $2 } END { printf "%.1f\n", sum / 1024 }'
}
