# shellcheck shell=bash disable=SC2154
# A scan of a big library against the sample catalogue on loopback, beside the best that probing
# alone could take: the time of one probe after the other, shared by six or by all cores.

start_catalogue() {
    local port_file=$work/port i
    "$programs/marlet-catalogue" --port-file "$port_file" >"$work/catalogue.log" 2>&1 &
    cleanups+=("kill $!")
    for ((i = 0; i < 200; i++)); do
        [ -s "$port_file" ] && break
        sleep 0.05
    done
    catalogue=http://127.0.0.1:$(cat "$port_file")
}

# Half of the files have names that the catalogue knows; each other one is a film of its own, of
# which it knows nothing.
make_library() {
    local library=$1 made=0 round=0 file target
    "$programs/make_demo_library" "$work/demo" >/dev/null
    local films=()
    mapfile -d '' films < <(find "$work/demo" -name '.*' -prune -o -type f -print0 | sort -z)
    while ((made < scanned)); do
        round=$((round + 1))
        for file in "${films[@]}"; do
            ((made < scanned)) || break
            if ((round % 2)); then
                target="$library/Shelf $round/${file#"$work/demo/"}"
            else
                target="$library/Unknown $round/Reel $((made + 1000)) of Nowhere (19$((10 + made % 90))).${file##*.}"
            fi
            [ -d "${target%/*}" ] || mkdir -p "${target%/*}"
            ln "$file" "$target"
            made=$((made + 1))
        done
    done
}

# probe_turn LIBRARY: keeps the best time of all probes, one after the other.
probe_turn() {
    local files took
    read -r files took < <("$programs/probe_all" "$1")
    if [ "$files" != "$scanned" ]; then
        say "$files of $scanned files were found."
        exit 1
    fi
    if [ -z "${probing:-}" ] || less "$took" "$probing"; then probing=$took; fi
}

requests_so_far() { curl -fsS --noproxy "*" "$catalogue/_stats" | sed -n 's/.*"total": \([0-9]*\).*/\1/p'; }

# What a scan of the same library asks when the answers of the first are still there.
count_second_scan() {
    local before
    rm -rf "$HOME"
    mkdir -p "$HOME"
    for _ in 1 2; do
        before=$(requests_so_far)
        env MARLET_TMDB_API="$catalogue/3" MARLET_TMDB_IMAGES="$catalogue" MARLET_TMDB_TOKEN=sample \
            "$programs/marlet" --sources=tmdb --scan "$work/library" --report "$work/report.tsv" --quit
        asked_again=$(($(requests_so_far) - before))
    done
}

scan_turn() {
    rm -rf "$HOME"
    mkdir -p "$HOME"
    turn "$@" --scan "$work/library" --report "$work/report.tsv" --quit
    local lines
    lines=$(grep -c "" "$work/report.tsv")
    if ((lines != scanned + 1)); then
        say "The report has $((lines - 1)) files of $scanned."
        exit 1
    fi
}

measure_scan() {
    say "Scanning $scanned files"
    make_library "$work/library"
    start_catalogue
    local i probing='' cores ideal asked_again
    cores=$(nproc)
    ((cores < 6)) || cores=6
    for ((i = 0; i < turns; i++)); do
        probe_turn "$work/library"
        scan_turn "scan" env MARLET_TMDB_API="$catalogue/3" MARLET_TMDB_IMAGES="$catalogue" \
            MARLET_TMDB_TOKEN=sample "$programs/marlet" --sources=tmdb
        scan_turn "scan alone" "$programs/marlet" --sources=
    done
    count_second_scan
    row "second scan, requests" "$asked_again" "0" "$asked_again" 0
    ideal=$(calc "$probing / $cores")
    row "scan, memory, of 300 MiB" "$(calc "${best[scan/peak_kib]} / 1024" '%.1f MiB')" "300 MiB" \
        "$(calc "${best[scan/peak_kib]} / 1024 / 300")" 1
    row "scan without a source, to ideal probing" "$(seconds "${best["scan alone/wall_ms"]}")" \
        "$(seconds "$ideal")" "$(calc "${best["scan alone/wall_ms"]} / $ideal")"
    row "scan with the catalogue, to ideal probing" "$(seconds "${best[scan/wall_ms]}")" \
        "$(seconds "$ideal")" "$(calc "${best[scan/wall_ms]} / $ideal")"
}
