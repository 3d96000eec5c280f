# shellcheck shell=bash disable=SC2154
# Laying out anew a film whose sound lies behind its picture, from a cold cache, to FFmpeg's copying
# of all packets, which writes the tracks side by side too.
. bench/parts/clip.sh

apart_film() {
    apart=$work/apart.mp4
    local film=$work/looped.mp4
    say "Making a film of $gib GiB whose sound lies behind its picture"
    clip "$work/clip.mp4" 1920x1080 aac -qp 8
    loop "$work/clip.mp4" "$film"
    "$programs/store_apart" "$film" "$apart"
    rm -f "$film"
}

measure_rebuild() {
    apart_film
    local rebuilt=$work/rebuilt.mp4 i
    say "Laying it out anew"
    for ((i = 0; i < turns; i++)); do
        cold "$apart"
        turn rebuild "$programs/marlet-mux" -tmp "$work" -inter 500 -moovpad 4096 "$apart" \
            -out "$rebuilt"
        rm -f "$rebuilt"
        cold "$apart"
        turn "ffmpeg copy" ffmpeg -y -v error -nostdin -i "$apart" -map 0 -c copy "$rebuilt"
        rm -f "$rebuilt"
    done
    rm -f "$apart"
    row_of_times "rebuild, to ffmpeg -c copy" rebuild "ffmpeg copy" 0.8
    row_of_memory "memory of the rebuild" rebuild 64
}
