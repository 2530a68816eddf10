#!/usr/bin/env bash
# clang-tidy over the instrument's own rooms, by the compile commands of the release build.
set -euo pipefail
cd "$(dirname "$0")/.."
git ls-files 'base/*.cpp' 'platform/*.cpp' 'sound/*.cpp' 'effects/*.cpp' 'samples/*.cpp' 'voice/*.cpp' 'parameters/*.cpp' 'patch/*.cpp' 'loading/*.cpp' 'engine/*.cpp' 'library/*.cpp' 'editor/*.cpp' 'faces/*.cpp' |
    grep -v win32 | xargs -P "$(nproc)" -n 4 clang-tidy-19 --quiet -p build/release 2>/dev/null
