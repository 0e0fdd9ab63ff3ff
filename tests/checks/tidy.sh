#!/usr/bin/env bash
# clang-tidy. `tidy.sh`: no function of the product is longer, deeper or more tangled than a reader can hold; `tidy.sh
# full`: all checks of .clang-tidy, over everything. The numbers stand in .clang-tidy.
. "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"

need_file "$build/debug/compile_commands.json"
need_file "$build/windows/compile_commands.json"
work=$(mktemp -d) || exit 1
trap 'rm -rf -- "$work"' EXIT

product=(base config console floppy gpib plugin tape volume)
size_checks='-*,readability-function-size,readability-function-cognitive-complexity'
# The macros of tests look tangled to a count, and take the analyzer ten times as long; sanitizers watch tests anyway.
not_for_tests='-clang-analyzer-*,-readability-function-cognitive-complexity'

# clang takes the compile commands of other compilers, but not all of their options; and it must be told where the
# Windows headers are.
posix_arguments=(-p "$build/debug")
prepare_windows() {
    local gcc_folder
    gcc_folder=$(dirname -- "$(x86_64-w64-mingw32-g++-posix -print-libgcc-file-name)")/include
    mkdir "$work/windows"
    sed 's/ -fno-keep-inline-dllexport//' "$build/windows/compile_commands.json" >"$work/windows/compile_commands.json"
    windows_arguments=(-p "$work/windows" --extra-arg=--target=x86_64-w64-mingw32
        "--extra-arg=-isystem$gcc_folder/c++" "--extra-arg=-isystem$gcc_folder/c++/x86_64-w64-mingw32")
}

tidy() { # CHECKS ARGUMENT... ; sources on standard input
    local checks=$1
    shift
    grep -z '\.cpp$' | xargs -0 -r -n 1 -P "$(nproc)" clang-tidy --quiet '--warnings-as-errors=*' "--checks=$checks" \
        --extra-arg=-Wno-unknown-warning-option --extra-arg=-Wno-ignored-optimization-argument \
        --extra-arg=-Wno-unused-command-line-argument "$@" 2>"$work/errors" && return
    failed=1
    grep -v 'warnings\? generated\.$\|treated as error' "$work/errors"
}

failed=0
checks=$size_checks
[ "${1:-}" != full ] || checks=
prepare_windows
tidy "$checks" "${posix_arguments[@]}" < <(sources_of "${product[@]}" platform/posix)
tidy "$checks" "${windows_arguments[@]}" < <(sources_of platform/win32 dialog)
[ "${1:-}" != full ] || tidy "$not_for_tests" "${posix_arguments[@]}" < <(sources_of tests)
exit "$failed"
