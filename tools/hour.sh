#!/usr/bin/env bash
# tools/hour.sh [SECONDS [FRAMES [PATCH]]]
# Has the program (PROGRAM, default dist/bin/vantoric) play PATCH, CATEGORY/NAME of the library, by default the first that it
# loads by itself, on a JACK server without a sound card for SECONDS (default 3600) at blocks of FRAMES (default 64) and 48 kHz.
# Sixteen keys are held, and as many programs play them side by side as take half a core. Tells the load and the dropouts.
# For a quiet machine; REALTIME=yes asks the server for real-time priority, and says first how late the machine itself is where
# cyclictest (rt-tests) is installed. Needs jackd2 and its tools (Debian 13: jack-example-tools).
# Exit status: 0 without a dropout, 1 with one, 2 something is missing.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-3600} frames=${2:-64} patch=${3:-}
program=${PROGRAM:-dist/bin/vantoric}
for tool in jackd jack_midiseq jack_connect "$program"; do
    command -v "$tool" >/dev/null || { echo "hour: $tool is missing" >&2; exit 2; }
done

scratch=$(mktemp -d)
export HOME=$scratch JACK_DEFAULT_SERVER=vantoric-hour-$$ JACK_NO_START_SERVER=1
unset DISPLAY XDG_STATE_HOME XDG_CONFIG_HOME XDG_DATA_HOME
started=()
# The server ends by itself first, as a killed one keeps its place among the few that a machine has.
tidy() {
    exec 2>/dev/null
    kill -TERM "${started[@]}" || true
    sleep 2
    kill -KILL "${started[@]}" || true
    rm -rf "$scratch"
}
trap tidy EXIT
until_said() { for _ in $(seq 300); do grep -q "$1" "$2" && return 0; sleep 0.1; done; cat "$2" >&2; exit 2; }

# How late the machine wakes a thread that does nothing: no program can be better.
if command -v cyclictest >/dev/null && [ "${REALTIME:-no}" = yes ]; then
    period=$((frames * 1000000 / 48000))
    echo "hour: a bare thread of this priority, woken every $period us for 20 s, in us:" \
        "$(cyclictest -q -p 80 -i $period -l $((20000000 / period)) | grep -o 'Min:.*')"
fi

[ "${REALTIME:-no}" = yes ] && priority=-R || priority=-r
jackd -n "$JACK_DEFAULT_SERVER" $priority -d dummy -r 48000 -p "$frames" >"$scratch/jack" 2>&1 &
started+=($!)
sleep 2

# The keys, each struck anew every two seconds. All from one source, as every further client costs a change of processes a block.
keys=()
for key in 36 43 48 52 55 60 64 67 71 72 76 79 83 84 88 91; do keys+=(0 "$key" 90000); done
jack_midiseq keys 96000 "${keys[@]}" >/dev/null 2>&1 &
started+=($!)

players=()
# One more program on the server, which names a second of the same name with a number, and all keys to it.
add_player() {
    local number=${#players[@]} name=Vantoric said=$scratch/said${#players[@]}
    [ "$number" = 0 ] || name=$(printf 'Vantoric-%02d' "$number")
    mkdir "$scratch/$number"
    HOME=$scratch/$number "$program" --no-window --sound jack --seconds "$seconds" ${patch:+--patch "$patch"} >"$said" 2>&1 &
    players+=($!)
    started+=($!)
    until_said '^MIDI: ' "$said"
    for _ in $(seq 50); do jack_connect keys:out "$name:midi_in" >/dev/null 2>&1 && return; sleep 0.1; done
    echo "hour: no way from the keys to $name" >&2
    exit 2
}

# Seconds of the processor that the programs have taken, in hundredths.
taken() { for player in "${players[@]}"; do cat "/proc/$player/stat"; done | awk '{ sum += $14 + $15 } END { print sum }'; }
# The part of a core that they take over some seconds, in hundredths.
share() { local before; before=$(taken); sleep "$1"; echo $((($(taken) - before) / $1)); }

load=0
while [ "$load" -lt 50 ] && [ ${#players[@]} -lt 16 ]; do
    add_player
    load=$(share 3)
done
echo "hour: ${#players[@]} programs with 16 keys each take $load % of a core; $frames frames, $seconds s;" \
    "machine load $(cut -d' ' -f1-3 /proc/loadavg)"
# What a virtual machine's host gave to others, in ms: nobody here can play in that time.
stolen() { awk '/^cpu / { print 10 * $9 }' /proc/stat; }
before=$(stolen)
wait "${players[@]}" || { cat "$scratch"/said*; exit 1; }
echo "hour: of the processors $(($(stolen) - before)) ms were taken away by the machine's host"
tail -qn 1 "$scratch"/said*
! tail -qn 1 "$scratch"/said* | grep -qv ', 0 dropouts$'
