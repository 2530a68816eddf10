#!/bin/bash
# ardour_check.sh PLUGIN.so ["Name" [PARAMETER VALUE]]: the module in Ardour 7 or 8, without a display or a sound device:
# scanned by Ardour's own scanner, put on a track of a new session, one parameter set, saved, loaded again, the
# parameter compared, and the session's notes exported to a wave file that must sound.
# Without "Name" the name is the one that the scanner finds. Exit status: 0 good, 1 not, 77 no Ardour here.
set -euo pipefail

[ $# -ge 1 ] || { echo "usage: $0 PLUGIN.so [\"Name\" [PARAMETER VALUE]]" >&2; exit 2; }
module=$(realpath "$1")
name=${2:-}
parameter=${3:-0}
value=${4:-0.25}
seconds=3
. "$(dirname "$0")/ardour/common.sh"
look_in "$(dirname "$module")"  # the module is taken from where it is, since its data folders lie beside it

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

fresh=$work/session run 180 $ardour-lua "$lua/make_session.lua" "$lua" "$work/session" LXVST "$name" "$parameter" "$value"
set_to=$(told value)
[ -n "$set_to" ] || { cat "$log"; fail "no session was made"; }
say "session made: $(told parameters) parameters, number $parameter set to $set_to"
awk -v a="$set_to" -v b="$value" 'BEGIN { exit !(a - b < 0.001 && b - a < 0.001) }' \
    || fail "parameter $parameter is $set_to after it was set to $value"

session=$work/session/check.ardour
chunk=$(tr -d '\n' < "$session" | sed -n 's/.*<chunk[^>]*>\([^<]*\)<.*/\1/p' | wc -c)
[ "$chunk" -gt 1 ] || fail "the session holds no chunk of the plug-in"
say "session saved: a chunk of $chunk characters"

run 180 $ardour-lua "$lua/read_session.lua" "$lua" "$work/session" "$name" "$parameter"
read_back=$(told value)
[ "$read_back" = "$set_to" ] || { cat "$log"; fail "parameter $parameter was $set_to and is \"$read_back\" after loading"; }
say "session loaded: parameter $parameter is $read_back again"

lasts "$session" $seconds
wave=$work/out.wav
run 300 $ardour-export -b 16 -o "$wave" "$work/session" check
[ -s "$wave" ] || { cat "$log"; fail "nothing was exported"; }

read -r samples peak < <(samples "$wave" | od -An -v -t d2 -w2 |
    awk '{ x = $1 < 0 ? -$1 : $1; if (x > peak) peak = x; n++ } END { print n + 0, peak + 0 }')
say "exported: $samples samples, peak $peak of 32768"
[ "$samples" -ge $((2 * 48000 * (seconds - 1))) ] || fail "the export is too short"
[ "$peak" -ge 100 ] || fail "the export is silent"
say "good"
