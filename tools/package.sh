#!/usr/bin/env bash
# tools/package.sh [OUTDIR]
# Makes the Debian package, the archive for those without root and, where the compiler for Windows is installed, the archive for
# Windows, all into OUTDIR (default: out/), and checks the first two.
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/packages.sh
out=$(realpath -m "${1:-out}")

need "to build the instrument and its player" "${build_packages[@]}"
need_window_library
need_format_headers
need "to make the packages" "${packaging_packages[@]}" "${manual_packages[@]}"

say "Building"
cmake --preset release -DVANTORIC_TESTS=OFF -DVANTORIC_BENCH=OFF >/dev/null
cmake --build build/release --target dist
version=$(sed -n 's/^CMAKE_PROJECT_VERSION:STATIC=//p' build/release/CMakeCache.txt)
mkdir -p "$out"
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

say "The archive"
name=Vantoric-$version-linux-$(uname -m)
cmake --install build/release --prefix "$scratch/usr" --strip >/dev/null
mkdir "$scratch/$name"
cp -r "$scratch/usr/lib/vantoric" "$scratch/$name/Vantoric"
for folder in Vantoric_data Vantoric_sounds Vantoric_wavetables; do
    rm "$scratch/$name/Vantoric/$folder"
    mv "$scratch/usr/share/vantoric/$folder" "$scratch/$name/Vantoric/"
done
# A system has the fonts as packages; here they come along.
[ ! -d dist/Vantoric/Vantoric_data/Fonts ] || cp -r dist/Vantoric/Vantoric_data/Fonts "$scratch/$name/Vantoric/Vantoric_data/"
mv "$scratch/usr/share/vantoric/songs" "$scratch/usr/bin" "$scratch/$name/"
mkdir -p "$scratch/$name/share"
for folder in applications icons man; do
    [ ! -d "$scratch/usr/share/$folder" ] || mv "$scratch/usr/share/$folder" "$scratch/$name/share/"
done
mv "$scratch/usr/share/doc/vantoric/"* "$scratch/$name/"
[ ! -L "$scratch/$name/Manual.html" ] || ln -sf Vantoric/Vantoric_data/Manual.html "$scratch/$name/Manual.html"
cp packaging/install.sh LICENSE "$scratch/$name/"
tar -C "$scratch" --owner=0 --group=0 --sort=name -cf - "$name" | xz -T0 >"$out/$name.tar.xz"
tests/packaging/archive_check.sh "$out/$name.tar.xz"

say "The Debian package"
(cd build/release && cpack -G DEB -D CPACK_DEBIAN_COMPRESSION_TYPE=none -B "$scratch/deb" >/dev/null) || fail "cpack failed"
deb=$(basename "$scratch"/deb/*.deb)
# It has taken the modules for libraries that programs link, and runs ldconfig for them, in vain.
dpkg-deb -R "$scratch/deb/$deb" "$scratch/unpacked"
rm -f "$scratch"/unpacked/DEBIAN/{postinst,postrm}
dpkg-deb --root-owner-group -Zxz -b "$scratch/unpacked" "$out/$deb" >/dev/null
lintian --fail-on error "$out/$deb"
dpkg-deb -x "$out/$deb" "$scratch/installed"
tests/packaging/papers_check.sh "$scratch/installed/usr/share/doc/vantoric"
[ ! -f packaging/vantoric.desktop ] || desktop-file-validate packaging/vantoric.desktop
for info in "$scratch"/usr/share/metainfo/*.xml; do [ ! -f "$info" ] || appstreamcli validate --no-net "$info"; done

say "The archive for Windows"
windows=
if command -v x86_64-w64-mingw32-g++-posix >/dev/null; then
    cmake --preset windows >/dev/null
    cmake --build build/windows
    windows=$(packaging/windows_archive.sh build/release build/windows "$out")
else
    say "Left out: its compiler is not here (Debian package g++-mingw-w64-x86-64-posix)."
fi

ls -sh "$out/$name.tar.xz" "$out/$deb" ${windows:+"$windows"}
