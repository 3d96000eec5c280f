# shellcheck shell=bash disable=SC2154
# Whole-file copying with a digest, and comparing, both from a cold cache.
. bench/parts/film.sh

measure_bulk() {
    big_film
    local copy=$work/copy.mp4 i
    say "Staging and comparing $gib GiB"
    for ((i = 0; i < turns; i++)); do
        rm -f "$copy"
        cold "$film"
        turn stage "$programs/file_ops_once" stage "$film" "$copy"
        rm -f "$copy"
        cold "$film"
        # shellcheck disable=SC2016
        turn cp+openssl sh -c 'cp "$0" "$1" && openssl dgst -sha256 "$0"' "$film" "$copy"
        cold "$film" "$copy"
        turn equal "$programs/file_ops_once" equal "$film" "$copy"
        cold "$film" "$copy"
        turn cmp cmp "$film" "$copy"
    done
    rm -f "$copy"
    row_of_times "stage, to cp and openssl dgst" stage cp+openssl 0.75
    row_of_times "compare, to cmp" equal cmp 1.1
    row_of_memory "memory of stage" stage 48
    row_of_memory "memory of compare" equal 48
}
