#!/usr/bin/env bash
# The objects that are compiled for AVX2 may offer the linker nothing but their loops of eight lanes: any other function
# could take the place of one that must run on every processor. Usage: wide_loops_check.sh OBJECT...
set -euo pipefail
status=77
for object in "$@"; do
    [[ $object == *wide_loops.cpp.o || $object == *wide_kernel_loops.cpp.o ]] || continue
    [[ $status == 77 ]] && status=0
    symbols=$(nm --demangle --defined-only --extern-only "$object")
    others=$(grep -vE ' [WV] .*(runLoop<.*, 8>|PairChain<|ScatteredChain<|LaneLoops<8>::)|::wideLoops$| D vantoric::wideKernelLoops$|personality' <<<"$symbols" || true)
    [[ -z $others ]] && continue
    printf 'not loops of eight lanes:\n%s\n' "$others"
    status=1
done
exit $status
