# shellcheck shell=bash disable=SC2154
# A History of 50,000 entries. history_bench times each operation in turn with a plain write of the
# same bytes and prints a line each: name, ours, peer, bytes.

# history_row WHAT NAME [MILLISECONDS]: to the plain write, and to a limit where there is one.
history_row() {
    local ours peer
    ours=$(awk -v name="$2" '$1 == name { print $2 }' "$work/history")
    peer=$(awk -v name="$2" '$1 == name { print $3 }' "$work/history")
    row "$1, to a plain write" "$(milliseconds "$ours")" "$(milliseconds "$peer")" \
        "$(calc "$ours / $peer")"
    [ -z "${3:-}" ] && return
    row "$1, to $3 ms" "$(milliseconds "$ours")" "$3 ms" "$(calc "$ours / $3")" 1
}

measure_history() {
    say "Writing and showing a History of 50,000 entries"
    "$programs/history_bench" "$work" "$((3 * turns))" >"$work/history"
    history_row "History read" load
    history_row "History, an entry added" append 50
    history_row "History, rows of a day of 5,000" day 20
    history_row "History, rows of all days" days
    history_row "History, searched" search
    history_row "History as a table" csv 1000
    rm -rf "$HOME/.local"
}
