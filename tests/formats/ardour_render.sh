#!/bin/bash
# ardour_render.sh FOLDER PROGRAMS: Ardour 7 or 8 renders the same notes through the instrument as VST 2.4, LV2 and VST 3, as they
# lie in FOLDER, without a display or a sound device; vantoric-render, which lies in PROGRAMS, plays them as a MIDI file. On a
# patch in which nothing runs freely, the samples must be the same.
# Exit status: 0 good, 1 not, 77 no Ardour here.
set -euo pipefail

folder=$(realpath "$1")
programs=$(realpath "$2")
seconds=4
. "$(dirname "$0")/../host/ardour/common.sh"

# An installation whose first patch is the one to play: modules as files, since they look for the data where they really lie.
# They keep their age: Ardour scans again what is not a whole second older than what it knows of it.
installed=$work/installed
mkdir -p "$installed" "$work/lv2"
cp -rp "$folder"/Vantoric.so "$folder"/Vantoric.lv2 "$folder"/Vantoric.vst3 "$installed/" 2> /dev/null || true
ln -s "$folder/Vantoric_data" "$folder/Vantoric_wavetables" "$installed/"
cp -rs "$folder/Vantoric_sounds" "$installed/"
patch=$work/plain.fxp
cat > "$work/plain.json" << 'JSON'
{"format": 1, "name": "Plain", "layers": [{"WTWave1": "WT Sine", "FilType1": "LP 12dB", "Cutoff1": "2 kHz", "AttVol": "5 ms",
 "DecVol": "1 sec", "SusVol": "50%", "RelVol": "0.1 sec"}]}
JSON
"$programs/vantoric-patch" compile "$work/plain.json" "$patch" > "$work/log" 2>&1 || { cat "$work/log"; fail "the patch"; }
welcome=$(find "$installed/Vantoric_sounds" -name '0Welcome.fxp')
cp --remove-destination "$patch" "$welcome"
look_in "$installed"
ln -s "$installed/Vantoric.lv2" "$work/lv2/"
export LV2_PATH=$work/lv2:/usr/lib/lv2

# The notes of notes.lua as a MIDI file: 24000 ticks a quarter note, so that a tick is a frame.
notes() {
    local half on='\x00\x90\x30\x64\x00\x90\x37\x64\x00\x90\x3c\x64\x00\x90\x40\x64' off event=
    off='\x81\xbb\x40\x80\x30\x40\x00\x80\x37\x40\x00\x80\x3c\x40\x00\x80\x40\x40'
    for ((half = 0; half < seconds; ++half)); do
        [ $half = 0 ] || event+='\x81\xbb\x40'
        [ $half = 0 ] && event+=$on || event+=${on#'\x00'}
        event+=$off
    done
    event+='\x00\xff\x2f\x00'
    printf 'MThd\x00\x00\x00\x06\x00\x00\x00\x01\x5d\xc0MTrk'
    printf "\\x$(printf %02x $((${#event} / 4 >> 24)))\\x00\\x$(printf %02x $((${#event} / 4 >> 8 & 255)))\\x$(printf %02x $((${#event} / 4 & 255)))"
    printf "$event"
}
notes > "$work/notes.mid"
"$programs/vantoric-render" --plugin "$installed/Vantoric.so" --patch "$patch" --rate 48000 --block 256 --format 32f --tail 1 --quiet \
    "$work/notes.mid" "$work/expected.wav" || fail "the renderer"

# render TYPE PLUGIN: Ardour's tools abort now and then of their own accord, mostly at their end: what counts is what they left.
render() {
    local type=$1 plugin=$2 session=$work/session/check.ardour
    rm -rf "$work/session" "$work/$type.wav"
    timeout 180 $ardour-lua "$lua/make_session.lua" "$lua" "$work/session" "$type" "$plugin" > "$work/log" 2>&1 || true
    grep -q '^made' "$work/log" && [ -f "$session" ] || return 1
    lasts "$session" $seconds
    timeout 300 $ardour-export -b float -o "$work/$type.wav" "$work/session" check > "$work/log" 2>&1 || true
    [ -s "$work/$type.wav" ]
}
words() { samples "$1" | od -An -v -t f4 -w4; }
# The chord of each second after the first, which follows upon what the format's host did before, is sought where Ardour gave its
# notes to the plug-in: some blocks of its own late. From there on 20000 frames must be those of the renderer, to the bit.
compare() {
    local type=$1
    render "$@" || return 1
    awk -v type="$type" -v seconds=$seconds '
        FNR == NR { expected[n++] = $1; next }
        { found[m++] = $1 }
        function same(second, late,   k) {
            for (k = 0; k < 40000; ++k)
                if (found[2 * (second * 48000 + late) + k] != expected[2 * second * 48000 + k]) return 0
            return 1
        }
        function loud(second,   k) {
            for (k = 0; k < 40000; ++k) if (expected[2 * second * 48000 + k] > 0.01) return 1
            return 0
        }
        END {
            for (second = 1; second < seconds - 1; ++second) {
                for (late = 0; late <= 1024 && !same(second, late); ++late) {}
                if (late > 1024 || !loud(second)) exit 1
                text = text "  " late
            }
            print type ": the same samples as the renderer; chords late by frames:" text
        }' <(words "$work/expected.wav") <(words "$work/$type.wav")
}
# On a busy machine an export of Ardour's script tool has come out empty: three tries.
matches() {
    compare "$@" || compare "$@" || compare "$@" || { tail -5 "$work/log"; fail "$1 sounds other than the renderer"; }
}
LD_LIBRARY_PATH=$library timeout 120 "$library/ardour-vst-scanner" -f "$installed/Vantoric.so" > "$work/log" 2>&1 || true
matches LXVST Vantoric
[ ! -d "$installed/Vantoric.lv2" ] || matches LV2 https://vantoric.example/vantoric
if [ -d "$installed/Vantoric.vst3" ]; then
    LD_LIBRARY_PATH=$library timeout 120 "$library/ardour-vst3-scanner" -f "$installed/Vantoric.vst3" > "$work/log" 2>&1 || true
    matches VST3 Vantoric
fi
say "good"
