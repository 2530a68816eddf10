#!/bin/bash
# ardour_check.sh PLUGIN.so ["Name" [PARAMETER VALUE]]: the module in Ardour 7 or 8, without a display or a sound device:
# scanned by Ardour's own scanner, put on a track of a new session, one parameter set, saved, loaded again, the
# parameter compared, and the session's notes exported to a wave file that must sound.
# Without "Name" the name is the one that the scanner finds. Exit status: 0 good, 1 not, 77 no Ardour here.
set -euo pipefail

say() { echo "ardour_check: $*"; }
fail() { say "FAILED: $*"; exit 1; }

[ $# -ge 1 ] || { echo "usage: $0 PLUGIN.so [\"Name\" [PARAMETER VALUE]]" >&2; exit 2; }
module=$(realpath "$1")
name=${2:-}
parameter=${3:-0}
value=${4:-0.25}
seconds=3
scripts=$(cd "$(dirname "$0")/ardour" && pwd)

ardour=
for version in 7 8; do
    command -v ardour$version-lua > /dev/null && command -v ardour$version-export > /dev/null && ardour=ardour$version
done
[ -n "$ardour" ] || { say "SKIPPED: Ardour is not installed (Debian package ardour)"; exit 77; }
library=$(dirname "$(readlink -f "$(command -v $ardour-export)")")/..

# Everything that Ardour writes goes to a folder of its own, also its settings. The module is taken from where it is,
# since its data folders lie beside it.
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export HOME=$work/home XDG_RUNTIME_DIR=$work/run
unset XDG_CONFIG_HOME XDG_CACHE_HOME DISPLAY
settings=$HOME/.config/$ardour
mkdir -p "$settings/scripts" "$XDG_RUNTIME_DIR"
chmod 700 "$XDG_RUNTIME_DIR"
cp "$scripts/notes.lua" "$settings/scripts/"
cat > "$settings/config" << XML
<Ardour><Config><Option name="plugin-path-lxvst" value="$(dirname "$module")"/></Config></Ardour>
XML

# Runs a tool with its output in the log; the log is shown if it fails. Ardour's tools abort now and then of their own
# accord, whatever the instrument, about once in thirty exports: then they get another try, in a new `fresh` folder.
log=$work/log
run() {
    local limit=$1 status attempt
    shift
    for attempt in 1 2 3; do
        [ -z "${fresh:-}" ] || rm -rf "$fresh"
        status=0
        timeout "$limit" "$@" > "$log" 2>&1 || status=$?
        [ $status = 134 ] || [ $status = 139 ] || break
        say "$1 died with status $status in attempt $attempt of 3"
    done
    [ $status = 0 ] || { cat "$log"; fail "$1 ended with status $status"; }
}
# The word after `key` in the log.
told() { sed -n "s/^$1[[:space:]]*//p" "$log" | tail -1; }

run 120 env LD_LIBRARY_PATH="$library" "$library/ardour-vst-scanner" -f "$module"
found=$(sed -n "s/.*Found Plugin: '....' //p" "$log" | head -1)
[ -n "$found" ] || { cat "$log"; fail "the scanner found no plug-in"; }
say "scanned: $found"
[ -z "$name" ] || [ "$name" = "$found" ] || fail "the name is \"$found\", not \"$name\""
name=$found
grep -q 'is_instrument="1"' "$HOME"/.cache/$ardour/vst/*.v2i || fail "not seen as an instrument"

fresh=$work/session run 180 $ardour-lua "$scripts/make_session.lua" "$scripts" "$work/session" "$name" "$parameter" "$value"
set_to=$(told value)
[ -n "$set_to" ] || { cat "$log"; fail "no session was made"; }
say "session made: $(told parameters) parameters, number $parameter set to $set_to"
awk -v a="$set_to" -v b="$value" 'BEGIN { exit !(a - b < 0.001 && b - a < 0.001) }' \
    || fail "parameter $parameter is $set_to after it was set to $value"

session=$work/session/check.ardour
chunk=$(tr -d '\n' < "$session" | sed -n 's/.*<chunk[^>]*>\([^<]*\)<.*/\1/p' | wc -c)
[ "$chunk" -gt 1 ] || fail "the session holds no chunk of the plug-in"
say "session saved: a chunk of $chunk characters"

run 180 $ardour-lua "$scripts/read_session.lua" "$scripts" "$work/session" "$name" "$parameter"
read_back=$(told value)
[ "$read_back" = "$set_to" ] || { cat "$log"; fail "parameter $parameter was $set_to and is \"$read_back\" after loading"; }
say "session loaded: parameter $parameter is $read_back again"

# The export renders the session range, which a session without regions lacks. Times are in units of 1/282240000 s.
range="<Location id=\"900001\" name=\"session\" start=\"a0\" end=\"a$((282240000 * seconds))\" flags=\"IsSessionRange\""
range="$range locked=\"0\" position-lock-style=\"AudioTime\" timestamp=\"0\" cue=\"0\"/>"
sed -i "s|<Locations/>|<Locations>$range</Locations>|" "$session"
wave=$work/out.wav
run 300 $ardour-export -b 16 -o "$wave" "$work/session" check
[ -s "$wave" ] || { cat "$log"; fail "nothing was exported"; }

data=$(LC_ALL=C grep -abo -m1 data "$wave" | head -1 | cut -d: -f1)
read -r samples peak < <(od -An -v -t d2 -w2 -j $((data + 8)) "$wave" |
    awk '{ x = $1 < 0 ? -$1 : $1; if (x > peak) peak = x; n++ } END { print n + 0, peak + 0 }')
say "exported: $samples samples, peak $peak of 32768"
[ "$samples" -ge $((2 * 48000 * (seconds - 1))) ] || fail "the export is too short"
[ "$peak" -ge 100 ] || fail "the export is silent"
say "good"
