#!/usr/bin/env bash
# tools/manual_pictures.sh [NAME...]
# Takes the pictures of the manual (docs/manual/pictures), all or those named, from the real window: each drive of
# docs/manual/drives/NAME.drive is played to a fresh window on a screen of its own, and cut to the place that its line "crop"
# says, in the size of the list "Editor" that "size" says. A line "load WORDS" loads the first patch that the library finds for them.
# A drive with a line that fails ends the script, and leaves its picture as it was.
# The picture "program" is that of the program of its own, as it first opens. Needs dist/ and the target window-drive
# (BUILD names their folder, default build/release), xvfb and imagemagick.
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/packages.sh
need "to take the pictures of the manual" xvfb imagemagick

build=${BUILD:-build/release}
scratch=$(mktemp -d)
screen=
tidy() { [ -z "$screen" ] || kill "$screen" 2>/dev/null || true; rm -rf "$scratch"; }
trap tidy EXIT

# Where a user would have it; a copy whose files are links, so that nothing that is remembered stays behind. But the module
# itself says by its own place where the rest lies.
export HOME=$scratch/home XDG_STATE_HOME=
installed=$HOME/.vst/Vantoric
mkdir -p "$HOME/.vst" "$HOME/Music" "$HOME/Samples"
cp -rs "$PWD/dist/Vantoric" "$installed"
cp --remove-destination dist/Vantoric/Vantoric.so "$installed/Vantoric.so"

Xvfb -displayfd 3 -screen 0 2000x1200x24 -noreset 3>"$scratch/display" >/dev/null 2>&1 &
screen=$!
for _ in $(seq 100); do [ -s "$scratch/display" ] && break; sleep 0.1; done
export DISPLAY=:$(cat "$scratch/display")

# The commands of a drive.
commands() {
    printf 'open\nidle 500\n'
    cat "$1"
    printf 'picture %s\n' "$2"
}

# Forgets what earlier windows left, and sets the size: that of a line "size", or the normal one.
prepare() {
    local size
    size=$(sed -n 's/^# size \([0-9]*\)$/\1/p' "$1")
    rm -f "$installed"/Vantoric_data/*.cfg
    printf "\\x$(printf %x "${size:-3}")" >"$installed/Vantoric_data/VantoriSize.cfg"
}

# Small files: a palette is enough for flat colours.
cut_out() {
    local place width
    place=$(sed -n 's/^# crop \([0-9x+]*\).*/\1/p' "$1")
    width=$(sed -n 's/^# crop .* scale \([0-9]*\).*/\1/p' "$1")
    convert "$2" -crop "$place" +repage ${width:+-filter Lanczos -resize "$width"} -strip -dither None -colors 256 \
        -define png:compression-level=9 "PNG8:$3"
}

# The whole window, below which the screen is black.
picture_program() {
    local program fresh=$scratch/dist
    cp -rs "$PWD/dist" "$fresh"
    cp --remove-destination dist/bin/vantoric "$fresh/bin/vantoric"
    rm -f "$fresh"/Vantoric/Vantoric_data/*.cfg
    "$fresh/bin/vantoric" --device null >"$scratch/log" 2>&1 &
    program=$!
    sleep 6
    import -window root "$scratch/whole.png"
    kill "$program"
    convert "$scratch/whole.png" -bordercolor black -border 1 -trim +repage -filter Lanczos -resize 1600 -strip -dither None \
        -colors 256 -define png:compression-level=9 PNG8:docs/manual/pictures/program.png
}

mkdir -p docs/manual/pictures
[ $# -gt 0 ] || set -- program $(cd docs/manual/drives && ls -- *.drive | sed 's/\.drive$//')
for name in "$@"; do
    if [ "$name" = program ]; then
        picture_program
        continue
    fi
    drive=docs/manual/drives/$name.drive
    prepare "$drive"
    commands "$drive" "$scratch/whole.png" | "$build/window-drive" "$installed/Vantoric.so" >"$scratch/log" 2>&1 ||
        fail "$name: $(cat "$scratch/log")"
    cut_out "$drive" "$scratch/whole.png" "docs/manual/pictures/$name.png"
    rm -f "$scratch/whole.png"
    printf '%s %s\n' "$name" "$(stat -c %s "docs/manual/pictures/$name.png")"
done
