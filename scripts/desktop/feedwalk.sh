#!/usr/bin/env bash
# A look at the popover of changes, inside of a virtual desktop with a panel, while invented people change files on the
# local Drive: feedwalk.sh BIN PICTURES. Leaves feed-first.png, feed-changes.png and feed-dark.png.
set -euo pipefail
bin=$1 pictures=$2
walk=feed series=feed
here=$(dirname "$(readlink -f "$0")")
. "$here/watching.sh"
. "$here/agent.sh"

changes_a_minute=8 # so many that a poll has a few for the list, and few enough for notifications of their own
item=(1264 784)    # the only one in the tray, at the right end of the panel along the lower edge

start_local_drive() {
    "$bin/quenby-localdrive" --data "$HOME/drive" --activity "$changes_a_minute" --quiet >>"$log" 2>&1 &
    local_drive=$!
    trap 'kill "$local_drive" 2>/dev/null || true' EXIT
    wait_until 20 "The local Drive" test -s "$HOME/drive/endpoint.json"
}

# The panel takes the item when it likes, and lets it go so.
item_is_seen() {
    local contrast
    contrast=$(import -window root -crop "22x22+$((item[0] - 11))+$((item[1] - 11))" png:- |
        convert png:- -colorspace Gray -format '%[fx:100*(maxima-minima)]' info:)
    [ "${contrast%%.*}" -gt 35 ]
}
item_is_gone() { ! item_is_seen; }

# The rows' pictures in the popover. Beside them the dates change every second.
pictures_of_rows() {
    local x y width height
    read -r x y width height < <(place_of "$popover")
    import -window root -crop "75x250+$((x + 6))+$((y + 90))" +repage "$1:-"
}
rows_are_there() { [ "$(pictures_of_rows png | convert png:- -unique-colors -format '%w' info:)" -gt 2 ]; }
rows_are_still() {
    local before after
    before=$(pictures_of_rows rgb | cksum)
    sleep 0.3
    after=$(pictures_of_rows rgb | cksum)
    [ "$before" = "$after" ]
}
rows_differ_from() { [ "$(pictures_of_rows rgb | cksum)" != "$1" ]; }

# The popover is $popover.
open_popover() {
    wait_until 20 "The item in the tray" item_is_seen
    click "${item[@]}" 2
    wait_until 20 "The popover" window "Quenby Changes"
    popover=$(window "Quenby Changes")
    wait_until 20 "A popover with rows" rows_are_there
    wait_until 20 "A popover that shows all that it has" rows_are_still
}

# Into the second row, where the share button then shows.
point_at_a_row() {
    local x y width height before
    read -r x y width height < <(place_of "$popover")
    before=$(pictures_of_rows rgb | cksum)
    xdotool mousemove $((x + width * 2 / 3)) $((y + 184))
    wait_until 20 "A row in another colour" rows_differ_from "$before"
    wait_until 20 "A calm list" rows_are_still
}

is_notified() { [ "$(dunstctl count displayed)" -gt 0 ]; }

# The colours of a dark desktop, as some desktops tell them.
make_desktop_dark() {
    local role
    for role in Window View Button Tooltip; do
        printf '[Colors:%s]\nBackgroundNormal=35,38,41\nForegroundNormal=239,240,241\nForegroundInactive=161,169,177\n' \
            "$role"
    done >"$XDG_CONFIG_HOME/kdeglobals"
    printf '[Colors:Selection]\nBackgroundNormal=61,126,233\nForegroundNormal=255,255,255\n' \
        >>"$XDG_CONFIG_HOME/kdeglobals"
    export QT_QPA_PLATFORMTHEME=kde KDE_SESSION_VERSION=5
}

start_local_drive
sign_in
rm "$pictures/$series-signin.png" "$pictures/$series-welcome.png" # the other walks have them
open_popover
picture first
say "The popover shows what changed last: feed-first.png."

wait_until 45 "Another change in a notification" is_notified
point_at_a_row
picture changes
say "Other people changed files meanwhile; the popover and notifications tell of it: feed-changes.png."

end_quenby
dunstctl close-all
make_desktop_dark
wait_until 20 "The end of the item" item_is_gone
start_quenby
wait_until 60 "The gauge after another start" trace gauge
wait_until 60 "The account after another start" trace account
open_popover
point_at_a_row
picture dark
say "The same on a dark desktop: feed-dark.png."
end_quenby
