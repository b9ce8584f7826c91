#!/usr/bin/env bash
# Inside of a virtual desktop: starts a part that is not there (any more), waits until it works, and prints its process.
#
#   scripts/desktop/start.sh panel xfce4|tint2
#   scripts/desktop/start.sh keyring unlocked|locked
#   scripts/desktop/start.sh notifications dunst|xfce4-notifyd
set -euo pipefail
here=$(dirname "$(readlink -f "$0")")
[ -d "${QUENBY_DESKTOP_SESSION:-}" ] || { echo "start.sh: this is not a virtual desktop" >&2; exit 2; }
for file in parts panel keyring notifications; do . "$here/$file.sh"; done
case "$1" in
panel | keyring | notifications) ;;
*) sed -n '2,6s/^# \{0,1\}//p' "$0" >&2; exit 2 ;;
esac
"start_$1" "$2"
"finish_$1" "$2"
pid="$1_pid"
echo "${!pid}"
