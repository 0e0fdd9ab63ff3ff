#!/usr/bin/env bash
# clang-tidy. `tidy.sh`: no function of the product is longer, deeper or more tangled than a reader can hold; `tidy.sh
# full`: all checks of .clang-tidy, over everything. The numbers stand in .clang-tidy.
. "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"

need_file "$build/debug/compile_commands.json"
need_file "$build/windows/compile_commands.json"
arguments=(--quiet '--warnings-as-errors=*' --extra-arg=-Wno-unknown-warning-option
    --extra-arg=-Wno-ignored-optimization-argument --extra-arg=-Wno-unused-command-line-argument)
folders=(base config console dialog floppy gpib plugin tape volume)
if [ "${1:-}" = full ]; then
    folders+=(tests)
else
    arguments+=('--checks=-*,readability-function-size,readability-function-cognitive-complexity')
fi

tidy() { # BUILD-FOLDER ARGUMENT... ; sources on standard input
    local database=$build/$1
    shift
    grep -z '\.cpp$' | xargs -0 -r -n 2 -P "$(nproc)" clang-tidy -p "$database" "${arguments[@]}" "$@" 2>"$errors"
}

errors=$(mktemp) || exit 1
trap 'rm -f -- "$errors"' EXIT
failed=0
sources_of "${folders[@]}" platform/posix | tidy debug || failed=1
grep -v 'warnings\? generated\.$\|treated as error' "$errors"
sources_of platform/win32 dialog | tidy windows --extra-arg=--target=x86_64-w64-mingw32 || failed=1
grep -v 'warnings\? generated\.$\|treated as error' "$errors"
exit "$failed"
