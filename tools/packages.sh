# Sourced by ./play and ./check: sees to the Debian packages that a build needs.

build_packages=(g++ cmake ninja-build ccache git ca-certificates
    libcli11-dev libsndfile1-dev libasound2-dev libjack-jackd2-dev libdbus-1-dev libebur128-dev libpng-dev nlohmann-json3-dev pkg-config)
# What the window library needs, and the fonts of the window's design.
window_packages=(libcairo2-dev libpango1.0-dev libfontconfig-dev libfreetype-dev libx11-dev libxcb1-dev libxcb-util-dev
    libxcb-cursor-dev libxcb-keysyms1-dev libxcb-xkb-dev libxkbcommon-dev libxkbcommon-x11-dev fonts-inter fonts-sora)
# What makes the manual: ./check needs it, and a build without it leaves the manual out.
manual_packages=(pandoc)
# The headers of the other plug-in formats; VST 3's come with the window library.
format_packages=(dpf-source lv2-dev)
check_packages=(libgtest-dev clang-format-19 clang-tidy-19 sox xvfb xdotool x11-utils libxfixes-dev libxtst-dev jackd2 dbus-daemon)
# What makes and checks the packages for users.
packaging_packages=(help2man gzip xz-utils fakeroot dpkg-dev lintian desktop-file-utils appstream)

say() { printf '\033[1m%s\033[0m\n' "$*"; }
fail() { printf '%s\n' "$*" >&2; exit 1; }

as_root() {
    if [ "$(id -u)" = 0 ]; then "$@"
    elif command -v sudo >/dev/null && sudo -n true 2>/dev/null; then sudo -n "$@"
    elif command -v sudo >/dev/null && [ -t 0 ]; then sudo "$@"
    else return 126
    fi
}

installed() { dpkg-query -W -f='${Status}' "$1" 2>/dev/null | grep -q 'ok installed'; }

# need WHY PACKAGE...: installs those that are missing, saying which and why.
need() {
    local why=$1 missing=() package
    shift
    command -v dpkg-query >/dev/null ||
        fail "This script installs Debian packages, and this system has none. Install by hand: $*"
    for package in "$@"; do installed "$package" || missing+=("$package"); done
    [ ${#missing[@]} = 0 ] && return 0
    say "Installing ${missing[*]} ($why)"
    export DEBIAN_FRONTEND=noninteractive
    as_root apt-get update -qq >/dev/null 2>&1 || true
    if ! as_root apt-get install -y -qq --no-install-recommends "${missing[@]}" >/tmp/vantoric-apt.$$ 2>&1; then
        tail -n 15 /tmp/vantoric-apt.$$ >&2
        rm -f /tmp/vantoric-apt.$$
        fail "Could not install: ${missing[*]}. They are needed $why. Install them as root and run this again."
    fi
    rm -f /tmp/vantoric-apt.$$
}

# A format whose headers cannot be had is left out of the build.
need_format_headers() {
    local package
    for package in "${format_packages[@]}"; do
        (need "to build the instrument in other plug-in formats" "$package") || say "That format is left out."
    done
}

# The window library: a package on Debian 13, unpacked into .deps/ on Debian 12.
need_window_library() {
    need "to build the window" "${window_packages[@]}"
    [ -f .deps/vst3sdk/usr/include/vst3sdk/vstgui/vstgui.h ] && return 0
    if apt-cache show libvst3sdk-dev >/dev/null 2>&1; then
        need "to build the window" libvst3sdk-dev
    else
        say "Fetching the window library (libvst3sdk-dev of the next Debian) into .deps/"
        if ! tools/get_vstgui.sh .deps/vst3sdk >/tmp/vantoric-vstgui.$$ 2>&1; then
            tail -n 15 /tmp/vantoric-vstgui.$$ >&2
            rm -f /tmp/vantoric-vstgui.$$
            fail "Could not fetch libvst3sdk-dev. It is needed to build the window."
        fi
        rm -f /tmp/vantoric-vstgui.$$
    fi
}
