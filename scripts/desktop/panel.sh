# shellcheck shell=bash
# A panel with a tray. Sourced, not run.

start_panel() {
    case "$1" in
    xfce4) start_xfce4_panel ;;
    tint2) start_tint2 ;;
    none) return 0 ;;
    esac
    export QUENBY_DESKTOP_PANEL_PID=$panel_pid
}

finish_panel() {
    case "$1" in
    xfce4) wait_for panel has_bus_name org.kde.StatusNotifierWatcher ;;
    tint2) wait_for panel grep -q 'systray started' "$QUENBY_DESKTOP_SESSION/logs/panel" ;;
    esac
}

# StatusNotifierItem: one panel along the lower edge, with nothing but a tray at its right end.
start_xfce4_panel() {
    lend_service org.xfce.Xfconf
    local folder=$XDG_CONFIG_HOME/xfce4/xfconf/xfce-perchannel-xml
    mkdir -p "$folder"
    cat >"$folder/xfce4-panel.xml" <<'END'
<?xml version="1.0" encoding="UTF-8"?>
<channel name="xfce4-panel" version="1.0">
  <property name="configver" type="int" value="2"/>
  <property name="panels" type="array">
    <value type="int" value="1"/>
    <property name="panel-1" type="empty">
      <property name="position" type="string" value="p=8;x=0;y=0"/>
      <property name="length" type="uint" value="100"/>
      <property name="position-locked" type="bool" value="true"/>
      <property name="size" type="uint" value="32"/>
      <property name="icon-size" type="uint" value="22"/>
      <property name="plugin-ids" type="array">
        <value type="int" value="1"/>
        <value type="int" value="2"/>
      </property>
    </property>
  </property>
  <property name="plugins" type="empty">
    <property name="plugin-1" type="string" value="separator">
      <property name="expand" type="bool" value="true"/>
      <property name="style" type="uint" value="0"/>
    </property>
    <property name="plugin-2" type="string" value="systray">
      <property name="square-icons" type="bool" value="true"/>
    </property>
  </property>
</channel>
END
    start_part panel xfce4-panel --disable-wm-check
}

# XEmbed.
start_tint2() {
    cat >"$QUENBY_DESKTOP_SESSION/tint2rc" <<'END'
rounded = 0
border_width = 0
background_color = #d8d8d8 100
panel_items = FS
panel_size = 100% 32
panel_position = bottom center horizontal
panel_background_id = 1
systray_padding = 4 4 4
systray_icon_size = 22
END
    start_part panel tint2 -c "$QUENBY_DESKTOP_SESSION/tint2rc"
}
