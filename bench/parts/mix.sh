# shellcheck shell=bash disable=SC2154
# Mixing 7.1 sound down to stereo, on one core.

measure_mix() {
    say "Mixing sound down"
    local goal=1000 speed
    speed=$("$programs/mix_bench")
    row "7.1 to stereo, times real time (goal to ours)" "$speed" "$goal" \
        "$(calc "$goal / $speed")" 1
}
