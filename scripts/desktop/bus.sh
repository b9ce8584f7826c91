# shellcheck shell=bash
# The session bus. It knows no service of the system but those that a part lends it (lend_service). Sourced, not run.

start_bus() {
    local socket=$XDG_RUNTIME_DIR/bus
    # With an address where nobody listens, a client is refused at once, and none starts a bus of its own.
    export DBUS_SESSION_BUS_ADDRESS=unix:path=$socket
    [ "$1" = yes ] || return 0
    cat >"$QUENBY_DESKTOP_SESSION/bus.conf" <<END
<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:path=$socket</listen>
  <auth>EXTERNAL</auth>
  <servicedir>$QUENBY_DESKTOP_SESSION/services</servicedir>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
  <limit name="service_start_timeout">25000</limit>
</busconfig>
END
    start_part bus dbus-daemon --nofork --nopidfile --config-file="$QUENBY_DESKTOP_SESSION/bus.conf"
    wait_for bus test -S "$socket"
}
