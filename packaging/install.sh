#!/bin/sh
# Makes the instrument known to this user's hosts and menu by links into this folder, or takes them out again. Needs no root.
set -eu

usage() {
    cat <<'TEXT'
usage: ./install.sh [--remove] [--help]

Links the plug-ins of this folder to where hosts look for them (~/.vst, ~/.clap, ~/.lv2, ~/.vst3), the programs to
~/.local/bin, and the menu's entry with its icon and the manual pages to ~/.local/share. The folder stays where it is:
keep it, and run this again if you move it. With --remove the links that lead into this folder are taken out again, and
nothing else is touched.

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

# What a link leads to lies in this folder, or in one that is gone: then it is ours to replace.
is_ours() {
    [ -L "$1" ] || return 1
    case "$(readlink "$1")" in
        "$here"/*) return 0 ;;
    esac
    [ ! -e "$1" ]
}

# place WHAT WHERE: a link WHERE to WHAT of this folder, if that is there.
place() {
    [ -e "$here/$1" ] || return 0
    if [ $removing = yes ]; then
        if is_ours "$2"; then rm -f "$2" && count=$((count + 1)); fi
        return 0
    fi
    mkdir -p "$(dirname "$2")" 2>/dev/null || { complain "$(dirname "$2"): cannot make this folder"; return 0; }
    if [ -e "$2" ] || [ -L "$2" ]; then
        is_ours "$2" || { complain "$2: is there already and is not of this folder; left alone"; return 0; }
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
place share/applications/vantoric.desktop "$share/applications/vantoric.desktop"

if [ $removing = yes ]; then
    printf 'Took out %s links. This folder can be deleted now.\n' "$count"
else
    printf 'Made %s links into %s\n' "$count" "$here"
    case ":$PATH:" in
        *":$HOME/.local/bin:"*) ;;
        *) printf 'The programs are in %s, which is not in your PATH.\n' "$HOME/.local/bin" ;;
    esac
fi
exit $result
