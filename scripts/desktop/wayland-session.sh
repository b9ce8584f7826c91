#!/usr/bin/env bash
# Runs a command in a virtual Wayland desktop of its own, with a portal, and ends everything with it. The exit code is
# the command's. As root it becomes nobody first: the command has to be readable for everybody.
#
#   scripts/desktop/wayland-session.sh [--screen WxH] -- COMMAND...
#
#   --screen WxH    the size of the screen (1280x800)
#
# The user of this desktop chooses the screen that stands in $QUENBY_DESKTOP_CHOICE when a program wants to record one
# (HEADLESS-1; an empty file: declines). The processes of its portal are in QUENBY_DESKTOP_PORTAL_PID and
# QUENBY_DESKTOP_BACKEND_PID; swaymsg speaks with the compositor. A library in QUENBY_DESKTOP_BACKEND_PRELOAD is loaded
# into the portal's back-end.
set -euo pipefail
here=$(dirname "$(readlink -f "$0")")
for file in parts bus wayland ending running; do . "$here/$file.sh"; done
leave_root "$(readlink -f "$0")" "$@"

screen=1280x800
refuse() { echo "wayland-session.sh: $1; the first lines of $0 say what there is" >&2; exit 2; }
while [ $# -gt 0 ] && [ "$1" != -- ]; do
    case "$1" in
    --screen)
        [[ ${2:-} =~ ^[0-9]+x[0-9]+$ ]] || refuse "--screen takes WIDTHxHEIGHT"
        screen=$2
        ;;
    *) refuse "unknown option $1" ;;
    esac
    shift 2
done
[ "${1:-}" = -- ] && shift
[ $# -gt 0 ] || refuse "there is no command"

begin_session "$here"
set_environment ""
set_wayland_environment
start_bus yes
start_compositor "$screen"
start_pictures
finish_compositor
finish_pictures
start_portal
finish_portal

run_command "$@"
