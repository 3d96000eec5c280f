# shellcheck shell=bash disable=SC2154
# From the start of the program to its first work done: one small film scanned into a report,
# without a source, by somebody who has a long History. Everything is in the cache: what is measured
# is the program itself.

# long_history ENTRIES: in the home of the measurements.
long_history() {
    local folder=$HOME/.local/share/Marlet
    mkdir -p "$folder"
    awk -v count="$1" 'BEGIN {
        print "["
        for (i = 0; i < count; i++)
            printf "{\"id\":\"%08d-0000-4000-8000-000000000000\",\"date\":\"2026-01-01T00:00:00Z\"," \
                "\"path\":\"/films/Film %d (1999).m4v\",\"title\":\"Film %d\",\"isMovie\":true," \
                "\"result\":\"done\",\"changes\":[\"title: none\",\"description changed\"]," \
                "\"message\":\"Details written\",\"size\":1}%s\n", i, i, i, i + 1 < count ? "," : ""
        print "]" }' >"$folder/history.json"
}

measure_start() {
    local film=$work/start.mp4 i ours peer
    say "Starting"
    ffmpeg -y -v error -nostdin -f lavfi -i testsrc2=size=64x36:rate=25:duration=2 \
        -f lavfi -i sine=440:duration=2 -c:v libx264 -c:a aac "$film"
    long_history 50000
    # A start is short: many turns cost little and find a quiet moment.
    for ((i = 0; i < 10 * turns; i++)); do
        turn start "$programs/marlet" --scan "$film" --report "$work/start.tsv" --quit
        turn "start ffprobe" ffprobe -v error -show_format -show_streams "$film"
    done
    if [ "$(grep -c "" "$work/start.tsv")" != 2 ]; then
        say "The report does not hold the film."
        exit 1
    fi
    rm -rf "$film" "$HOME/.local"
    ours=${best[start/wall_ms]} peer=${best["start ffprobe/wall_ms"]}
    row "start and scan of a film, to 150 ms" "$(milliseconds "$ours")" "150 ms" \
        "$(calc "$ours / 150")" 1
    row "start and scan of a film, to ffprobe" "$(milliseconds "$ours")" "$(milliseconds "$peer")" \
        "$(calc "$ours / $peer")" 1
}
