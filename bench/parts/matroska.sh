# shellcheck shell=bash disable=SC2154
# A Matroska film of 20 GiB whose pictures are mostly holes: reading what it holds, and counting its
# frames. Only the film is cold: an opening takes less than loading a program from the disk.

measure_matroska() {
    local small=$work/small.mkv big=$work/big.mkv i moved
    say "Making a Matroska film of 20 GiB"
    ffmpeg -v error -nostdin -f lavfi -i testsrc2=size=640x360:rate=24:duration=20.2 \
        -f lavfi -i sine=sample_rate=48000:duration=20.2 -map 0 -map 1 -map 1 \
        -c:v libx264 -preset ultrafast -x264-params keyint=48:scenecut=0 -c:a ac3 -ac 2 "$small"
    "$programs/big_mkv" "$small" "$big" 20 >/dev/null
    for ((i = 0; i < turns; i++)); do
        sync
        "$programs/file_ops_once" forget "$big"
        turn "mkv open" "$programs/mkv_once" open "$big"
        sync
        "$programs/file_ops_once" forget "$big"
        turn "mkvmerge" mkvmerge -J "$big"
        sync
        "$programs/file_ops_once" forget "$big"
        turn "mkv stats" "$programs/mkv_once" stats "$big"
        sync
        "$programs/file_ops_once" forget "$big"
        turn "ffprobe" ffprobe -v error -count_packets -show_streams "$big"
    done
    row "tracks and chapters of a Matroska film, to mkvmerge -J" \
        "$(milliseconds "${best["mkv open/wall_ms"]}")" \
        "$(milliseconds "${best[mkvmerge/wall_ms]}")" \
        "$(calc "${best["mkv open/wall_ms"]} / ${best[mkvmerge/wall_ms]}")" 0.20
    row "its frames counted, to ffprobe -count_packets" \
        "$(seconds "${best["mkv stats/wall_ms"]}")" "$(seconds "${best[ffprobe/wall_ms]}")" \
        "$(calc "${best["mkv stats/wall_ms"]} / ${best[ffprobe/wall_ms]}")" 0.50
    moved=${best["mkv stats/rchar"]}
    row "bytes read to count them, in hundredths of the film" "$(mebibytes "$moved")" \
        "$(mebibytes "$(stat -c %s "$big")")" "$(calc "100 * $moved / $(stat -c %s "$big")")" 1
    rm -f "$small" "$big"
}
