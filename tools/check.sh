#!/usr/bin/env bash
# What can be checked without building: format, headers, includes and the arrows between rooms.
# Prints the real table of arrows and fails on one that docs/architecture.md does not draw.
set -euo pipefail
cd "$(dirname "$0")/.."
failed=0

formatting=$(mktemp)
mapfile -t files < <(git ls-files '*.h' '*.cpp')
if ! clang-format --dry-run --Werror "${files[@]}" 2>"$formatting"; then
    head -n 20 "$formatting" >&2
    echo "Not formatted: run clang-format -i on these files." >&2
    failed=1
fi
rm -f "$formatting"

for header in $(git ls-files '*.h'); do
    grep -q '^#pragma once' "$header" || { echo "$header: no #pragma once" >&2; failed=1; }
done

if grep -nE '#include "[^/"]+"' $(git ls-files 'src/*.h' 'src/*.cpp') >&2; then
    echo "An include names its folder." >&2
    failed=1
fi

# The drawing: lines "room: rooms it sees" in a fenced block of the architecture page.
drawn=$(sed -n '/^```arrows$/,/^```$/p' docs/architecture.md | grep -v '^```')
real=$(for room in src/*/; do
    room=$(basename "$room")
    sees=$(grep -hoE '#include "[a-z0-9_]+/' -r --include=*.h --include=*.cpp src/"$room" 2>/dev/null |
        sed -E 's/#include "([a-z0-9_]+)\//\1/' | sort -u | grep -vx "$room" | tr '\n' ' ' || true)
    echo "$room: ${sees% }"
done)
[ "${1:-}" = --arrows ] && echo "$real"
while IFS=: read -r room sees; do
    allowed=" $(echo "$drawn" | sed -n "s/^$room: *//p") "
    for target in $sees; do
        if [[ "$allowed" != *" $target "* ]]; then
            echo "src/$room includes src/$target, an arrow that docs/architecture.md does not draw." >&2
            failed=1
        fi
    done
done <<<"$real"

# Sentences of the program are kept by tests; paths of a developer's machine are not kept at all.
if git grep -nIE '(^|[" =])/(home|root|Users)/[a-z]' -- src tests bench tools docs ':!tools/check.sh' >&2; then
    echo "A path of somebody's machine." >&2
    failed=1
fi
exit $failed
