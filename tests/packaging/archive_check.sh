#!/usr/bin/env bash
# archive_check.sh ARCHIVE: the archive for those without root, unpacked in a home of its own. What its papers name is in it,
# install.sh makes it known, it plays through the links, and goes again without a trace.
set -euo pipefail
archive=$(realpath "$1") checks=$(dirname "$(realpath "$0")")
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
fail() { printf 'FAILED: %s\n' "$*" >&2; exit 1; }
export HOME=$scratch/home
unset XDG_DATA_HOME XDG_CONFIG_HOME XDG_STATE_HOME
mkdir -p "$HOME/somewhere"
tar -C "$HOME/somewhere" -xf "$archive"
folder=$(echo "$HOME"/somewhere/*)
[ -d "$folder" ] || fail "the archive holds more than one folder"

[ -z "$(find "$folder" -xtype l)" ] || fail "links that lead nowhere: $(find "$folder" -xtype l)"
[ -z "$(find "$folder" -name '*.cfg')" ] || fail "settings of who made it: $(find "$folder" -name '*.cfg')"
"$checks/papers_check.sh" "$folder" || fail "the papers name what is not there"
for named in README.md CHANGELOG.md LICENSE Manual.html install.sh bin songs Vantoric docs; do
    [ -e "$folder/$named" ] || fail "$named is missing"
done
for program in $(grep -o '`vantoric[a-z-]*`' "$folder/README.md" | tr -d '`' | sort -u); do
    [ -x "$folder/bin/$program" ] || fail "the papers name $program, which is not in bin"
done
for page in $(grep -o '`man [a-z-]*`' "$folder/README.md" | tr -d '`' | cut -d' ' -f2 | sort -u); do
    [ -f "$folder/share/man/man1/$page.1.gz" ] || fail "the papers name the manual page $page, which is not there"
done

"$folder/install.sh" >"$scratch/said" || fail "install.sh: $(cat "$scratch/said")"
for link in .vst/Vantoric.so .clap/Vantoric.clap .lv2/Vantoric.lv2/manifest.ttl .vst3/Vantoric.vst3/Contents; do
    [ -e "$HOME/$link" ] || fail "install.sh makes no $link"
done
for program in "$folder"/bin/*; do
    program=$HOME/.local/bin/$(basename "$program")
    "$program" --version | grep -q "^$(basename "$program") [0-9]" || fail "$program does not tell its version"
done
songs=$folder/songs patch=$folder/Vantoric/Vantoric_sounds/Keys/"Silver Tines".fxp
"$HOME/.local/bin/vantoric" --no-window --sound none --patch "Keys/Silver Tines" --seconds 0.2 >/dev/null ||
    fail "vantoric does not play a patch of its own"
render() { "$HOME/.local/bin/vantoric-render" "$@" --patch "$patch" --end 1 --fail-on-silence >/dev/null; }
render "$songs/welcome.mid" "$scratch/by-itself.wav" || fail "vantoric-render does not find its instrument"
render --plugin "$HOME/.vst/Vantoric.so" "$songs/welcome.mid" "$scratch/by-the-link.wav" || fail "the link does not sound"
cmp "$scratch/by-itself.wav" "$scratch/by-the-link.wav" || fail "the two renders differ"

"$folder/install.sh" --remove >"$scratch/said" || fail "install.sh --remove: $(cat "$scratch/said")"
left=$(find "$HOME" -path "$folder" -prune -o \( -type f -o -type l \) -print | grep -v -e '/\.local/state/' -e '/\.config/' || true)
[ -z "$left" ] || fail "install.sh --remove leaves $left"
echo "The archive holds what its papers name, plays from where it was unpacked, and goes again."
