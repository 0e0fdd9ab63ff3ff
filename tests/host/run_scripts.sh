#!/usr/bin/env bash
# run_scripts.sh HOST PLUGIN [WINE...]
# Plays all scripts with the host program against the plug-in and compares what it prints with what is expected; on
# Windows programs through WINE. The last line is "N passed, N failed"; the exit code is 1 when something failed.
set -u
export LC_ALL=C.UTF-8 TZ=UTC

if [ $# -lt 2 ]; then
    echo "usage: run_scripts.sh HOST PLUGIN [WINE...]" >&2
    exit 2
fi
host=$(readlink -f -- "$1")
plugin=$(readlink -f -- "$2")
shift 2
wine=("$@")
scripts=$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/scripts
for file in "$host" "$plugin"; do
    [ -f "$file" ] || {
        echo "$file is missing: build it first"
        exit 1
    }
done

work=$(mktemp -d) || exit 1
trap 'rm -rf -- "$work"' EXIT
passed=0
failed=0

# The host makes its own folder in the present one.
play() { # SCRIPT
    cd -- "$work" || return 2
    timeout -k 10 300 ${wine[@]+"${wine[@]}"} "$host" "$plugin" "$1" </dev/null
}

for script in "$scripts"/*.script; do
    name=$(basename -- "$script" .script)
    (play "$script") >"$work/$name.printed" 2>"$work/$name.errors"
    code=$?
    # Wine's programs may end their lines with a carriage return.
    sed -i 's/\r$//' "$work/$name.printed"
    if [ $code -eq 0 ] && diff -a -u "$scripts/$name.expected" "$work/$name.printed" >"$work/difference"; then
        passed=$((passed + 1))
        continue
    fi
    failed=$((failed + 1))
    echo "$name: failed, exit code $code"
    head -n 60 "$work/difference"
    tail -n 40 "$work/$name.errors"
done
if [ $((passed + failed)) -eq 0 ]; then failed=1; fi
echo "$passed passed, $failed failed"
[ "$failed" -eq 0 ]
