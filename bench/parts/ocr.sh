# shellcheck shell=bash disable=SC2154
# Pictures of text whose text is known: how much of it is read, how fast, in how much memory.

measure_ocr() {
    local folder=$work/ocr count=${MARLET_BENCH_PICTURES:-540} timed=72 language wrong most i
    local languages=(eng fra deu spa)
    say "Drawing and reading $count picture subtitles in each of ${#languages[@]} languages"
    for language in "${languages[@]}"; do
        "$programs/ocr_film" make "$folder/$language" "bench/ocr/held.$language.txt" "$count" \
            2>/dev/null
        turn "ocr all" "$programs/ocr_once" "$folder/$language/film.mkv" "$language" \
            "$folder/$language/read.txt"
        wrong=$("$programs/ocr_film" wrong "$folder/$language")
        most=2
        [ "$language" = eng ] && most=1
        row "characters wrong of picture subtitles ($language), in hundredths" "$wrong %" \
            "$most %" "$(calc "$wrong / $most")" 1
    done
    row_of_memory "memory of reading $count picture subtitles" "ocr all" 600

    say "Reading $timed pictures beside the tesseract program"
    "$programs/ocr_film" make "$folder/timed" bench/ocr/held.eng.txt "$timed" 2>/dev/null
    "$programs/ocr_film" pictures "$folder/timed"
    for ((i = 0; i < turns; i++)); do
        turn "ocr" "$programs/ocr_once" "$folder/timed/film.mkv" eng "$folder/timed/read.txt"
        # shellcheck disable=SC2016  # the inner shell's words
        turn "tesseract" bash -c 'for picture in "$0"/*.ppm; do
            tesseract "$picture" "${picture%.ppm}" -l eng --psm 6; done' "$folder/timed"
    done
    row_of_times "$timed pictures read, to tesseract started for each" "ocr" "tesseract" 0.33
    wrong=$("$programs/ocr_film" wrong "$folder/timed")
    row "characters wrong of these, to tesseract's" "$wrong %" \
        "$("$programs/ocr_film" wrong "$folder/timed" peer) %" \
        "$(calc "$wrong / ($("$programs/ocr_film" wrong "$folder/timed" peer) + 0.001)")"
    say "$("$programs/ocr_film" score "${languages[@]/#/$folder/}")"
    rm -rf "$folder"
}
