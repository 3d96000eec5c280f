#!/usr/bin/env bash
# Puts a transcript of a real `./dev demo` into the README, leaving out most of the like lines and
# cutting the long ones.
set -euo pipefail
cd "$(dirname "$0")/.."
transcript=$(mktemp)
trap 'rm -f "$transcript"' EXIT

# Of each kind of line, the first few.
./dev build >/dev/null
./dev demo 2>/dev/null | sed 's/\x1b\[[0-9;]*m//g' | awk '
    function kind(line) {
        if (line ~ /^\[ *[0-9]+\//) return "made"
        if (line ~ /^matched: .* CERTAIN/) return "matched"
        if (line ~ /^RESULT done.* fixed \([0-9][0-9]/) return "long stretch"
        if (line ~ /^RESULT done.* fixed /) return "fixed"
        if (line ~ /^RESULT done/) return "done"
        if (line ~ /^RESULT failed/) return "failed"
        if (line ~ /^RESTORE done/) return "restored"
        if (line ~ /^CERTAIN /) return "certain"
        return ""
    }
    {
        k = kind($0)
        limit = k == "certain" ? 9 : 3
        if (k != "" && ++seen[k] > limit) { if (seen[k] == limit + 1) print "..."; next }
        gsub(/  +/, "  ")
        print (length($0) > 150 ? substr($0, 1, 147) "..." : $0)
    }' >"$transcript"

awk -v file="$transcript" '
    /^<!-- transcript -->/ { print; print "```"; while ((getline line < file) > 0) print line; print "```"; skipping = 1; next }
    /^<!-- end of transcript -->/ { skipping = 0 }
    !skipping { print }' README.md >"$transcript.new"
mv "$transcript.new" README.md
