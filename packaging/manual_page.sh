#!/bin/sh
# manual_page.sh HELP2MAN PROGRAM ABOUT PAGE: a manual page of a program's own help text, and of that of each of its commands.
set -eu
help2man=$1 program=$2 about=$3 page=$4

commands=$("$program" --help | sed -n '/^Subcommands:/,/^$/s/^  \([a-z][a-z-]*\) .*/\1/p')
for command in $commands; do
    printf '[COMMAND %s]\n.nf\n' "$command"
    # As it stands; what holds for all commands is said once.
    "$program" "$command" --help | sed -e '/^Exit codes:/d' -e 's/\\/\\e/g' -e "s/^[.']/\\\\\&&/" -e 's/-/\\-/g'
    printf '.fi\n\n'
done >"$page.commands"
set --
[ ! -s "$page.commands" ] || set -- --include="$page.commands"
"$help2man" --no-info --section=1 --name="$about" "$@" --output="$page" "$program"
rm "$page.commands"
