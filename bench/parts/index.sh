# shellcheck shell=bash disable=SC2154
# Reading a film's index and measuring its sound layout. index_bench makes the films, times whole
# processes in turn and prints a line a film; its last columns are read here.

# index_value FILM COLUMN-FROM-THE-END
index_value() {
    awk -v film="$1" -v back="$2" 'index($0, film " ") == 1 { print $(NF - back) }' "$work/index"
}

measure_index() {
    say "Reading an index (films of 10 min, 2 h and 10 h)"
    "$programs/index_bench" >"$work/index"
    sed 's/^/    /' "$work/index" >&2
    local ours info probe
    ours=$(index_value '2 h' 7) info=$(index_value '2 h' 6) probe=$(index_value '2 h' 5)
    row "index of a 2 h film, to mediainfo" "$(milliseconds "$ours")" "$(milliseconds "$info")" \
        "$(calc "$ours / $info")" 0.20
    row "index of a 2 h film, to ffprobe" "$(milliseconds "$ours")" "$(milliseconds "$probe")" \
        "$(calc "$ours / $probe")" 0.20
    local film memory
    for film in '2 h' '10 h'; do
        memory=$(index_value "$film" 0)
        row "memory for the index of $film, in index boxes" "$memory" 1 "$memory" 4
    done
    local short long
    short=$(index_value '10 min' 1) long=$(index_value '10 h' 1)
    row "processor time a sample, 10 h to 10 min" "$long ms/100k" "$short ms/100k" \
        "$(calc "$long / $short")" 1.25
}
