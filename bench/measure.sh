# shellcheck shell=bash disable=SC2154  # work, programs, turns: run.sh
# Turns, their best, and the rows of the table.

declare -A best  # "label/field": the least of all turns; of peak_kib the most
first_load=$(cut -d' ' -f1 /proc/loadavg)
rows=()          # name, ours, peer, ratio, goal, verdict; separated by tabs

# Starts from a cold cache; FILES are dropped one by one where the whole cache may not be.
cold() {
    sync
    { echo 3 >/proc/sys/vm/drop_caches; } 2>/dev/null || "$programs/file_ops_once" forget "$@"
}

# turn LABEL PROGRAM...: one turn, whose output nobody reads.
turn() {
    local label=$1 field value known
    shift
    if ! "$programs/io_of" "$work/turn" "$@" >"$work/turn.out" 2>&1; then
        say "This failed: $*"
        tail -n 5 "$work/turn.out" >&2
        exit 1
    fi
    while read -r field value; do
        known=${best[$label/$field]:-}
        if [ -z "$known" ] || { [ "$field" = peak_kib ] && less "$known" "$value"; } ||
            { [ "$field" != peak_kib ] && less "$value" "$known"; }; then
            best[$label/$field]=$value
        fi
    done <"$work/turn"
}

less() { awk -v a="$1" -v b="$2" 'BEGIN { exit !(a < b) }'; }
# calc EXPRESSION [FORMAT]
calc() { awk "BEGIN { printf \"${2:-%.6f}\", $1 }"; }

seconds() { calc "$1 / 1000" '%.2f s'; }
milliseconds() { calc "$1" '%.1f ms'; }
mebibytes() { calc "$1 / 1048576" '%.1f MiB'; }

# row NAME OURS PEER RATIO [GOAL]: met when the ratio is at most the goal.
row() {
    local verdict=- goal=-
    if [ -n "${5:-}" ]; then
        goal="at most $5"
        verdict=met
        less "$5" "$4" && verdict=MISSED
    fi
    rows+=("$1"$'\t'"$2"$'\t'"$3"$'\t'"$(calc "$4" '%.2f')"$'\t'"$goal"$'\t'"$verdict")
    say "  $1: $2, $3: ratio $(calc "$4" '%.3f'), goal $goal, $verdict"
}

# row_of_times NAME OURS PEER [GOAL]: of two labels.
row_of_times() {
    local ours=${best[$2/wall_ms]} peer=${best[$3/wall_ms]}
    row "$1" "$(seconds "$ours")" "$(seconds "$peer")" "$(calc "$ours / $peer")" "${4:-}"
}

# row_of_memory NAME LABEL MEBIBYTES
row_of_memory() {
    local kib=${best[$2/peak_kib]}
    row "$1, of $3 MiB" "$(calc "$kib / 1024" '%.1f MiB')" "$3 MiB" "$(calc "$kib / 1024 / $3")" 1
}

# What can't be measured here says so in the table.
row_missing() { rows+=("$1"$'\t'"-"$'\t'"-"$'\t'"-"$'\t'"at most $2"$'\t'"not measured here: $3"); }

print_machine() {
    printf '\n%s, %s cores, %s of memory, %s on %s; Linux %s; load %s at first, %s at last\n' \
        "$(sed -n 's/^model name[^:]*: //p' /proc/cpuinfo | head -n 1)" "$(nproc)" \
        "$(awk '/^MemTotal/ { printf "%.0f GiB", $2 / 1048576 }' /proc/meminfo)" \
        "$(df --output=fstype "$work" | tail -n 1)" "$(df --output=source "$work" | tail -n 1)" \
        "$(uname -r)" "$first_load" "$(cut -d' ' -f1 /proc/loadavg)"
    printf '%s GiB film, %s files; best of %s turns of each side, alternately\n\n' \
        "$gib" "$scanned" "$turns"
}

# In Markdown, and in columns.
print_table() {
    printf '%s\n' $'what\tours\tpeer\tratio\tgoal\tmet' "${rows[@]}" | awk -F '\t' '
        { for (i = 1; i <= 6; i++) { cell[NR, i] = $i; if (length($i) > wide[i]) wide[i] = length($i) } }
        END {
            for (r = 1; r <= NR; r++) {
                line = "|"
                for (i = 1; i <= 6; i++) line = line sprintf(" %-" wide[i] "s |", cell[r, i])
                print line
                if (r > 1) continue
                line = "|"
                for (i = 1; i <= 6; i++) { dashes = sprintf("%" wide[i] "s", ""); gsub(/ /, "-", dashes); line = line " " dashes " |" }
                print line
            }
        }'
    local missed
    missed=$(printf '%s\n' "${rows[@]}" | grep -c 'MISSED$' || true)
    printf '\n%s\n' "$([ "$missed" = 0 ] && echo "Every goal that was measured is met." || echo "$missed of the goals MISSED.")"
}
