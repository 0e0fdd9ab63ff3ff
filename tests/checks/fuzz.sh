#!/usr/bin/env bash
# Runs the fuzz targets side by side. `fuzz.sh [SECONDS]`: so long for each, 30 where nothing is said. What they find
# stays in build/fuzz-found/, what they learn in build/fuzz-corpus/.
. "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"

seconds=${1:-30}
maker=$build/debug/tests/make_volume
need_file "$maker"
work=$(mktemp -d) || exit 1
trap 'rm -rf -- "$work"' EXIT

# The flags ahead of an image, low byte first: see fuzz/open_fuzz.cpp.
add_seed() { # FLAGS IMAGE
    { printf '%b' "$1"; cat "$2"; } >"$work/open/$(basename "$2")-${1//\\x/}"
}

make_seeds() {
    mkdir "$work/open" "$work/names"
    "$maker" demo "$work/demo" && "$maker" files 3 "$work/few" && "$maker" files 100 "$work/many" || return 1
    head -c 1024 "$work/demo" >"$work/short"
    local image flags
    for image in demo few many short; do
        for flags in '\x04\x04' '\x5e\x14' '\xe4\x4a' '\x2c\x80'; do
            add_seed "$flags" "$work/$image"
        done
    done
    printf 'NAME.BDAT.&256\nASCII\nNAME' >"$work/names/typed"
    printf 'C:/folder/LONGNAME_.TEXT\n' >"$work/names/path"
    printf '*A?C*\nABC\nTEXT' >"$work/names/pattern"
    printf '70012:FILE/NAME' >"$work/names/target"
    printf '#E0D0\n9845' >"$work/names/hexadecimal"
}

start_target() { # NAME SEEDS LARGEST-INPUT
    local name=$1
    need_file "$build/fuzz/fuzz/${name}_fuzz"
    mkdir -p "$build/fuzz-corpus/$name" "$build/fuzz-found" || exit 1
    "$build/fuzz/fuzz/${name}_fuzz" -max_total_time="$seconds" -max_len="$3" -timeout=20 -rss_limit_mb=2048 \
        -print_final_stats=1 -dict="$root/fuzz/tarvo.dict" -artifact_prefix="$build/fuzz-found/$name-" \
        "$build/fuzz-corpus/$name" "$2" >"$work/$name.log" 2>&1 &
}

make_seeds || exit 1
failed=0
start_target open "$work/open" 65536
open=$!
start_target names "$work/names" 600
names=$!
wait "$open" || failed=1
wait "$names" || failed=1
for name in open names; do
    echo "== ${name}_fuzz"
    tail -n 60 "$work/$name.log"
done
exit "$failed"
