# shellcheck shell=bash disable=SC2034,SC2154
# The big film, made once and kept for all parts.

big_film() {
    film=$work/film.mp4
    [ -e "$film" ] && return
    say "Making a film of $gib GiB"
    "$programs/big_film" "$film" "$gib"
    film_bytes=$(stat -c %s "$film")
}
