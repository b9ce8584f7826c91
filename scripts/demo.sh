#!/usr/bin/env bash
# The main road, walked once on the command line and once in each kind of desktop: demo.sh BIN. Everything lies under
# build/demo/, nothing in the user's own folders.
set -euo pipefail
cd "$(dirname "$(readlink -f "$0")")/.."
bin=$1
home=$PWD/build/demo
rm -rf "$home"
mkdir -p "$home"
export HOME=$home XDG_DATA_HOME=$home/data XDG_STATE_HOME=$home/state XDG_CONFIG_HOME=$home/config XDG_CACHE_HOME=$home/cache

step() { printf '\n\033[1m%s\033[0m\n' "$1"; }
[ -t 1 ] || step() { printf '\n== %s\n' "$1"; }

end_local_drive() {
    local endpoint=$XDG_DATA_HOME/quenby/local-drive/endpoint.json pid
    [ -f "$endpoint" ] || return 0
    pid=$(sed -n 's/.*"pid": *\([0-9]*\).*/\1/p' "$endpoint")
    # Only the local Drive that this walk started: it serves this folder and no other.
    if [ -n "$pid" ] && grep -qaF -- "$home/" "/proc/$pid/cmdline" 2>/dev/null && kill "$pid" 2>/dev/null; then
        timeout 10 tail --pid="$pid" -f /dev/null || echo "The local Drive (process $pid) does not end." >&2
    fi
}
trap end_local_drive EXIT

file=$home/Hello.txt
printf 'The first file that went up.\n' >"$file"

step "Sign in to the local Drive (a Drive on this computer; no account needed)"
"$bin/quenby" signin --local
"$bin/quenby" about --local

step "Upload $(basename "$file")"
"$bin/quenby" upload "$file" --local

step "What changed on the Drive"
changes=$("$bin/quenby" changes --local)
printf '%s\n' "$changes"
grep -q 'Hello.txt' <<<"$changes" || { echo "The change list does not show the file." >&2; exit 1; }

end_local_drive

# desktop_walk WALK PANEL WHAT
desktop_walk() {
    step "The desktop program, $3"
    scripts/desktop/session.sh --panel "$2" --keyring unlocked --notifications dunst --home "$home/$1" -- \
        scripts/desktop/walk.sh "$1" "$bin" "$home"
}
desktop_walk xfce4 xfce4 "its status item in a tray (StatusNotifierItem)"
desktop_walk tint2 tint2 "its status item in a tray (XEmbed)"
desktop_walk strip none "its status item on a strip, where there is no tray"

step "The list of changes, on a Drive that other people use as well"
scripts/desktop/session.sh --panel xfce4 --keyring unlocked --notifications dunst --home "$home/feed" -- \
    scripts/desktop/feedwalk.sh "$bin" "$home"

step "Done"
echo "Signed in, uploaded files, and saw them arrive, on the command line and in three desktops; looked at the changes."
echo "The pictures: build/demo/agent-*.png and build/demo/feed-*.png"
echo "Try it yourself:  ./run upload FILE... --local     ./run changes --local     ./run --help"
