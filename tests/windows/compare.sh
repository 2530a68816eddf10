#!/usr/bin/env bash
# compare.sh LINUX_BUILD WINDOWS_BUILD: runs in wine what was built for Windows: the tests of its platform; and, from the archive
# for users, unpacked, the program of its own and each format's module, whose samples are compared with those that the build for
# Linux makes of the same notes.
# compare.sh alone tells by its exit code whether wine is here.
set -euo pipefail
wine=$(command -v wine64 || command -v wine || ls /usr/lib/wine/wine64 2>/dev/null) || exit 77
[ $# = 2 ] || exit 0
linux=$(realpath "$1") windows=$(realpath "$2")
scratch=$(mktemp -d)
export WINEPREFIX=$scratch/wine WINEDEBUG=-all LC_ALL=C.UTF-8
unset DISPLAY
server=
end() {
    [ -z "$server" ] || kill "$server"
    "$(dirname "$wine")"/wineserver -k 2>/dev/null || /usr/lib/wine/wineserver64 -k 2>/dev/null || true
    rm -rf "$scratch"
}
trap end EXIT

result=0
fail() { echo "FAILED: $*"; result=1; }
run_wine() { timeout 300 "$wine" "$@" </dev/null; }

# ---- the archive, and a place for it as users have them

archive=$("$(dirname "$0")"/../../packaging/windows_archive.sh "$linux" "$windows" "$scratch")
mkdir "$scratch/A folder, Übung"
cd "$scratch/A folder, Übung"
cmake -E tar xf "$archive"
root=$PWD/$(basename "$archive" .zip)
content=$root/Vantoric
grep -o '^  Vantoric.[^ ]*' "$root/INSTALL.txt" | tr '\\' / | while read -r named; do
    [ -e "$root/$named" ] || { echo "FAILED: INSTALL.txt names $named"; exit 1; }
done || result=1
for there in "$content"/*; do
    grep -q "^  Vantoric.$(basename "$there") " "$root/INSTALL.txt" || fail "INSTALL.txt does not name $(basename "$there")"
done
[ -z "$(find "$root" -name '*.cfg' -o -name '*.so' -o -type l)" ] || fail "the archive holds what is not for users"
grep -qv $'\r$' "$root/INSTALL.txt" && fail "INSTALL.txt has lines that do not end as there"

# Boxes show on a display of their own, where one can be had.
display=
if command -v Xvfb >/dev/null; then
    mkfifo "$scratch/number"
    Xvfb -displayfd 3 -screen 0 800x600x24 -noreset 3>"$scratch/number" >/dev/null 2>&1 &
    server=$!
    read -r display <"$scratch/number"
fi
if [ -f "$windows/test-windows.exe" ]; then
    DISPLAY=${display:+:$display} run_wine "$windows/test-windows.exe" --gtest_brief=1 || fail "the tests of the platform"
fi

# ---- the program of its own

says() {
    local code=$1 words=$2 got
    shift 2
    set +e
    output=$(run_wine "$content/vantoric.exe" "$@" 2>&1)
    got=$?
    set -e
    [ $got = "$code" ] || fail "vantoric $*: exit code $got in place of $code: $output"
    grep -q "$words" <<<"$output" || fail "vantoric $* does not say \"$words\": $output"
}
says 0 "WASAPI" --help
says 2 "not-there" --not-there
says 0 "WASAPI (--device)" --list-devices
says 5 "no such patch" --sound none --patch none/such
says 3 "no sound: WASAPI" --sound wasapi --device "no such device"
says 0 "played 0.5 s" --sound none --patch "Keys/Silver Tines" --seconds 0.5 --record "$scratch/take.wav"
says 0 "has no window" --sound none --seconds 0.2
kept=$(find "$WINEPREFIX" -path '*/AppData/Local/Vantoric/State/standalone.patch')
[ -n "$kept" ] || fail "vantoric keeps no patch"
says 5 "Übung 音.fxp: no such patch" --sound none --patch "Übung 音.fxp"
says 0 "take Ü.wav" --sound none --seconds 0.2 --record "$scratch/take Ü.wav"
[ -s "$scratch/take Ü.wav" ] || fail "vantoric does not record into a name of any signs"

"$wine" "$content/vantoric.exe" --sound none >"$scratch/said" 2>/dev/null </dev/null &
program=$!
for _ in $(seq 100); do grep -q "MIDI:" "$scratch/said" && break; sleep 0.1; done
rm -f "$kept"
kill -INT $program
wait $program || fail "vantoric does not end well by Ctrl-C: $?"
grep -q "^played" "$scratch/said" || fail "vantoric says nothing at its end"
[ -s "$kept" ] || fail "vantoric keeps no patch"
[ "$(head -c 4 "$scratch/take.wav")" = RIFF ] || fail "vantoric records no WAV file"

# ---- each module

compare() {
    if cmp -s "$scratch/linux.raw" "$scratch/windows.raw"; then echo "$*: the same samples"
    else fail "$*: other samples: $(cmp "$scratch/linux.raw" "$scratch/windows.raw" 2>&1 || true)"
    fi
    rm -f "$scratch/linux.raw" "$scratch/windows.raw"
}
while read -r song patch; do
    "$linux/raw-render" "$linux/dist-data/Vantoric.so" "$linux/dist-data/songs/$song.mid" \
        "$linux/dist-data/Vantoric_sounds/$patch.fxp" "$scratch/linux.raw" >/dev/null || fail "$song on $patch, Linux"
    run_wine "$windows/raw-render.exe" "$content/Vantoric.dll" "$linux/dist-data/songs/$song.mid" \
        "$linux/dist-data/Vantoric_sounds/$patch.fxp" "$scratch/windows.raw" >/dev/null || fail "$song on $patch, Windows"
    compare "VST 2.4, $song on $patch"
done <<'SONGS'
fugue Organ/Drawbar Hall
minuet_in_g Keys/Silver Tines
SONGS
modules=("clap Vantoric.clap Vantoric.clap" "vst3 Vantoric.vst3/Contents/x86_64-linux/Vantoric.so Vantoric.vst3/Contents/x86_64-win/Vantoric.vst3")
for line in "${modules[@]}"; do
    read -r format here there <<<"$line"
    [ -f "$content/$there" ] && [ -f "$linux/dist-data/$here" ] || continue
    patch="$linux/dist-data/Vantoric_sounds/Keys/Silver Tines.fxp"
    "$linux/format-render" "$format" "$linux/dist-data/$here" "$patch" "$scratch/linux.raw" >/dev/null || fail "$format, Linux"
    run_wine "$windows/format-render.exe" "$format" "$content/$there" "$patch" "$scratch/windows.raw" >/dev/null ||
        fail "$format, Windows"
    compare "$format"
done
exit $result
