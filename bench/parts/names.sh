# shellcheck shell=bash disable=SC2154
# Reading file names by the rules, on one core.

measure_names() {
    say "Reading file names"
    local goal=20000 speed
    speed=$("$programs/filename_rules_bench" --benchmark_filter='^readNames$' \
        --benchmark_repetitions="$turns" --benchmark_format=csv 2>/dev/null |
        awk -F, '$1 ~ /^"?readNames"?$/ && $7 > most { most = $7 } END { print most }')
    row "file names a second (goal to ours)" "$(calc "$speed" '%.0f names/s')" "$goal names/s" \
        "$(calc "$goal / $speed")" 1
}
