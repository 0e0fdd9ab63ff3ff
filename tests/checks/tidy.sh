#!/usr/bin/env bash
# clang-tidy. `tidy.sh`: no function of the product is longer, deeper or more tangled than a reader can hold; `tidy.sh
# full`: all checks of .clang-tidy, over everything. The numbers stand in .clang-tidy.
. "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"

need_file "$build/debug/compile_commands.json"
need_file "$build/windows/compile_commands.json"
work=$(mktemp -d) || exit 1
trap 'rm -rf -- "$work"' EXIT

product=(base config console dialog floppy gpib platform plugin tape volume)
size_checks='-*,readability-function-size,readability-function-cognitive-complexity'
# The macros of tests look tangled to a count, and take the analyzer ten times as long; sanitizers watch tests anyway.
# Their callbacks have the parameters that they must have, and compare whole records on purpose.
not_for_tests='-clang-analyzer-*,-readability-function-cognitive-complexity,-readability-non-const-parameter'
not_for_tests+=',-bugprone-suspicious-memory-comparison,-performance-no-automatic-move'

# clang takes the compile commands of other compilers, but not all of their options; and it must be told where the
# Windows headers are. What another compiler has precompiled is nothing to it.
posix_arguments=(-p "$work/debug")
commands_of() { # BUILD
    mkdir "$work/$1"
    sed -E 's/ -fno-keep-inline-dllexport//; s/ -Winvalid-pch -include [^ ]*cmake_pch\.hxx//' \
        "$build/$1/compile_commands.json" >"$work/$1/compile_commands.json"
}

prepare_windows() {
    local gcc_folder
    gcc_folder=$(dirname -- "$(x86_64-w64-mingw32-g++-posix -print-libgcc-file-name)")/include
    windows_arguments=(-p "$work/windows" --extra-arg=--target=x86_64-w64-mingw32
        "--extra-arg=-isystem$gcc_folder/c++" "--extra-arg=-isystem$gcc_folder/c++/x86_64-w64-mingw32")
}

# Those of the sources on standard input that a build compiles.
compiled_by() { # BUILD
    local source
    while IFS= read -r -d '' source; do
        ! grep -qF "\"file\": \"$source\"" "$build/$1/compile_commands.json" || printf '%s\0' "$source"
    done
}

run_tidy() { # CHECKS ARGUMENT... ; sources on standard input
    local checks=$1
    shift
    xargs -0 -r -n 1 -P "$(nproc)" clang-tidy --quiet '--warnings-as-errors=*' "--checks=$checks" \
        --extra-arg=-Wno-unknown-warning-option --extra-arg=-Wno-ignored-optimization-argument \
        --extra-arg=-Wno-unused-command-line-argument "$@" 2>"$work/errors" && return
    failed=1
    grep -v 'warnings\? generated\.$\|treated as error' "$work/errors"
}

# Each source once, as the Linux build compiles it; the rest as the Windows build does.
tidy() { # CHECKS FOLDER...
    local checks=$1
    shift
    sources_of "$@" >"$work/all"
    compiled_by debug <"$work/all" >"$work/of_posix"
    compiled_by windows <"$work/all" | sort -z | comm -z -23 - "$work/of_posix" >"$work/of_windows"
    run_tidy "$checks" "${posix_arguments[@]}" <"$work/of_posix"
    run_tidy "$checks" "${windows_arguments[@]}" <"$work/of_windows"
}

failed=0
commands_of debug
commands_of windows
prepare_windows
if [ "${1:-}" = full ]; then
    tidy '' "${product[@]}"
    tidy "$not_for_tests" tests
else
    tidy "$size_checks" "${product[@]}"
fi
exit "$failed"
