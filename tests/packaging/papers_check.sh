#!/usr/bin/env bash
# papers_check.sh FOLDER: whatever an installed paper links to or names among the papers is installed as well: links and pictures
# of Markdown, places within a page, and names like `docs/hosts.md`. FOLDER holds README.md, docs/ and, if the build made it, Manual.html
# or a link to it.
set -euo pipefail
cd "$1"
result=0
fail() { printf 'FAILED: %s\n' "$*" >&2; result=1; }

# The places that a page has, as its headings make them.
places() {
    sed -n 's/^##* *//p' "$1" | tr '[:upper:]' '[:lower:]' | sed -e 's/[^[:alnum:] _-]//g' -e 's/ /-/g'
}
# followed PAPER TARGET: whether TARGET, as PAPER names it, is there.
followed() {
    local paper=$1 file=${2%%#*} place=
    case "$2" in *#*) place=${2#*#} ;; esac
    case "$2" in https://* | http://* | mailto:*) return 0 ;; /*) return 1 ;; esac
    if [ -n "$file" ]; then file=$(dirname "$paper")/$file; else file=$paper; fi
    [ -e "$file" ] || return 1
    [ -z "$place" ] || [[ $file != *.md ]] || places "$file" | grep -qxF "$place"
}

[ -f README.md ] || fail "there is no README.md"
papers=0
while read -r paper; do
    papers=$((papers + 1))
    while read -r target; do
        followed "$paper" "$target" || fail "$paper links to $target, which is not installed"
    done < <(sed 's/`[^`]*`//g' "$paper" | grep -o '\](\([^)]*\))' | sed -e 's/^](//' -e 's/)$//' -e 's/ ".*//')
    while read -r named; do
        [ -e "$named" ] || [ -e "$(dirname "$paper")/$named" ] || fail "$paper names $named, which is not installed"
    done < <(grep -o '`[A-Za-z0-9_./-]*`' "$paper" | tr -d '`' | grep -E '^docs/.|\.md$' | sort -u)
done < <(find . -name '*.md' | sort)
[ $papers -gt 1 ] || fail "there are no papers"

# The manual holds its pictures, and its links lead to places of its own or into the web.
if [ -e Manual.html ]; then
    ids=$(grep -o ' id="[^"]*"' Manual.html | sed 's/.*"\(.*\)"/\1/')
    while read -r place; do
        grep -qxF -- "$place" <<<"$ids" || fail "Manual.html links to #$place, which it does not have"
    done < <(grep -o 'href="#[^"]*"' Manual.html | sed 's/.*#\(.*\)"/\1/' | sort -u)
    if grep -oE '(href|src)="[^"]{1,200}' Manual.html | grep -vE '="(#|data:|https?://)'; then fail "Manual.html needs these beside it"; fi
fi
exit $result
