# shellcheck shell=bash disable=SC2154
# A Matroska film becomes an M4V, all sound copied, with every proof on the way: to FFmpeg's copying
# of the packets, and hashing source and result once.
. bench/parts/clip.sh

convert_request() { printf '{"mode": "convert", "file": "%s", "outputDir": "%s"}' "$1" "$2"; }

matroska_film() {
    say "Making a Matroska film of $gib GiB"
    clip "$work/clip.mkv" 1920x1080 ac3 -qp 8
    loop "$work/clip.mkv" "$1"
}

# A picture every 40 ms and a frame of sound every 32: as many as in more than two hours of film.
long_film() {
    clip "$work/clip.mkv" 64x36 ac3
    loop "$work/clip.mkv" "$1" 399
}

measure_convert() {
    local film=$work/film.mkv new=$work/new i
    mkdir -p "$new"
    matroska_film "$film"
    convert_request "$film" "$new" >"$work/request.json"
    say "Converting it"
    for ((i = 0; i < turns; i++)); do
        cold "$film"
        turn convert "$programs/one_job" "$work/request.json"
        grep -q '^RESULT done' "$work/turn.out" || { cat "$work/turn.out" >&2; exit 1; }
        rm -f "$new"/*
        cold "$film"
        turn "mkv copy" ffmpeg -y -v error -nostdin -i "$film" -map 0 -c copy "$new/copy.mp4"
        cold "$film" "$new/copy.mp4"
        turn "mkv hashes" openssl dgst -sha256 "$film" "$new/copy.mp4"
        rm -f "$new"/*
    done
    local peers
    peers=$(calc "${best["mkv copy/wall_ms"]} + ${best["mkv hashes/wall_ms"]}")
    row "conversion, sound copied, to ffmpeg -c copy and openssl dgst" \
        "$(seconds "${best["convert/wall_ms"]}")" "$(seconds "$peers")" \
        "$(calc "${best["convert/wall_ms"]} / $peers")" 1.5
    rm -f "$film"

    long_film "$film"
    turn "long convert" "$programs/one_job" "$work/request.json"
    grep -q '^RESULT done' "$work/turn.out" || { cat "$work/turn.out" >&2; exit 1; }
    rm -f "$film" "$new"/*
    row_of_memory "memory of a conversion of 200,000 pictures" "long convert" 200
}
