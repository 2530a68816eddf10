# Sourced by ./play and ./check: sees to the Debian packages that a build needs.

build_packages=(g++ cmake ninja-build ccache git ca-certificates
    libcli11-dev libsndfile1-dev libebur128-dev libpng-dev nlohmann-json3-dev pkg-config)
check_packages=(libgtest-dev clang-format-19 clang-tidy-19 sox)

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
