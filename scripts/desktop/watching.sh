# shellcheck shell=bash
# What a walk through the desktop program does and sees there: windows, clicks, pictures, and waiting for them.
# Sourced, not run; expects $walk, its name, and $pictures, the folder of the pictures, whose names begin with $series
# (agent-$walk when it is not set).
series=${series:-agent-$walk}

say() { printf '   %s\n' "$1"; }

# fail TEXT: says it, with a picture of the desktop and the program's last words, and ends the walk.
fail() {
    picture trouble
    {
        echo "The walk \"$walk\" failed: $1"
        echo "What the desktop looked like: $pictures/$series-trouble.png. The program's last words:"
        tail -n 15 "$HOME/quenby.log"
    } >&2
    exit 1
}

# wait_until SECONDS WHAT COMMAND...
wait_until() {
    local until=$((SECONDS + $1)) what=$2
    shift 2
    until "$@" >/dev/null 2>&1; do
        [ $SECONDS -lt $until ] || fail "$what did not happen."
        sleep 0.1
    done
}

# The whole screen, under the name by which people look for it.
picture() { import -window root "$pictures/$series-$1.png"; }

# window TITLE: the number of the visible window; fails when there is none.
window() {
    local found
    found=$(xdotool search --onlyvisible --name "^${1//./\\.}( — Quenby)?\$" 2>/dev/null | tail -n 1)
    [ -n "$found" ] && echo "$found"
}

no_window() { ! window "$1"; }

# The place of a window on the screen, as "X Y WIDTH HEIGHT".
place_of() {
    xwininfo -id "$1" | sed -n 's/.*Absolute upper-left X: *//p; s/.*Absolute upper-left Y: *//p;
        s/^ *Width: *//p; s/^ *Height: *//p' | paste -sd ' '
}

middle_of() {
    local x y width height
    read -r x y width height < <(place_of "$1")
    echo $((x + width / 2)) $((y + height / 2))
}

# click X Y [BUTTON]
click() { xdotool mousemove "$1" "$2" click "${3:-1}"; }

# button_in WINDOW COLOUR: the middle of the largest area of that colour, as of a web page's main button; fails when
# there is none yet.
button_in() {
    local x y width height spot
    read -r x y width height < <(place_of "$1")
    spot=$(import -window root png:- | convert png:- -crop "${width}x${height}+$x+$y" +repage \
        -fill black +opaque "$2" -fill white -opaque "$2" -type bilevel \
        -define connected-components:verbose=true -connected-components 4 null: |
        awk '$5 ~ /255/ && $4 > 1000 { print $3; exit }')
    [ -n "$spot" ] || return 1
    awk -F, -v x="$x" -v y="$y" '{ print int($1 + x), int($2 + y) }' <<<"$spot"
}

# Whether the screen looks different from the picture of that name by more than a caret that blinks.
looks_different_from() {
    local pixels
    pixels=$(import -window root png:- | compare -metric AE "$pictures/$series-$1.png" png:- null: 2>&1) || true
    [ "${pixels%%.*}" -gt 400 ]
}

# Whether nothing has moved on the screen for a moment.
is_still() {
    local before after
    before=$(import -window root rgb:- | cksum)
    sleep 0.3
    after=$(import -window root rgb:- | cksum)
    [ "$before" = "$after" ]
}
