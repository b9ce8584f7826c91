# shellcheck shell=bash
# The keyring, with one collection, "login". Sourced, not run.

start_keyring() {
    [ "$1" = none ] && return 0
    # The window that asks for the password.
    lend_service org.gnome.keyring.SystemPrompter
    lend_service org.gnome.keyring.PrivatePrompter
    export QUENBY_DESKTOP_KEYRING_PASSWORD=open-sesame
    printf %s "$QUENBY_DESKTOP_KEYRING_PASSWORD" >"$QUENBY_DESKTOP_SESSION/password"
    start_part keyring run_keyring
    export QUENBY_DESKTOP_KEYRING_PID=$keyring_pid
}

# The daemon creates the login collection when it gets a password for the first time.
run_keyring() {
    exec gnome-keyring-daemon --foreground --unlock --components=secrets <"$QUENBY_DESKTOP_SESSION/password"
}

finish_keyring() {
    [ "$1" = none ] && return 0
    wait_for keyring keyring_is_locked false
    [ "$1" = unlocked ] && return 0
    bus_call org.freedesktop.secrets /org/freedesktop/secrets org.freedesktop.Secret.Service.Lock \
        "['/org/freedesktop/secrets/collection/login']" >/dev/null
    wait_for keyring keyring_is_locked true
}

keyring_is_locked() {
    bus_call org.freedesktop.secrets /org/freedesktop/secrets/collection/login \
        org.freedesktop.DBus.Properties.Get org.freedesktop.Secret.Collection Locked | grep -q "$1"
}
