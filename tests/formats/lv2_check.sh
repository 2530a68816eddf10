#!/bin/bash
# lv2_check.sh BUNDLE: the LV2 bundle before strangers: its description against the specifications (sord_validate), a run of some
# seconds (lv2bench), and a live host that sets a control and reads it back (jalv, on a dummy JACK server where one is installed).
# Exit status: 0 good, 1 not, 77 if the tools are not installed.
set -euo pipefail

say() { echo "lv2_check: $*"; }
fail() { say "FAILED: $*"; exit 1; }

bundle=$(realpath "$1")
uri=https://vantoric.example/vantoric
command -v sord_validate > /dev/null && command -v lv2bench > /dev/null ||
    { say "SKIPPED: sord_validate and lv2bench are not installed (Debian packages sordi, lilv-utils)"; exit 77; }

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
# A folder with nothing but the bundle and the specifications.
mkdir "$work/lv2"
ln -s "$bundle" "$work/lv2/"
specifications=
for folder in /usr/lib/lv2 /usr/lib/*/lv2 /usr/share/lv2; do
    [ -d "$folder/core.lv2" ] || [ -d "$folder/schemas.lv2" ] && specifications="$specifications $folder"
done
[ -n "$specifications" ] || { say "SKIPPED: no specifications (Debian package lv2-dev)"; exit 77; }
export LV2_PATH=$work/lv2$(printf ':%s' $specifications)

# Only the specifications' own bundles: plug-ins that are installed as well are none of ours.
files=()
for folder in $specifications; do
    for name in schemas core atom buf-size data-access dynmanifest event instance-access log midi morph options parameters patch \
        port-groups port-props presets resize-port state time ui units uri-map urid worker; do
        for file in "$folder/$name.lv2"/*.ttl; do [ ! -f "$file" ] || files+=("$file"); done
    done
done
sord_validate "${files[@]}" "$bundle"/*.ttl > "$work/log" 2>&1 || true
tail -1 "$work/log"
grep -q 'Found 0 errors' "$work/log" || { head -40 "$work/log"; fail "the description is not valid"; }

timeout 120 lv2bench "$uri" > "$work/log" 2>&1 || { cat "$work/log"; fail "lv2bench"; }
grep -q "^[0-9].*$uri" "$work/log" || { cat "$work/log"; fail "lv2bench did not run it"; }
say "run: $(grep "$uri" "$work/log")"

if command -v jalv > /dev/null && command -v jackd > /dev/null; then
    export JACK_DEFAULT_SERVER=vantoric-lv2-$$
    jackd -n "$JACK_DEFAULT_SERVER" -r -d dummy -r 48000 -p 1024 > "$work/jack" 2>&1 &
    server=$!
    sleep 2
    (sleep 4; echo "set Volume 0.25"; sleep 1; echo "controls"; sleep 1; echo "quit") |
        timeout 60 jalv -n vantoric-check "$uri" > "$work/log" 2>&1 || true
    kill "$server" 2> /dev/null || true
    grep -q 'Volume = 0.25' "$work/log" || { cat "$work/log"; fail "jalv did not set the volume"; }
    say "jalv: $(grep -o 'Volume = .*' "$work/log" | tail -1)"
fi
say "good"
