# shellcheck shell=bash disable=SC2154
# Proving a film laid out anew, from a cold cache: both files have to be read and hashed.
. bench/parts/film.sh

measure_verify() {
    big_film
    local rebuilt=$work/rebuilt.mp4 i
    say "Laying $gib GiB out anew"
    "$programs/marlet-mux" -tmp "$work" -inter 250 -moovpad 4096 "$film" -out "$rebuilt" >/dev/null
    say "Proving $gib GiB against as much"
    for ((i = 0; i < turns; i++)); do
        cold "$film" "$rebuilt"
        turn verify "$programs/verify_once" "$film" "$rebuilt"
        cold "$film" "$rebuilt"
        turn openssl openssl dgst -sha256 "$film" "$rebuilt"
    done
    rm -f "$rebuilt"
    row_of_times "proof of a rebuild, to openssl dgst of both" verify openssl 1.15
    row_of_memory "memory of the proof" verify 64
}
