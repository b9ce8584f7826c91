# shellcheck shell=bash
# Starting the desktop program, signing in to it and ending it, with the pointer, for walks and measurements. Sourced,
# not run, after watching.sh; expects $bin, the folder of the programs. Everything that the program writes is in $log.
log=$HOME/quenby.log
drive=(--local --local-data "$HOME/drive")
: >"$log"

# The main button of the local Drive's pages, in its light form (localdrive/pages/style.css).
accent='#2a5fbd'

# start_quenby [ARGUMENT...]: starts the program; its trace begins anew.
start_quenby() {
    trace_start=$(wc -l <"$log")
    QUENBY_LAUNCH_TRACE=1 "$bin/quenby" "${drive[@]}" "$@" >>"$log" 2>&1 &
    quenby=$!
}

# The lines of the launch trace with this word, since the last start; fails when there is none.
trace() { tail -n +$((trace_start + 1)) "$log" | grep -E "^quenby-launch [0-9.]+ $1\$"; }

is_signed_in() { secret-tool lookup server "Drive: Local Drive" user OAuth; }

# Waits for the dialog and its page; its window is $dialog.
wait_for_sign_in_page() {
    wait_until 60 "The sign-in dialog" window "Sign In"
    dialog=$(window "Sign In")
    wait_until 60 "The sign-in page" button_in "$dialog" "$accent"
}

# Signs in by the page that the program shows, until the gauge is there. On the way, the dialog is closed and asked for
# again, so that the welcome view is seen. Leaves the pictures "signin" and "welcome".
sign_in() {
    start_quenby
    wait_for_sign_in_page
    picture signin
    xdotool windowactivate --sync "$dialog" key alt+c
    wait_until 20 "The closing of the sign-in dialog" no_window "Sign In"
    wait_until 20 "A calm screen" is_still
    picture welcome
    xdotool windowactivate --sync "$(window Quenby)" key alt+s
    wait_for_sign_in_page
    # shellcheck disable=SC2046
    click $(button_in "$dialog" "$accent")
    wait_until 60 "The end of the sign-in dialog" no_window "Sign In"
    wait_until 30 "An entry in the keyring" is_signed_in
    wait_until 60 "The gauge" trace gauge
}

ended() { ! kill -0 "$1"; }

end_quenby() {
    local code=0
    kill "$quenby"
    wait_until 30 "The end of the program" ended "$quenby"
    wait "$quenby" || code=$?
    [ $code -eq 0 ] || fail "The program ended with the exit code $code."
}
