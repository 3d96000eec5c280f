# shellcheck shell=bash disable=SC2154
# Writing details into the big film: what goes through the program, in sizes of the film, and how
# long it takes beside a plain copy. Once on the disk at hand, once where blocks can be shared.
. bench/parts/film.sh

can_clone() {
    echo x >"$1/original" && cp --reflink=always "$1/original" "$1/clone" 2>/dev/null
    local result=$?
    rm -f "$1/original" "$1/clone"
    return $result
}

# write_details FOLDER LABEL: writes new details into FOLDER/film.mp4, with all else in FOLDER/home.
write_details() {
    local i
    for ((i = 0; i < turns; i++)); do
        cat >"$work/request.json" <<JSON
{"file": "$1/film.mp4", "mode": "details", "fixLayout": false,
 "details": {"kind": "movie", "title": "A Long Film, Turn $i", "genre": "Drama", "cast": ["A", "B"],
             "description": "Two hours of noise.", "releaseDate": "2001-02-03"}}
JSON
        cold "$1/film.mp4"
        turn "$2" env HOME="$1/home" "$programs/one_job" "$work/request.json"
        grep -q '^RESULT done' "$work/turn.out" || {
            say "The write did not succeed: $(cat "$work/turn.out")"
            exit 1
        }
        cold "$1/film.mp4"
        turn "$2 cp" cp --reflink=never "$1/film.mp4" "$1/copy.mp4"
        rm -f "$1/copy.mp4"
    done
}

# write_rows WHERE LABEL GOAL
write_rows() {
    local moved=$((${best[$2/rchar]} + ${best[$2/wchar]}))
    local blocks=$((${best[$2/read_bytes]} + ${best[$2/write_bytes]}))
    local ours=${best[$2/wall_ms]} peer=${best["$2 cp/wall_ms"]}
    row "details write, $1: bytes moved, in films" "$(mebibytes $moved)" \
        "$(mebibytes "$film_bytes")" "$(calc "$moved / $film_bytes")" "$3"
    row "details write, $1: disk traffic, in films" "$(mebibytes $blocks)" \
        "$(mebibytes "$film_bytes")" "$(calc "$blocks / $film_bytes")"
    row "details write, $1: time, in times of cp" "$(seconds "$ours")" "$(seconds "$peer")" \
        "$(calc "$ours / $peer")"
}

measure_write() {
    big_film
    mkdir -p "$work/home"
    local goal=8.2 kind
    kind=$(df --output=fstype "$work" | tail -n 1)
    can_clone "$work" && goal=6.2
    say "Writing details on $kind"
    write_details "$work" write
    write_rows "$kind" write "$goal"
    [ "$goal" = 6.2 ] && return
    if ! measure_write_cloning; then
        row_missing "details write, where blocks are shared: bytes moved" 6.2 "needs root and xfsprogs"
    fi
}

# An XFS of its own, in a file.
measure_write_cloning() {
    local image=$work/xfs.img mount=$work/xfs
    ((EUID == 0)) && command -v mkfs.xfs >/dev/null || return 1
    mkdir -p "$mount"
    truncate -s "$(calc "$film_bytes * 3.4 + 600e6" '%.0f')" "$image"
    mkfs.xfs -q "$image" && mount -o loop "$image" "$mount" || return 1
    cleanups+=("umount '$mount'")
    can_clone "$mount" || return 1
    say "Writing details on XFS"
    # The same film: what was written into it on the disk at hand stays in it.
    cp "$film" "$mount/film.mp4"
    mkdir -p "$mount/home"
    write_details "$mount" xfs
    write_rows xfs xfs 6.2
}
