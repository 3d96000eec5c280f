#!/usr/bin/env bash
# Makes the README's pictures anew from the screens as they are, over the sample catalogue.
set -euo pipefail
cd "$(dirname "$0")/.."
made=$(mktemp -d)
trap 'rm -rf "$made"' EXIT
for scene in library-details library-artwork library-queue picker-season; do
    build/release/screen_pictures "$made" "$scene" >/dev/null 2>&1
done
mkdir -p docs/pictures
cp "$made"/library-details-light-1440.png docs/pictures/review.png
cp "$made"/library-artwork-dark-1440.png docs/pictures/artwork.png
cp "$made"/library-queue-light-1440.png docs/pictures/queue.png
cp "$made"/picker-season-dark-1440.png docs/pictures/match.png
