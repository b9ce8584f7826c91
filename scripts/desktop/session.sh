#!/usr/bin/env bash
# Runs a command in a virtual desktop of its own, and ends everything with it. The exit code is the command's.
#
#   scripts/desktop/session.sh [OPTION...] -- COMMAND...
#
#   --panel xfce4|tint2|none          a tray by StatusNotifierItem, a tray by XEmbed, or no tray (none)
#   --keyring unlocked|locked|none    a real keyring whose password is $QUENBY_DESKTOP_KEYRING_PASSWORD (none)
#   --notifications dunst|xfce4-notifyd|none    a real notification service (none)
#   --no-bus                          no session bus either
#   --screen WxH                      the size of the screen (1280x800)
#   --home DIR                        a home folder that stays; without it there is a fresh one, removed afterwards
#
# What is not asked for is not there, and the bus starts nothing by itself. The command finds the process of a part in
# QUENBY_DESKTOP_<PART>_PID (PANEL, KEYRING, NOTIFICATIONS), and can start a part with scripts/desktop/start.sh.
set -euo pipefail
here=$(dirname "$(readlink -f "$0")")
for file in parts display bus panel keyring notifications ending running; do . "$here/$file.sh"; done

panel=none keyring=none notifications=none bus=yes screen=1280x800 home=
refuse() { echo "session.sh: $1; the first lines of $0 say what there is" >&2; exit 2; }
one_of() { # one_of OPTION VALUE ALLOWED...
    local option=$1 value=$2
    shift 2
    [[ " $* " == *" $value "* ]] || refuse "$option takes one of: $*"
}
while [ $# -gt 0 ] && [ "$1" != -- ]; do
    case "$1" in
    --no-bus) bus=no; shift; continue ;;
    --panel | --keyring | --notifications | --screen | --home) [ $# -gt 1 ] || refuse "$1 takes a value" ;;&
    --panel) one_of "$1" "$2" xfce4 tint2 none; panel=$2 ;;
    --keyring) one_of "$1" "$2" unlocked locked none; keyring=$2 ;;
    --notifications) one_of "$1" "$2" dunst xfce4-notifyd none; notifications=$2 ;;
    --screen) [[ $2 =~ ^[0-9]+x[0-9]+$ ]] || refuse "--screen takes WIDTHxHEIGHT"; screen=$2 ;;
    --home) mkdir -p "$2"; home=$(readlink -f "$2") ;;
    *) refuse "unknown option $1" ;;
    esac
    shift 2
done
[ "${1:-}" = -- ] && shift
[ $# -gt 0 ] || refuse "there is no command"
[ "$bus" = yes ] || [ "$panel$keyring$notifications" = nonenonenone ] || [ "$panel$keyring$notifications" = tint2nonenone ] ||
    refuse "only tint2 works without a bus"

begin_session "$here"
set_environment "$home"
start_display "$screen"
start_bus "$bus"
finish_display
# The parts come up side by side; each is waited for afterwards.
start_window_manager
start_panel "$panel"
start_keyring "$keyring"
start_notifications "$notifications"
finish_window_manager
finish_panel "$panel"
finish_keyring "$keyring"
finish_notifications "$notifications"

run_command "$@"
