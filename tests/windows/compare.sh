#!/usr/bin/env bash
# compare.sh LINUX_BUILD WINDOWS_BUILD: has both builds play some songs, that for Windows in wine, and compares every sample.
# Ends with 77 where there is no wine.
set -euo pipefail
linux=$(realpath "$1") windows=$(realpath "$2")
wine=$(command -v wine64 || command -v wine || ls /usr/lib/wine/wine64 2>/dev/null) || { echo "There is no wine here."; exit 77; }
scratch=$(mktemp -d)
trap '"$wine"server -k 2>/dev/null || true; rm -rf "$scratch"' EXIT
export WINEPREFIX=$scratch/wine WINEDEBUG=-all
unset DISPLAY

# Windows modules look for their data beside themselves, as all do.
mkdir "$scratch/Vantoric"
cp "$windows/dist-data/Vantoric.dll" "$scratch/Vantoric/"
for folder in Vantoric_data Vantoric_sounds Vantoric_wavetables; do ln -s "$linux/dist-data/$folder" "$scratch/Vantoric/$folder"; done

result=0
while read -r song patch; do
    for system in linux windows; do
        if [ $system = linux ]; then run=("$linux/raw-render" "$linux/dist-data/Vantoric.so")
        else run=("$wine" "$windows/raw-render.exe" "$scratch/Vantoric/Vantoric.dll"); fi
        timeout 300 "${run[@]}" "$linux/dist-data/songs/$song.mid" "$linux/dist-data/Vantoric_sounds/$patch.fxp" \
            "$scratch/$system.raw" || { echo "FAILED: $song on $patch, $system"; exit 1; }
    done
    if cmp "$scratch/linux.raw" "$scratch/windows.raw"; then echo "$song on $patch: the same samples"
    else echo "FAILED: $song on $patch differs"; result=1; fi
done <<'SONGS'
fugue Organ/Drawbar Hall
minuet_in_g Keys/Silver Tines
SONGS
exit $result
