#!/usr/bin/env bash
# Objects "*_wide.cpp.o", compiled for AVX2, may offer the linker nothing but functions of their own: one that other
# sources have as well could take the place of theirs, which must run on every processor.
# Usage: wide_objects_check.sh OBJECT...
set -euo pipefail
checked=77
for object in "$@"; do
    [[ $object == *_wide.cpp.o ]] || continue
    symbols=$(nm --demangle --defined-only --extern-only "$object")
    shared=$(grep -E ' [WVu] ' <<<"$symbols" | grep -v personality || true)
    [[ -z $shared ]] || { printf 'shared with other objects:\n%s\n' "$shared"; exit 1; }
    checked=0
done
exit "$checked"
