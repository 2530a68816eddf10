#!/bin/sh
# Makes the instrument known to this user's hosts and menu by links into this folder, or takes them out again. Needs no root.
set -eu

usage() {
    cat <<'TEXT'
usage: ./install.sh [--remove] [--help]

Links the plug-ins of this folder to where hosts look for them (~/.vst, ~/.clap, ~/.lv2, ~/.vst3), the programs to
~/.local/bin, and the icon and the manual pages to ~/.local/share, where it writes the menu's entry as well. The folder
stays where it is: keep it, and run this again if you move it. With --remove all that is taken out again, and nothing
else is touched: also not what you saved, which is in this folder if you may write there.

Exit codes: 0 done, 1 something was left alone or could not be done (it says what), 2 wrong use.
TEXT
}

removing=no
case "${1-}" in
    "") ;;
    --remove) removing=yes ;;
    --help | -h) usage; exit 0 ;;
    *) usage >&2; exit 2 ;;
esac
[ $# -le 1 ] || { usage >&2; exit 2; }

here=$(cd "$(dirname "$0")" && pwd -P)
share=${XDG_DATA_HOME:-$HOME/.local/share}
result=0
count=0

complain() { printf '%s\n' "$*" >&2; result=1; }

# is_ours WHAT WHERE: whether the link WHERE leads to WHAT of this folder, or of one that is gone: then it is ours to replace.
is_ours() {
    [ -L "$2" ] || return 1
    case "$(readlink "$2")" in
        "$here/$1") return 0 ;;
        */"$1") [ ! -e "$2" ] ;;
        *) return 1 ;;
    esac
}

# place WHAT WHERE: a link WHERE to WHAT of this folder, if that is there.
place() {
    [ -e "$here/$1" ] || return 0
    if [ $removing = yes ]; then
        if is_ours "$1" "$2"; then rm -f "$2" && count=$((count + 1)); fi
        return 0
    fi
    mkdir -p "$(dirname "$2")" 2>/dev/null || { complain "$(dirname "$2"): cannot make this folder"; return 0; }
    if [ -e "$2" ] || [ -L "$2" ]; then
        is_ours "$1" "$2" || { complain "$2: is there already and is not of this folder; left alone"; return 0; }
        rm -f "$2"
    fi
    if ln -s "$here/$1" "$2" 2>/dev/null; then count=$((count + 1)); else complain "$2: cannot be made"; fi
}

place Vantoric/Vantoric.so "$HOME/.vst/Vantoric.so"
place Vantoric/Vantoric.clap "$HOME/.clap/Vantoric.clap"
place Vantoric/Vantoric.lv2 "$HOME/.lv2/Vantoric.lv2"
place Vantoric/Vantoric.vst3 "$HOME/.vst3/Vantoric.vst3"
for program in "$here"/bin/*; do
    name=$(basename "$program")
    place "bin/$name" "$HOME/.local/bin/$name"
done
for page in "$here"/share/man/man1/*; do
    name=$(basename "$page")
    place "share/man/man1/$name" "$share/man/man1/$name"
done
place share/icons/hicolor/scalable/apps/vantoric.svg "$share/icons/hicolor/scalable/apps/vantoric.svg"

# The menu's entry names the program by its place: a desktop may know nothing of ~/.local/bin. The line of its own says whose
# it is.
mark="X-Vantoric-Installed=by install.sh"
entry=$share/applications/vantoric.desktop
place_entry() {
    from=$here/share/applications/vantoric.desktop
    [ -e "$from" ] || return 0
    if [ -e "$entry" ] || [ -L "$entry" ]; then
        if ! grep -qxF "$mark" "$entry" 2>/dev/null && ! is_ours share/applications/vantoric.desktop "$entry"; then
            [ $removing = yes ] || complain "$entry: is there already and is not of this folder; left alone"
            return 0
        fi
        rm -f "$entry"
        [ $removing = no ] || count=$((count + 1))
    fi
    [ $removing = no ] || return 0
    # Quotes, backslashes and the like within the double quotes of Exec, each behind a backslash, which the file doubles.
    program=$(printf '%s\n' "$here/bin/vantoric" | sed -e 's/[\\"`$]/\\&/g' -e 's/\\/\\\\/g' -e 's/%/%%/g')
    if mkdir -p "$(dirname "$entry")" 2>/dev/null && {
        while IFS= read -r line; do
            case $line in
                Exec=*) printf 'Exec="%s"\n' "$program" ;;
                *) printf '%s\n' "$line" ;;
            esac
        done <"$from" && printf '%s\n' "$mark"
    } 2>/dev/null >"$entry"; then count=$((count + 1)); else complain "$entry: cannot be made"; fi
}
place_entry

if [ $removing = yes ]; then
    printf 'Took out %s entries.\n' "$count"
    # As the instrument decides where what a user makes goes.
    if [ -w "$here/Vantoric" ] && [ "${here#/usr/}" = "$here" ]; then
        printf 'What you saved is in this folder: patches, stars and tags in %s, settings in %s.\n' \
            "$here/Vantoric/Vantoric_sounds" "$here/Vantoric/Vantoric_data"
        printf 'Take along what you want to keep before you delete it.\n'
    else
        printf 'This folder can be deleted now. What you saved is in %s.\n' "$share/vantoric"
    fi
else
    printf 'Made %s entries that lead into %s\n' "$count" "$here"
    case ":$PATH:" in
        *":$HOME/.local/bin:"*) ;;
        *) printf 'The programs are in %s, which is not in your PATH.\n' "$HOME/.local/bin" ;;
    esac
fi
exit $result
