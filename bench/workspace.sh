#!/usr/bin/env bash
# Measures what tabs hold in memory, inside of a virtual desktop: workspace.sh BIN [SECONDS]. Prints a line a value,
# "NAME VALUE", each the proportional memory of the program and all its processes (MiB), SECONDS (300) after the last of
# its pages was there:
#
#   one_tab    the program with one tab restored
#   restored   the program with 20 tabs restored, of which the selected one is looked at
#   seen       the same, when each of the 20 was looked at since
#   chromium   Debian's chromium with the same 20 pages, the first of which is looked at, as in the program
set -euo pipefail
bin=$1 seconds=${2:-300}
walk=workspace pictures=$HOME
here=$(dirname "$(readlink -f "$0")")
. "$here/../scripts/desktop/watching.sh"
. "$here/../scripts/desktop/agent.sh"
. "$here/memory.sh"

# Below the Drive's address, one a line.
pages() {
    printf '%s\n' / /drive/recent /drive/shared /drive/trash /www/settings/storage
    printf '/drive/search?q=%s\n' summer trip slides list costs photo plan notes map phone market way home bay evening
}
count=$(pages | wc -l)

base() { sed -n 's/.*"url": *"\([^"]*\)".*/\1/p' "$HOME/drive/endpoint.json"; }

# restore COUNT: the next start brings so many of the pages back, the first of them selected.
restore() {
    local settings=$XDG_CONFIG_HOME/quenby/quenby-local.ini tabs='' page rest
    while read -r page; do
        tabs+=$(printf '{\\"title\\":\\"Page\\",\\"url\\":\\"%s%s\\"},' "$(base)" "$page")
    done < <(pages | head -n "$1")
    rest=$(grep -vE '^(OldTabs|\[General\])' "$settings" || true)
    printf '[General]\nOldTabs="[%s]"\n%s\n' "${tabs%,}" "$rest" >"$settings"
}

# A page that loads moves in its tab.
await_page() { wait_until 60 "A page that is there" is_still; }

start_with_tabs() {
    restore "$1"
    start_quenby
    wait_until 60 "The gauge" trace gauge
    wait_until 60 "The workspace window" window Quenby
    await_page
}
look_at_all() {
    local tab
    for ((tab = 0; tab < $1; tab++)); do look_at_next; done # at last, the first again
}
look_at_next() {
    xdotool windowactivate --sync "$(window Quenby)" key ctrl+Page_Down
    await_page
}

# measure_program NAME TABS [COMMAND...]: what is done before the rest.
measure_program() {
    start_with_tabs "$2"
    "${@:3}"
    sleep "$seconds"
    echo "$1 $(memory_mib "$quenby")"
    end_quenby
}

chromium_window() { xdotool search --onlyvisible --class chromium 2>/dev/null | tail -n 1 | grep .; }

# run_chromium ADDRESS...: the first time, the program itself; later, it hands them over to it.
run_chromium() {
    # Who is root has no sandbox, here as in the web engine (session.sh's caller says so).
    chromium --user-data-dir="$HOME/chromium" --no-first-run --no-default-browser-check --password-store=basic \
        ${QTWEBENGINE_DISABLE_SANDBOX:+--no-sandbox} "$@" >>"$HOME/chromium.log" 2>&1
}

# Even if nobody has asked yet how it ended.
is_gone() { ! readlink "/proc/$1/exe"; }

measure_chromium() {
    local chromium address
    run_chromium "$(base)/signin" &
    chromium=$!
    wait_until 60 "Chromium's window" chromium_window
    wait_until 60 "The sign-in page in Chromium" button_in "$(chromium_window)" "$accent"
    # shellcheck disable=SC2046
    click $(button_in "$(chromium_window)" "$accent")
    await_page
    pages | tail -n +2 | while read -r address; do
        run_chromium "$(base)$address"
        await_page
    done
    xdotool windowactivate --sync "$(chromium_window)" key ctrl+1
    await_page
    picture chromium
    sleep "$seconds"
    echo "chromium $(memory_mib "$chromium")"
    # Its processes go on writing to its folder for a moment, which is removed afterwards.
    local processes process
    processes=$(family "$chromium")
    # shellcheck disable=SC2086
    kill $processes 2>/dev/null || true
    wait "$chromium" || true
    for process in $processes; do wait_until 30 "The end of Chromium" is_gone "$process"; done
}

# Invented people have put something onto its pages.
"$bin/quenby-localdrive" --data "$HOME/drive" --activity 1 --quiet >>"$log" 2>&1 &
local_drive=$!
trap 'kill "$local_drive"' EXIT
wait_until 20 "The local Drive" test -s "$HOME/drive/endpoint.json"
sign_in
end_quenby
measure_program one_tab 1
measure_program restored "$count"
measure_program seen "$count" look_at_all "$count"
measure_chromium
