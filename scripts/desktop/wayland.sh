# shellcheck shell=bash
# A Wayland desktop without a screen: the compositor, what carries its pictures, and the portal. Sourced, not run.

# The compositor refuses root. Runs the script again as nobody.
leave_root() {
    [ "$(id -u)" -eq 0 ] || return 0
    exec setpriv --reuid=65534 --regid=65534 --clear-groups -- "$@"
}

# After set_environment, which is for a desktop on X11.
set_wayland_environment() {
    export XDG_SESSION_TYPE=wayland XDG_CURRENT_DESKTOP=sway
    export WLR_BACKENDS=headless WLR_RENDERER=pixman WLR_LIBINPUT_NO_DEVICES=1
    export SWAYSOCK=$XDG_RUNTIME_DIR/sway
    # Nobody's business is the machine's own bus.
    export DBUS_SYSTEM_BUS_ADDRESS=unix:path=$XDG_RUNTIME_DIR/no-system-bus
}

start_compositor() { # start_compositor WxH
    local config=$QUENBY_DESKTOP_SESSION/sway.conf
    cat >"$config" <<END
xwayland disable
default_border none
output HEADLESS-1 resolution $1 position 0,0
output HEADLESS-1 background #336699 solid_color
exec echo "\$WAYLAND_DISPLAY" >$QUENBY_DESKTOP_SESSION/display
END
    start_part compositor sway --config "$config"
}

finish_compositor() {
    wait_for compositor test -s "$QUENBY_DESKTOP_SESSION/display"
    WAYLAND_DISPLAY=$(cat "$QUENBY_DESKTOP_SESSION/display")
    export WAYLAND_DISPLAY
}

start_pictures() {
    start_part pipewire pipewire
    start_part session_manager wireplumber
}

finish_pictures() {
    wait_for pipewire test -S "$XDG_RUNTIME_DIR/pipewire-0"
}

# In place of a dialog, the name of the screen that the user chooses stands in a file; nothing there: the user declines.
start_portal() {
    local folder=$XDG_CONFIG_HOME/xdg-desktop-portal-wlr
    mkdir -p "$folder"
    export QUENBY_DESKTOP_CHOICE=$QUENBY_DESKTOP_SESSION/choice
    echo HEADLESS-1 >"$QUENBY_DESKTOP_CHOICE"
    cat >"$folder/config" <<END
[screencast]
chooser_type=simple
chooser_cmd=cat $QUENBY_DESKTOP_CHOICE
END
    lend_service org.freedesktop.impl.portal.PermissionStore
    start_part portal_backend env ${QUENBY_DESKTOP_BACKEND_PRELOAD:+"LD_PRELOAD=$QUENBY_DESKTOP_BACKEND_PRELOAD"} \
        /usr/libexec/xdg-desktop-portal-wlr
    wait_for portal_backend has_bus_name org.freedesktop.impl.portal.desktop.wlr
    start_part portal /usr/libexec/xdg-desktop-portal
    export QUENBY_DESKTOP_PORTAL_PID=$portal_pid QUENBY_DESKTOP_BACKEND_PID=$portal_backend_pid
}

finish_portal() {
    wait_for portal has_bus_name org.freedesktop.portal.Desktop
}
