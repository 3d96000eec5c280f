# shellcheck shell=bash disable=SC2154
# The windows, drawn in memory without a display and without a graphics card.

measure_screens() {
    local i first fps late longest figures=$work/screens.txt
    export QT_QPA_PLATFORM=offscreen QT_QUICK_BACKEND=software
    say "Opening windows"
    for ((i = 0; i < 3 * turns; i++)); do
        turn "empty window" "$programs/screens_bench" empty
        turn window "$programs/screens_bench" open
    done
    row "start to window, to 1 s" "$(milliseconds "${best[window/wall_ms]}")" "1000 ms" \
        "$(calc "${best[window/wall_ms]} / 1000")" 1
    row "start to window, to an empty one" "$(milliseconds "${best[window/wall_ms]}")" \
        "$(milliseconds "${best["empty window/wall_ms"]}")" \
        "$(calc "${best[window/wall_ms]} / ${best["empty window/wall_ms"]}")"

    say "Scrolling 5,000 films"
    : >"$figures"
    for ((i = 0; i < turns; i++)); do
        turn review "$programs/screens_bench" review 5000
        # Beside what Qt has to say.
        grep -xE '[0-9. ]+' "$work/turn.out" | tr '\n' ' ' >>"$figures"
        echo >>"$figures"
    done
    # The best turn of each figure: a busy machine takes time from all of them.
    first=$(cut -d' ' -f1 "$figures" | sort -n | head -n 1)
    row "5,000 films, first picture, to 1 s" "$(milliseconds "$first")" "1000 ms" \
        "$(calc "$first / 1000")" 1
    fps=$(cut -d' ' -f2 "$figures" | sort -n | tail -n 1)
    row "scrolling them, pictures a second (goal to ours)" "$fps" "30" "$(calc "30 / $fps")" 1
    longest=$(cut -d' ' -f3 "$figures" | sort -n | head -n 1)
    late=$(cut -d' ' -f4 "$figures" | sort -n | head -n 1)
    row "the longest of 600, to a thirtieth of a second; $late were longer" \
        "$(milliseconds "$longest")" "33.3 ms" "$(calc "$longest * 30 / 1000")" 1
    fps=$(cut -d' ' -f5 "$figures" | sort -n | tail -n 1)
    row "leaping through them, pictures a second (goal to ours)" "$fps" "30" \
        "$(calc "30 / $fps")" 1
    first=$(cut -d' ' -f8 "$figures" | sort -n | head -n 1)
    row "one of them taken away, to its picture" "$(milliseconds "$first")" "100 ms" \
        "$(calc "$first / 100")" 1
    row_of_memory "memory of it" review 500
    unset QT_QPA_PLATFORM QT_QUICK_BACKEND
}
