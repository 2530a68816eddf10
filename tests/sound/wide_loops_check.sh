#!/usr/bin/env bash
# The object that is compiled for AVX2 may offer the linker nothing but its loops of eight lanes: any other function
# could take the place of one that must run on every processor. Usage: wide_loops_check.sh OBJECT...
set -euo pipefail
for object in "$@"; do
    [[ $object == *wide_loops.cpp.o ]] || continue
    others=$(nm --demangle --defined-only --extern-only "$object" |
        grep -vE ' [WV] .*(runLoop|runInLanes|runChains)<.*, 8(, [0-9])?>|::wideLoops$|personality' || true)
    [[ -z $others ]] && exit 0
    printf 'not loops of eight lanes:\n%s\n' "$others"
    exit 1
done
exit 77
