#!/bin/bash
# ardour_render.sh FOLDER: Ardour 7 or 8 renders the same notes through the instrument as VST 2.4, LV2 and VST 3, as they lie in
# FOLDER, without a display or a sound device; the three wave files must sound, and agree: to the bit until the song's
# position and decimal texts of values, which are Ardour's own, make a difference.
# Exit status: 0 good, 1 not, 77 no Ardour here.
set -euo pipefail

say() { echo "ardour_render: $*"; }
fail() { say "FAILED: $*"; exit 1; }

folder=$(realpath "$1")
seconds=4
scripts=$(cd "$(dirname "$0")" && pwd)
common=$(realpath "$scripts/../host/ardour")
ardour=
for version in 7 8; do
    command -v ardour$version-lua > /dev/null && command -v ardour$version-export > /dev/null && ardour=ardour$version
done
[ -n "$ardour" ] || { say "SKIPPED: Ardour is not installed (Debian package ardour)"; exit 77; }
library=$(dirname "$(readlink -f "$(command -v $ardour-export)")")/..

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
export HOME=$work/home XDG_RUNTIME_DIR=$work/run
unset XDG_CONFIG_HOME XDG_CACHE_HOME DISPLAY
settings=$HOME/.config/$ardour
mkdir -p "$settings/scripts" "$XDG_RUNTIME_DIR" "$work/lv2"
chmod 700 "$XDG_RUNTIME_DIR"
cp "$common/notes.lua" "$settings/scripts/"
cat > "$settings/config" << XML
<Ardour><Config>
<Option name="plugin-path-lxvst" value="$folder"/><Option name="plugin-path-vst3" value="$folder"/>
</Config></Ardour>
XML
ln -s "$folder/Vantoric.lv2" "$work/lv2/"
export LV2_PATH=$work/lv2:/usr/lib/lv2

# render TYPE PLUGIN: Ardour's tools abort now and then of their own accord, mostly at their end: what counts is what they left.
render() {
    local type=$1 plugin=$2 attempt session wave=$work/$1.wav
    for attempt in 1 2 3; do
        rm -rf "$work/session"
        timeout 180 $ardour-lua "$scripts/ardour_render.lua" "$common" "$work/session" "$plugin" "$type" > "$work/log" 2>&1 || true
        session=$work/session/check.ardour
        grep -q '^made' "$work/log" && [ -f "$session" ] || continue
        sed -i "s|<Locations/>|<Locations><Location id=\"900001\" name=\"session\" start=\"a0\" end=\"a$((282240000 * seconds))\" flags=\"IsSessionRange\" locked=\"0\" position-lock-style=\"AudioTime\" timestamp=\"0\" cue=\"0\"/></Locations>|" "$session"
        timeout 300 $ardour-export -b float -o "$wave" "$work/session" check > "$work/log" 2>&1 || true
        [ -s "$wave" ] && return 0
    done
    tail -5 "$work/log"
    fail "$type: nothing was exported"
}
# The samples of a wave file, as words.
samples() {
    local at
    at=$(LC_ALL=C grep -abo -m1 data "$1" | head -1 | cut -d: -f1)
    tail -c +$((at + 9)) "$1"
}

LD_LIBRARY_PATH=$library timeout 120 "$library/ardour-vst-scanner" -f "$folder/Vantoric.so" > "$work/log" 2>&1 || true
render LXVST Vantoric
reference=$(samples "$work/LXVST.wav" | md5sum)
peak=$(samples "$work/LXVST.wav" | od -An -v -t f4 -w4 | awk '{ x = $1 < 0 ? -$1 : $1; if (x > peak) peak = x } END { print peak + 0 }')
say "VST 2.4: peak $peak"
awk -v peak="$peak" 'BEGIN { exit !(peak > 0.003) }' || fail "the export is silent"
rms() { samples "$1" | od -An -v -t f4 -w4 | awk '{ sum += $1 * $1; n++ } END { printf "%.6f", sqrt(sum / n) }'; }
# The largest difference of two files within the first half second.
difference() {
    paste <(samples "$1" | head -c $((8 * 24000)) | od -An -v -t f4 -w4) <(samples "$2" | head -c $((8 * 24000)) | od -An -v -t f4 -w4) |
        awk '{ d = $1 < $2 ? $2 - $1 : $1 - $2; if (d > most) most = d } END { print most + 0 }'
}
compare() {
    local apart level expected
    render "$@"
    if [ "$(samples "$work/$1.wav" | md5sum)" = "$reference" ]; then
        say "$1: the same samples"
        return
    fi
    # Ardour counts the song's position otherwise for each format, in its last digits, and the arpeggiators of the welcome patch
    # follow it: a step may fall into the tick beside. The first half second is before any step that could. And it keeps values
    # of VST 3 parameters as decimal text in its session, and sends them back.
    apart=$(difference "$work/$1.wav" "$work/LXVST.wav")
    level=$(rms "$work/$1.wav")
    expected=$(rms "$work/LXVST.wav")
    say "$1: within $apart in the first half second; RMS $level for $expected"
    awk -v a="$level" -v b="$expected" -v apart="$apart" 'BEGIN { exit !(a > 0.95 * b && a < 1.05 * b && apart < 0.002) }'
}
# On a busy machine an export of Ardour's script tool has come out empty: three tries, as elsewhere.
matches() {
    compare "$@" || compare "$@" || compare "$@" || fail "$1 sounds other than VST 2.4"
}
[ ! -d "$folder/Vantoric.lv2" ] || matches LV2 https://vantoric.example/vantoric
if [ -d "$folder/Vantoric.vst3" ]; then
    LD_LIBRARY_PATH=$library timeout 120 "$library/ardour-vst3-scanner" -f "$folder/Vantoric.vst3" > "$work/log" 2>&1 || true
    matches VST3 Vantoric
fi
say "good"
