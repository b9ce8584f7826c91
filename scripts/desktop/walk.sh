#!/usr/bin/env bash
# One walk through the desktop program, inside of a virtual desktop: walk.sh WALK BIN PICTURES. A walk is named after
# what shows the status item: xfce4 or tint2 (trays), or strip (there is no tray).
set -euo pipefail
walk=$1 bin=$2 pictures=$3
here=$(dirname "$(readlink -f "$0")")
. "$here/watching.sh"
. "$here/agent.sh"

# ask VERB...: the program's command line, beside the desktop program.
ask() { "$bin/quenby" "$@" "${drive[@]}" --json; }
has_arrived() { ask changes | grep -qF "\"$1\""; }
is_notified() { [ "$(dunstctl count displayed)" -gt 0 ]; }

status_item() {
    case "$walk" in
    strip) middle_of "$(window 'Quenby Status')" ;;
    # The only item, at the right end of the panel along the lower edge.
    xfce4) echo 1264 784 ;;
    tint2) echo 1265 784 ;;
    esac
}

open_menu() {
    picture before-menu
    # shellcheck disable=SC2046
    click $(status_item) 3
    wait_until 20 "The status menu" looks_different_from before-menu
    rm "$pictures/agent-$walk-before-menu.png"
}

look_at_status_item() {
    picture gauge
    [ "$walk" = xfce4 ] || return 0
    local items item
    items=$(gdbus call --session --dest org.kde.StatusNotifierWatcher --object-path /StatusNotifierWatcher \
        --method org.freedesktop.DBus.Properties.Get org.kde.StatusNotifierWatcher RegisteredStatusNotifierItems)
    item=$(sed -n "s/^(<\['\([^'/]*\).*/\1/p" <<<"$items")
    for property in Title ToolTip; do
        say "The bus tells of the item: $property $(gdbus call --session --dest "$item" \
            --object-path /StatusNotifierItem --method org.freedesktop.DBus.Properties.Get org.kde.StatusNotifierItem \
            $property | grep -o "'[^']*'" | grep -v "''" | head -n 1)"
    done
}

look_at_menu() {
    open_menu
    picture menu
    xdotool key Escape
}

# Another start hands its file over to the program; on the strip, the file is dropped.
upload() {
    local file="$HOME/Hello from the $walk.txt" old=$quenby
    echo "The file that came by way of $walk." >"$file"
    if [ "$walk" = strip ]; then
        drop_on_strip "$file"
    else
        start_quenby "$file"
        wait_until 30 "The end of the program that was there before" ended "$old"
    fi
    wait_until 60 "The notification" is_notified
    wait_until 60 "The file in the Drive's change list" has_arrived "$(basename "$file")"
    picture notification
    dunstctl close-all
    wait_until 20 "The notification in the history" notified_of "$(basename "$file")"
    say "$(basename "$file") is in the Drive, and was notified of."
}
notified_of() { dunstctl history | grep -qF "$1 added"; }

drop_on_strip() {
    local x y
    read -r x y < <(status_item)
    printf 'file://%s\r\n' "${1// /%20}" | "$bin/drag_source" 40 600 48 >"$HOME/drag.log" &
    local source=$!
    wait_until 20 "The drag's source" grep -q shown "$HOME/drag.log"
    xdotool mousemove 64 624 mousedown 1
    wait_until 20 "A press on the drag's source" grep -q pressed "$HOME/drag.log"
    xdotool mousemove 68 620 mousemove 84 600
    wait_until 20 "The drag" grep -q begun "$HOME/drag.log"
    xdotool mousemove $((x - 2)) $((y + 2)) mousemove "$x" "$y"
    wait_until 20 "The strip's acceptance of the drag" grep -q 'action [1-9]' "$HOME/drag.log"
    picture drop
    xdotool mouseup 1
    wait_until 20 "The drop" grep -q 'ended [1-9]' "$HOME/drag.log"
    kill "$source"
    say "Dropped the file onto the strip with the pointer."
}

# By a menu and the panel; the share window comes by itself.
upload_and_share() {
    local file="$HOME/Shared from the $walk.txt"
    echo "For others too." >"$file"
    if [ "$walk" = xfce4 ]; then
        # The same menu, from the workspace window's button.
        picture before-menu
        xdotool windowactivate --sync "$(window Quenby)" key alt+m
        wait_until 20 "The window's menu" looks_different_from before-menu
        rm "$pictures/agent-$walk-before-menu.png"
    else
        open_menu
    fi
    xdotool key l
    wait_until 20 "The panel that asks for a file" window "Upload & Share File"
    xdotool windowactivate --sync "$(window 'Upload & Share File')"
    xdotool type "$file"
    picture panel
    xdotool key Return
    wait_until 60 "The share window" window "$(basename "$file")"
    local share
    share=$(window "$(basename "$file")")
    wait_until 60 "The sharing page" button_in "$share" "$accent"
    picture share
    xdotool key Escape
    wait_until 20 "The end of the share window" no_window "$(basename "$file")"
    dunstctl close-all
    say "$(basename "$file") went up by the menu; its share window came up and was dismissed by Escape."
}
start_again() {
    end_quenby
    start_quenby
    wait_until 60 "The gauge after another start" trace gauge
    no_window "Sign In" >/dev/null || fail "The program asks for a sign-in that it has."
    say "Started again with the stored sign-in: the gauge was there after $(trace gauge | head -n 1 | cut -d ' ' -f 2) ms."
    end_quenby
}

# The strip shows what the settings say; at first, they say nothing.
show_gauge_and_text() {
    mkdir -p "$XDG_CONFIG_HOME/quenby"
    printf '[General]\nshowMenubarIcon=true\nshowUsegeText=true\n' >"$XDG_CONFIG_HOME/quenby/quenby-local.ini"
}

show_gauge_and_text
sign_in
say "Signed in through the local Drive's page; the keyring holds the sign-in, the gauge is there."
"$bin/quenby" signin "${drive[@]}" --quiet >>"$log" 2>&1 # the command line has a sign-in of its own
look_at_status_item
look_at_menu
upload
upload_and_share
start_again
