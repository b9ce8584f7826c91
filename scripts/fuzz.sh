#!/usr/bin/env bash
# Runs every fuzz target on its seeds: fuzz.sh SECONDS [TARGET...]. Findings land in build/fuzz/findings/.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
. scripts/packages.sh
. scripts/build.sh
. scripts/sanitizers.sh
seconds=$1
shift
need_packages "$packages_test"
build_preset fuzz fuzz_targets
mkdir -p build/fuzz/findings
failed=0
for program in build/fuzz/bin/fuzz_*; do
    name=$(basename "$program")
    [ $# -gt 0 ] && [[ " $* " != *" $name "* ]] && continue
    corpus=build/fuzz/corpus/$name
    mkdir -p "$corpus"
    log=build/fuzz/$name.log
    if "$program" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -artifact_prefix="build/fuzz/findings/$name-" \
        "$corpus" "tests/fuzz/seeds/$name" >"$log" 2>&1; then
        echo "$name: $(grep -o 'Done [0-9]* runs in [0-9]* second(s)' "$log" || tail -n 1 "$log")"
    else
        tail -n 30 "$log"
        echo "$name: FAILED, see $log"
        failed=1
    fi
done
exit $failed
