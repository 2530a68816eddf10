# What the checks with Ardour share; to be sourced. Sets `ardour` (its name with the version), `library` (where its modules and
# scanners lie) and `work`, a folder that is removed at the end and that everything is written to, settings too; or ends with 77
# where Ardour is not installed.

say() { echo "${0##*/}: $*"; }
fail() { say "FAILED: $*"; exit 1; }

lua=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
ardour=
for version in 7 8; do
    command -v ardour$version-lua > /dev/null && command -v ardour$version-export > /dev/null && ardour=ardour$version
done
[ -n "$ardour" ] || { say "SKIPPED: Ardour is not installed (Debian package ardour)"; exit 77; }
library=$(dirname "$(readlink -f "$(command -v $ardour-export)")")/..

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export HOME=$work/home XDG_RUNTIME_DIR=$work/run
unset XDG_CONFIG_HOME XDG_CACHE_HOME XDG_STATE_HOME XDG_DATA_HOME DISPLAY
settings=$HOME/.config/$ardour
mkdir -p "$settings/scripts" "$XDG_RUNTIME_DIR"
chmod 700 "$XDG_RUNTIME_DIR"
cp "$lua/notes.lua" "$settings/scripts/"

# look_in FOLDER: where Ardour looks for plug-ins of VST 2.4 and 3.
look_in() {
    cat > "$settings/config" << XML
<Ardour><Config>
<Option name="plugin-path-lxvst" value="$1"/><Option name="plugin-path-vst3" value="$1"/>
</Config></Ardour>
XML
}

# lasts SESSION.ardour SECONDS: the range that an export renders, which a session without regions lacks. Times are in units of
# 1/282240000 s.
lasts() {
    local range="<Location id=\"900001\" name=\"session\" start=\"a0\" end=\"a$((282240000 * $2))\" flags=\"IsSessionRange\""
    range="$range locked=\"0\" position-lock-style=\"AudioTime\" timestamp=\"0\" cue=\"0\"/>"
    sed -i "s|<Locations/>|<Locations>$range</Locations>|" "$1"
}

# samples WAVE: what it holds behind its head.
samples() {
    local at
    at=$(LC_ALL=C grep -abo -m1 data "$1" | head -1 | cut -d: -f1)
    tail -c +$((at + 9)) "$1"
}
