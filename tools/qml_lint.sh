#!/usr/bin/env bash
# qml_lint.sh BUILD: qmllint over the screens of a build. qmllint 6.4 calls an id of the file's own
# "unqualified" when a delegate names it, though QML binds it by the file's text and no pragma of
# that version says so; those are left out, everything else fails.
set -euo pipefail
build=$(realpath "${1:-build/release}")
cd "$(dirname "$0")/.."

said=$(mktemp)
trap 'rm -f "$said"' EXIT
/usr/lib/qt6/bin/qmllint --bare -I "$build/src/screens" -I /usr/lib/x86_64-linux-gnu/qt6/qml \
    --resource "$build"/src/screens/.rcc/qmake_Marlet.qrc \
    --resource "$build"/src/screens/.rcc/marlet_screens_raw_qml_0.qrc \
    "$PWD"/src/screens/*/*.qml >"$said" 2>&1 || true

# Whether a place of a file names an id of that file.
is_own_id() {
    local word
    word=$(sed -n "$2p" "$1" | cut -c"$3"- | grep -oE '^[a-zA-Z_]+') || return 1
    grep -qE "(^|[ {;])id: $word\b" "$1"
}

failed=0
while IFS= read -r line; do
    if [[ $line =~ ^(Warning|Error):\ ([^:]+):([0-9]+):([0-9]+):\ (.*)$ ]]; then
        file=${BASH_REMATCH[2]} row=${BASH_REMATCH[3]} column=${BASH_REMATCH[4]} words=${BASH_REMATCH[5]}
        [ "$words" = "Unqualified access" ] && is_own_id "$file" "$row" "$column" && continue
        echo "${file#"$PWD"/}:$row:$column: $words" >&2
        failed=1
    elif [[ $line =~ ^(Warning|Error): ]]; then
        echo "$line" >&2
        failed=1
    fi
done <"$said"
exit $failed
