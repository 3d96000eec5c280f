# shellcheck shell=bash disable=SC2154
# Films of real packets, repeated: another program can read them.

# clip FILE SIZE SOUND [OPTION...]: 20 seconds of moving pictures and a tone.
clip() {
    local file=$1 size=$2 sound=$3
    shift 3
    ffmpeg -y -v error -nostdin -f lavfi -i "testsrc2=size=$size:rate=25:duration=20" \
        -f lavfi -i sine=sample_rate=48000:duration=20 -c:v libx264 -preset ultrafast "$@" \
        -pix_fmt yuv420p -c:a "$sound" -b:a 192k "$file"
}

# loop CLIP FILM [TIMES]: the clip again and again, until the film has $gib GiB when none are told.
loop() {
    local times=${3:-$(calc "$gib * 1073741824 / $(stat -c %s "$1")" '%d')}
    ffmpeg -y -v error -nostdin -stream_loop "$times" -i "$1" -c copy "$2"
    rm -f "$1"
}
