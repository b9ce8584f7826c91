# shellcheck shell=bash
# How a part of the virtual desktop is started and waited for. Sourced, not run.

# Everything that belongs to the session carries its name in the environment: QUENBY_DESKTOP_SESSION.
set_environment() {
    local home=$1
    umask 077
    mkdir -p "$QUENBY_DESKTOP_SESSION"/{run,logs,services}
    export XDG_RUNTIME_DIR=$QUENBY_DESKTOP_SESSION/run
    export HOME=${home:-$QUENBY_DESKTOP_SESSION/home}
    export XDG_CONFIG_HOME=$HOME/config XDG_DATA_HOME=$HOME/data XDG_STATE_HOME=$HOME/state XDG_CACHE_HOME=$HOME/cache
    umask 022
    mkdir -p "$XDG_CONFIG_HOME" "$XDG_DATA_HOME" "$XDG_STATE_HOME" "$XDG_CACHE_HOME"
    export XDG_CONFIG_DIRS=/etc/xdg XDG_DATA_DIRS=/usr/local/share:/usr/share XDG_SESSION_TYPE=x11 LC_ALL=C.UTF-8
    # Nothing of the desktop that this was started from.
    unset WAYLAND_DISPLAY DISPLAY DBUS_SESSION_BUS_ADDRESS SESSION_MANAGER XAUTHORITY XDG_CURRENT_DESKTOP DESKTOP_SESSION
    unset QT_QPA_PLATFORM QT_QPA_PLATFORMTHEME GTK_MODULES GNOME_KEYRING_CONTROL XMODIFIERS
    export GSETTINGS_BACKEND=memory NO_AT_BRIDGE=1
    # The web engine's sandbox needs user namespaces, and refuses root.
    if [ "$(id -u)" -eq 0 ] || ! unshare --user true 2>/dev/null; then export QTWEBENGINE_DISABLE_SANDBOX=1; fi
}

# start_part NAME COMMAND...: runs it in the background; its words land in a log, its process in NAME_pid.
start_part() {
    local name=$1
    shift
    "$@" >"$QUENBY_DESKTOP_SESSION/logs/$name" 2>&1 </dev/null 9>&- &
    declare -g "${name}_pid=$!"
    echo $! >>"$QUENBY_DESKTOP_SESSION/parts"
}

# wait_for NAME COMMAND...: until the command succeeds; ends the session when the part is gone or 30 s have passed.
wait_for() {
    local name=$1 pid_variable="${1}_pid" until=$((SECONDS + 30))
    shift
    until "$@" >/dev/null 2>&1; do
        if ! kill -0 "${!pid_variable}" 2>/dev/null; then part_failed "$name" "ended at once"; fi
        if [ $SECONDS -ge $until ]; then part_failed "$name" "did not come up within 30 s"; fi
        sleep 0.02
    done
}

part_failed() {
    echo "The virtual desktop's $1 $2. Its own words:" >&2
    tail -n 20 "$QUENBY_DESKTOP_SESSION/logs/$1" >&2 || true
    exit 125
}

# lend_service NAME: lets the bus start this one service of the system when somebody asks for it.
lend_service() {
    ln -sf "/usr/share/dbus-1/services/$1.service" "$QUENBY_DESKTOP_SESSION/services/"
}

# bus_call NAME PATH METHOD ARGUMENTS...
bus_call() {
    local name=$1 path=$2
    shift 2
    gdbus call --session --timeout 10 --dest "$name" --object-path "$path" --method "$@"
}

has_bus_name() {
    bus_call org.freedesktop.DBus /org/freedesktop/DBus org.freedesktop.DBus.NameHasOwner "$1" | grep -q true
}
