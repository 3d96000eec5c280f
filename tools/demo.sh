#!/usr/bin/env bash
# Shows the main job on a library made for the purpose: nothing outside .demo is touched.
set -euo pipefail
cd "$(dirname "$0")/.."
programs=$PWD/build/release
demo=$PWD/.demo
library=$demo/library

say() { printf '\n\033[1m%s\033[0m\n' "$*"; }

rm -rf "$demo"
mkdir -p "$library" "$demo/home"
export HOME=$demo/home XDG_DATA_HOME=$demo/home/data XDG_CACHE_HOME=$demo/home/cache \
    XDG_CONFIG_HOME=$demo/home/config

say "1. Making a library of real files with FFmpeg"
"$programs/make_demo_library" --with-trouble "$library"

say "2. Starting the sample catalogue (a small stand-in for the services, on this machine only)"
"$programs/marlet-catalogue" --port-file "$demo/port" >"$demo/catalogue.log" 2>&1 &
catalogue=$!
trap 'kill $catalogue 2>/dev/null || true' EXIT
for _ in $(seq 100); do
    [ -s "$demo/port" ] && break
    sleep 0.05
done
port=$(cat "$demo/port")
export MARLET_TMDB_API=http://127.0.0.1:$port/3 MARLET_TMDB_IMAGES=http://127.0.0.1:$port \
    MARLET_APPLE_TV_API=http://127.0.0.1:$port/uts/v3/ MARLET_ITUNES_API=http://127.0.0.1:$port/itunes/ \
    MARLET_TMDB_TOKEN=sample-catalogue MARLET_TEST_LIBRARY=$library/
echo "It answers on port $port."

say "3. Scanning: what is each file, and does a person have to look?"
"$programs/marlet" --scan "$library" --report "$demo/report.tsv" --progress --quit
column -t -s $'\t' <"$demo/report.tsv" 2>/dev/null || cat "$demo/report.tsv"

echo
echo "The same films, as Apple TV tells them:"
"$programs/marlet" --scan "$library/Movies" --sources=appleTV --report "$demo/apple.tsv" --quit
grep -c '^CERTAIN' "$demo/apple.tsv" | sed 's/$/ are certain by Apple TV alone./'

say "4. Writing details and covers into the files that are certain"
tag=()
while IFS= read -r -d '' file; do tag+=(--tag "$file"); done < <(
    find "$library" -type f \( -iname '*.mp4' -o -iname '*.m4v' \) -print0 | sort -z)
"$programs/marlet" "${tag[@]}" --progress --quit

echo
echo "Where it says that the sound layout was fixed, the file was laid out anew and proved sample by"
echo "sample: its sound lay in one long stretch, or it had no room beside its index for the details."

say "5. Putting the original details of that run back"
"$programs/marlet" --restore-last-batch --progress --quit

say "Done. The library is in .demo/library, History in .demo/home/data."
