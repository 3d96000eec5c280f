#!/usr/bin/env bash
# Measures the built programs of build/bench against peers in the same run and prints one table.
# A goal that is missed is told, not punished: the exit status is 0 unless a measurement failed.
#
#   MARLET_BENCH_GIB=4       size of the big film
#   MARLET_BENCH_FILES=2000  files of the scan
#   MARLET_BENCH_PICTURES=540  picture subtitles of each language
#   MARLET_BENCH_TURNS=3     turns of each side, alternately; the best counts
#   MARLET_BENCH_ONLY=...    some of: index matroska bulk names mix ocr write rebuild verify convert scan start history screens
#   TMPDIR=/var/tmp          the disk to measure on
set -euo pipefail
# Numbers have points, whatever the person's language.
export LC_ALL=C.UTF-8
cd "$(dirname "$0")/.."
# shellcheck disable=SC2034  # read by the parts
{
    programs=${MARLET_BENCH_PROGRAMS:-$PWD/build/bench}
    gib=${MARLET_BENCH_GIB:-4}
    scanned=${MARLET_BENCH_FILES:-2000}
    turns=${MARLET_BENCH_TURNS:-3}
}
work=$(mktemp -d "${TMPDIR:-/var/tmp}/marlet-bench.XXXXXX")

# Nothing of the person's own is read or changed.
unset MARLET_TMDB_TOKEN MARLET_TMDB_API MARLET_TMDB_IMAGES
# Nobody listens there: no measurement may reach the real services.
export MARLET_APPLE_TV_API=http://127.0.0.1:9/uts/v3/ MARLET_ITUNES_API=http://127.0.0.1:9/
export HOME=$work/home MARLET_NO_KEYCHAIN=1
unset XDG_DATA_HOME XDG_CACHE_HOME XDG_CONFIG_HOME XDG_STATE_HOME
mkdir -p "$HOME"

cleanups=()
at_end() {
    local i
    for ((i = ${#cleanups[@]} - 1; i >= 0; i--)); do eval "${cleanups[i]}" || true; done
    rm -rf "$work"
}
trap at_end EXIT
trap 'exit 130' INT TERM

say() { printf '%s\n' "$*" >&2; }

# shellcheck source=bench/measure.sh
. bench/measure.sh
for part in ${MARLET_BENCH_ONLY:-index matroska bulk names mix ocr write rebuild verify convert scan start history screens}; do
    # shellcheck source=/dev/null
    . "bench/parts/$part.sh"
    "measure_$part"
done

print_machine
print_table
