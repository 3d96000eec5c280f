# shellcheck shell=bash disable=SC2154
# From the start of the program to its first work done: one small film scanned into a report,
# without a source. Everything is in the cache: what is measured is the program itself.

measure_start() {
    local film=$work/start.mp4 i ours peer
    say "Starting"
    ffmpeg -y -v error -nostdin -f lavfi -i testsrc2=size=64x36:rate=25:duration=2 \
        -f lavfi -i sine=440:duration=2 -c:v libx264 -c:a aac "$film"
    # A start is short: many turns cost little and find a quiet moment.
    for ((i = 0; i < 10 * turns; i++)); do
        turn start "$programs/marlet" --scan "$film" --report "$work/start.tsv" --quit
        turn "start ffprobe" ffprobe -v error -show_format -show_streams "$film"
    done
    if [ "$(grep -c "" "$work/start.tsv")" != 2 ]; then
        say "The report does not hold the film."
        exit 1
    fi
    rm -f "$film"
    ours=${best[start/wall_ms]} peer=${best["start ffprobe/wall_ms"]}
    row "start and scan of a film, to 150 ms" "$(milliseconds "$ours")" "150 ms" \
        "$(calc "$ours / 150")" 1
    row "start and scan of a film, to ffprobe" "$(milliseconds "$ours")" "$(milliseconds "$peer")" \
        "$(calc "$ours / $peer")" 1.5
}
