#!/bin/sh
# Unpacks Debian trixie's libvst3sdk-dev, which holds the window library, below DEST on a Debian 12, whose own archive
# does not have it. Signatures are checked; the system's own package lists and settings stay as they are.
# usage: get_vstgui.sh DEST
set -eu
dest=${1:?usage: get_vstgui.sh DEST}
key=/usr/share/keyrings/debian-archive-keyring.gpg
. /etc/os-release
# From where this system gets its own "main".
uri=$(apt-get indextargets --format '$(RELEASE) $(COMPONENT) $(REPO_URI)' 'Identifier: Packages' |
      awk -v r="${VERSION_CODENAME:-}" '$1==r && $2=="main" {print $3; exit}')
[ -n "$uri" ] || uri=$(awk '$1=="URIs:" {print $2; exit}' /etc/apt/sources.list.d/debian.sources)
[ -n "$uri" ] || { echo "get_vstgui: apt's sources name no Debian archive" >&2; exit 1; }
[ -r "$key" ] || { echo "get_vstgui: $key is missing (package debian-archive-keyring)" >&2; exit 1; }

mkdir -p "$dest"
dest=$(cd "$dest" && pwd)
state=$dest/.apt
mkdir -p "$state/lists/partial" "$state/cache/archives/partial" "$state/deb"
: > "$state/status"
cat > "$state/trixie.sources" <<SOURCES
Types: deb
URIs: $uri
Suites: trixie
Components: main
Architectures: amd64
Signed-By: $key
SOURCES
# Read after /etc/apt/apt.conf.d, so a proxy set there still counts; hooks and further downloads set there are taken back.
cat > "$state/apt.conf" <<CONF
Dir::Etc::sourcelist "$state/trixie.sources";
Dir::Etc::sourceparts "/dev/null";
Dir::Etc::preferences "/dev/null";
Dir::Etc::preferencesparts "/dev/null";
Dir::State "$state";
Dir::State::Lists "$state/lists";
Dir::State::status "$state/status";
Dir::Cache "$state/cache";
Dir::Log "$state";
Acquire::Languages "none";
Acquire::AllowInsecureRepositories "false";
APT::Get::AllowUnauthenticated "false";
APT::Update::Error-Mode "any";
#clear APT::Update::Pre-Invoke;
#clear APT::Update::Post-Invoke;
#clear APT::Update::Post-Invoke-Success;
#clear Acquire::IndexTargets::deb::Contents-deb;
#clear Acquire::IndexTargets::deb::DEP-11;
CONF
[ "$(id -u)" != 0 ] || echo 'APT::Sandbox::User "root";' >> "$state/apt.conf"
apt-get -q -c "$state/apt.conf" update
(cd "$state/deb" && apt-get -q -c "$state/apt.conf" download libvst3sdk-dev:amd64)
dpkg -x "$state"/deb/libvst3sdk-dev_*_amd64.deb "$dest"
rm -rf "$state"
test -f "$dest/usr/lib/x86_64-linux-gnu/vst3sdk/libvstgui.a"
