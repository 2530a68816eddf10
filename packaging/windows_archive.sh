#!/usr/bin/env bash
# windows_archive.sh LINUX_BUILD WINDOWS_BUILD OUTDIR: what was built for Windows, with the content that a build for Linux made, as
# one archive for users. Tells its path.
set -euo pipefail
[ $# = 3 ] || { echo "usage: windows_archive.sh LINUX_BUILD WINDOWS_BUILD OUTDIR" >&2; exit 2; }
here=$(dirname "$(realpath "$0")")
content=$(realpath "$1")/dist-data modules=$(realpath "$2")/dist-data
out=$(realpath -m "$3")
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' "$2/CMakeCache.txt")
name=Vantoric-$version-windows-x86_64
mkdir -p "$scratch/$name/Vantoric" "$out"
# The papers with the ends of lines that every editor there takes.
sed 's/$/\r/' "$here/INSTALL-windows.txt" >"$scratch/$name/INSTALL.txt"
for module in Vantoric.dll Vantoric.clap Vantoric.vst3 vantoric.exe; do
    if [ -e "$modules/$module" ]; then cp -r "$modules/$module" "$scratch/$name/Vantoric/"
    else sed -i "/^  Vantoric.$module /d" "$scratch/$name/INSTALL.txt"  # a build without that format's headers
    fi
done
find "$scratch/$name/Vantoric" -type f -exec x86_64-w64-mingw32-strip {} +
cp -rL "$content"/{Vantoric_data,Vantoric_sounds,Vantoric_wavetables} "$scratch/$name/Vantoric/"
mkdir -p "$scratch/$name/Vantoric/Vantoric_sounds"/{User,Favourites}
# Hosts write settings beside the banks when someone plays from the build folder: they stay out.
find "$scratch/$name" -name '*.cfg' -delete
sed 's/$/\r/' "$here/../LICENSE" >"$scratch/$name/LICENSE.txt"
sed 's/$/\r/' "$here/../CHANGELOG.md" >"$scratch/$name/CHANGELOG.txt"
rm -f "$out/$name.zip"
(cd "$scratch" && cmake -E tar cf "$out/$name.zip" --format=zip "$name")
echo "$out/$name.zip"
