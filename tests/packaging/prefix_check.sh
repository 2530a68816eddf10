#!/usr/bin/env bash
# prefix_check.sh BUILD: what `cmake --install` puts under a prefix plays from there, with nothing but that prefix.
set -euo pipefail
build=$1
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
fail() { printf 'FAILED: %s\n' "$*" >&2; exit 1; }
export HOME=$scratch/home
unset XDG_DATA_HOME XDG_CONFIG_HOME XDG_STATE_HOME
prefix=$scratch/prefix
mkdir -p "$HOME"

cmake --install "$build" --prefix "$prefix" >/dev/null
[ -z "$(find "$prefix" -xtype l)" ] || fail "links that lead nowhere: $(find "$prefix" -xtype l)"
for link in "$prefix"/lib/{vst,clap,lv2,vst3}/*; do
    [ -e "$link" ] || continue
    [[ $(realpath "$link") = "$prefix"/lib/vantoric/* ]] || fail "$link leads out of the prefix"
done

for program in "$prefix"/bin/*; do
    "$program" --version | grep -q "^$(basename "$program") [0-9]" || fail "$program does not tell its version"
done

papers=$prefix/share/doc/vantoric
"$(dirname "$(realpath "$0")")/papers_check.sh" "$papers" || fail "the papers name what is not there"
if [ -f "$prefix/share/vantoric/Vantoric_data/Manual.html" ]; then
    [ -f "$papers/Manual.html" ] || fail "the manual is not among the papers"
fi

# The manual page tells every option of every command.
page=$prefix/share/man/man1/vantoric-patch.1.gz
if [ -f "$page" ]; then
    zcat "$page" | tr -d '\\' >"$scratch/page"
    for command in $("$prefix/bin/vantoric-patch" --help | sed -n '/^Subcommands:/,/^$/s/^  \([a-z-]*\) .*/\1/p'); do
        grep -qi "^\.SH.*COMMAND $command" "$scratch/page" || fail "the manual page has no section on $command"
        for option in $("$prefix/bin/vantoric-patch" "$command" --help | sed -n 's/^  \(--[a-z-]*\) .*/\1/p'); do
            grep -q -- "^  $option" "$scratch/page" || fail "the manual page does not tell $command $option"
        done
    done
fi

song=$prefix/share/vantoric/songs/welcome.mid
patch=$prefix/share/vantoric/Vantoric_sounds/ArpMultilayer/0Welcome.fxp
"$prefix/bin/vantoric-render" --patch "$patch" --end 1 --fail-on-silence "$song" "$scratch/by-itself.wav" >/dev/null ||
    fail "vantoric-render does not find the instrument that is installed with it"
"$prefix/bin/vantoric-render" --plugin "$prefix/lib/vst/Vantoric.so" --patch "$patch" --end 1 --fail-on-silence "$song" \
    "$scratch/by-the-link.wav" >/dev/null || fail "the module does not sound through the link that hosts follow"
cmp "$scratch/by-itself.wav" "$scratch/by-the-link.wav" || fail "the two renders differ"

if [ -x "$prefix/bin/vantoric" ]; then
    code=0
    "$prefix/bin/vantoric" --sound none --no-window --patch "$scratch/none.fxp" >/dev/null 2>"$scratch/said" || code=$?
    [ $code -ne 0 ] && [ -s "$scratch/said" ] || fail "a patch that is not there is not told"
fi
echo "Installed under a prefix, everything plays from there."
