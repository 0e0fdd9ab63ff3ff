#!/usr/bin/env bash
# Runs the fuzz targets, as many at a time as the machine has processors. `fuzz.sh [SECONDS]`: so long for all of them
# together, 60 where nothing is said. What they find stays in build/fuzz-found/, what they learn in build/fuzz-corpus/.
. "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"

seconds=${1:-60}
need_file "$build/debug/tests/make_volume"
work=$(mktemp -d) || exit 1
trap 'rm -rf -- "$work"' EXIT

# Each target, and the largest input that it is given.
targets=(
    open:65536
    names:600
    get:65536
    put:65536
    operations:32768
    content:8192
    lines:8192
    sdf:32768
    config:16384
    tape:8192
)

run_target() { # NAME LARGEST-INPUT SECONDS
    local name=$1
    mkdir -p "$build/fuzz-corpus/$name" "$build/fuzz-found" "$work/$name-files" || return 1
    TMPDIR=$work/$name-files "$build/fuzz/fuzz/${name}_fuzz" -max_total_time="$3" -max_len="$2" -timeout=20 \
        -rss_limit_mb=2048 -print_final_stats=1 -dict="$root/fuzz/tarvo.dict" \
        -artifact_prefix="$build/fuzz-found/$name-" "$build/fuzz-corpus/$name" "$work/$name" >"$work/$name.log" 2>&1
}

for target in "${targets[@]}"; do
    need_file "$build/fuzz/fuzz/${target%:*}_fuzz"
done
"$root/tests/checks/fuzz_seeds.py" "$work" || exit 1

at_once=$(nproc)
[ "$at_once" -le "${#targets[@]}" ] || at_once=${#targets[@]}
rounds=$(((${#targets[@]} + at_once - 1) / at_once))
failed=0
for ((first = 0; first < ${#targets[@]}; first += at_once)); do
    running=()
    for target in "${targets[@]:first:at_once}"; do
        run_target "${target%:*}" "${target#*:}" $((seconds / rounds)) &
        running+=($!)
    done
    for process in "${running[@]}"; do
        wait "$process" || failed=1
    done
done
for target in "${targets[@]}"; do
    echo "== ${target%:*}_fuzz"
    tail -n 60 "$work/${target%:*}.log"
done
exit "$failed"
