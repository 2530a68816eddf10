#!/usr/bin/env bash
# install_check.sh INSTALL.sh: the installer of links, with a folder and a home of its own.
set -euo pipefail
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
fail() { printf 'FAILED: %s\n' "$*" >&2; exit 1; }
export HOME=$scratch/home PATH=/usr/bin:/bin
unset XDG_DATA_HOME
folder="$scratch/a folder/Vantoric-1"
mkdir -p "$HOME" "$folder"/Vantoric/Vantoric.lv2 "$folder"/bin "$folder"/share/man/man1 "$folder"/share/applications
cp "$1" "$folder/install.sh"
touch "$folder"/Vantoric/Vantoric.so "$folder"/bin/vantoric-patch "$folder"/share/man/man1/vantoric-patch.1.gz
printf '[Desktop Entry]\nExec=vantoric\nIcon=vantoric\n' >"$folder"/share/applications/vantoric.desktop

leads() { [ "$(readlink "$1")" = "$2" ] || fail "$1 leads to '$(readlink "$1")', not to $2"; }
links() { find "$HOME" -type l | wc -l; }

"$folder/install.sh" >"$scratch/said" || fail "it did not end well: $(cat "$scratch/said")"
leads "$HOME/.vst/Vantoric.so" "$folder/Vantoric/Vantoric.so"
leads "$HOME/.lv2/Vantoric.lv2" "$folder/Vantoric/Vantoric.lv2"
leads "$HOME/.local/bin/vantoric-patch" "$folder/bin/vantoric-patch"
leads "$HOME/.local/share/man/man1/vantoric-patch.1.gz" "$folder/share/man/man1/vantoric-patch.1.gz"
entry="$HOME/.local/share/applications/vantoric.desktop"
grep -qxF "Exec=\"$folder/bin/vantoric\"" "$entry" || fail "the menu's entry does not name the program: $(cat "$entry")"
grep -qxF Icon=vantoric "$entry" || fail "the menu's entry is not whole"
[ ! -e "$HOME/.clap" ] || fail "a link was made for a format that is not in the folder"
[ "$(links)" = 4 ] || fail "$(links) links instead of 4"
grep -q 'not in your PATH' "$scratch/said" || fail "it says nothing of the PATH"

"$folder/install.sh" >/dev/null || fail "a second time it did not end well"
[ "$(links)" = 4 ] || fail "the second time made other links"

mv "$folder" "$scratch/moved"
"$scratch/moved/install.sh" >/dev/null || fail "after a move it did not end well"
leads "$HOME/.vst/Vantoric.so" "$scratch/moved/Vantoric/Vantoric.so"
grep -qxF "Exec=\"$scratch/moved/bin/vantoric\"" "$entry" || fail "the menu's entry stayed behind: $(cat "$entry")"

rm "$HOME/.vst/Vantoric.so"
echo mine >"$HOME/.vst/Vantoric.so"
if "$scratch/moved/install.sh" >/dev/null 2>"$scratch/said"; then fail "a file of another maker was not told"; fi
grep -q 'left alone' "$scratch/said" || fail "it does not say what it left alone"
[ "$(cat "$HOME/.vst/Vantoric.so")" = mine ] || fail "a file of another maker was replaced"

ln -s /usr/bin/env "$HOME/.lv2/Other.lv2"
rm "$HOME/.local/bin/vantoric-patch"
ln -s "$scratch/gone/somebody's vantoric-patch" "$HOME/.local/bin/vantoric-patch"  # of another maker, and leads nowhere
"$scratch/moved/install.sh" --remove >"$scratch/said" || fail "taking out did not end well"
grep -qF "$scratch/moved/Vantoric/Vantoric_sounds" "$scratch/said" || fail "it does not say where a user's patches are"
grep -q 'Take along what you want to keep' "$scratch/said" || fail "it does not say that a user's patches go with the folder"
[ "$(links)" = 2 ] || fail "$(links) links instead of the two that are not ours"
[ ! -e "$entry" ] || fail "the menu's entry stayed"
[ "$(cat "$HOME/.vst/Vantoric.so")" = mine ] || fail "taking out touched a file of another maker"

code=0; "$scratch/moved/install.sh" --wrong >/dev/null 2>&1 || code=$?
[ $code = 2 ] || fail "wrong use ends with $code"
"$scratch/moved/install.sh" --help | grep -q usage || fail "no help"
echo "The installer links, moves and takes out what is its own."
