# shellcheck shell=bash
# The service that shows notifications. Sourced, not run.

start_notifications() {
    case "$1" in
    dunst) start_dunst ;;
    xfce4-notifyd)
        lend_service org.xfce.Xfconf
        # The program lies in a folder that is named after the processor; the service's file knows it.
        # shellcheck disable=SC2046
        start_part notifications $(sed -n 's/^Exec=//p' /usr/share/dbus-1/services/org.xfce.xfce4-notifyd.Notifications.service)
        ;;
    none) return 0 ;;
    esac
    export QUENBY_DESKTOP_NOTIFICATIONS_PID=$notifications_pid
}

finish_notifications() {
    [ "$1" = none ] && return 0
    wait_for notifications has_bus_name org.freedesktop.Notifications
}

start_dunst() {
    cat >"$QUENBY_DESKTOP_SESSION/dunstrc" <<'END'
[global]
    monitor = 0
    follow = none
    width = 360
    origin = top-right
    offset = 16x48
    font = DejaVu Sans 10
    markup = full
    format = "<b>%s</b>\n%b"
    show_indicators = yes
    idle_threshold = 0
    mouse_left_click = do_action, close_current
    mouse_middle_click = close_all
    mouse_right_click = close_current
END
    start_part notifications dunst -conf "$QUENBY_DESKTOP_SESSION/dunstrc"
}
