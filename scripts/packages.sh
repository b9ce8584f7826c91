# The Debian packages of each kind of work, and how they come onto a machine. Sourced, not run.

# libsecret: the keychain's library loads it when the program runs. qt6-image-formats-plugins likewise: TIFF, as which
# thumbnails are kept, and WebP, as which they may come; without it they are kept as PNG and come as the other formats.
packages_build="g++ cmake ninja-build pkg-config ccache mold
  qt6-base-dev libqt6sql6-sqlite qt6-image-formats-plugins qt6-webengine-dev qtkeychain-qt6-dev libsecret-1-0 libxcb1-dev
  libgstreamer1.0-dev libgstreamer-plugins-base1.0-dev
  gstreamer1.0-plugins-base gstreamer1.0-plugins-good gstreamer1.0-plugins-bad gstreamer1.0-plugins-ugly
  gstreamer1.0-libav gstreamer1.0-x gstreamer1.0-pipewire libx11-dev libxcb-randr0-dev libxcb-xkb-dev libxkbcommon-x11-dev
  libcurl4-openssl-dev libsimdjson-dev libcpp-httplib-dev libssl-dev"
# What scripts/desktop/ starts, and what drives and photographs it.
packages_desktop="xvfb xkb-data libgl1-mesa-dri openbox xfce4-panel xfconf tint2 dunst xfce4-notifyd
  dbus libglib2.0-bin gnome-keyring gcr libsecret-tools
  fonts-dejavu-core adwaita-icon-theme hicolor-icon-theme librsvg2-common
  xdotool x11-utils x11-xserver-utils imagemagick"
# Whose screenshots are noticed, and what reads the movies.
packages_capture="scrot gnome-screenshot flameshot ffmpeg"
# What scripts/desktop/wayland-session.sh starts.
packages_wayland="sway swaybg grim qt6-wayland pipewire wireplumber xdg-desktop-portal xdg-desktop-portal-wlr"
# What starts the login item, checks its entry, and changes the keyboard.
packages_preferences="dex desktop-file-utils x11-xkb-utils libproxy1-plugin-gsettings"
packages_test="$packages_build $packages_desktop $packages_capture $packages_preferences qt6-websockets-dev clang libclang-rt-dev openssl curl ca-certificates"
# For scripts/oidc.sh, unless node and npm are there from elsewhere: some machines have a package of both in one.
packages_node="nodejs npm"
packages_bench="$packages_build $packages_desktop libbenchmark-dev openssl curl python3 valgrind chromium ffmpeg"
packages_format="clang-format"

# need_packages LIST: installs what is missing, as root or with sudo; says what to type when it can do neither.
need_packages() {
    local missing=()
    local name
    for name in $1; do
        dpkg-query -W -f='${Status}' "$name" 2>/dev/null | grep -q 'ok installed' || missing+=("$name")
    done
    [ ${#missing[@]} -eq 0 ] && return 0
    if ! command -v apt-get >/dev/null; then
        echo "This machine has no apt-get. Install the equivalents of these Debian packages by hand: ${missing[*]}" >&2
        return 1
    fi
    local become=()
    if [ "$(id -u)" -ne 0 ]; then
        if ! command -v sudo >/dev/null || { [ ! -t 0 ] && ! sudo -n true 2>/dev/null; }; then
            echo "These packages are missing, and only root can install them. Type:" >&2
            echo "    apt-get install ${missing[*]}" >&2
            return 1
        fi
        become=(sudo)
    fi
    echo "Installing ${#missing[@]} packages: ${missing[*]}"
    # A list that is not there yet, or too old to find the files, is fetched; a fresh one is not fetched again.
    install_now() {
        "${become[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -y -q --no-install-recommends "${missing[@]}"
    }
    local log
    log=$(mktemp)
    if ! install_now >"$log" 2>&1; then
        if ! { "${become[@]}" apt-get update -q && install_now; } >"$log" 2>&1; then
            tail -n 20 "$log" >&2
            echo "The packages could not be installed; apt-get's own words stand above." >&2
            rm -f "$log"
            return 1
        fi
    fi
    rm -f "$log"
}
