#!/usr/bin/env bash
# The public headers are C11 and C++20, each alone and all together, with both compilers and for both systems; and a C
# program that knows nothing else works with the finished library.
. "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"

failed=0
work=$(mktemp -d) || exit 1
trap 'rm -rf -- "$work"' EXIT
mapfile -t headers < <(sed -n 's/^#include "\(.*\)"$/\1/p' "$root/tarvo.h")
for header in "${headers[@]}" tarvo.h; do
    echo "#include \"$header\""
    echo "typedef int one_${header//[!a-z0-9]/_};" # C knows no empty translation unit
done >"$work/all.h"
c_flags=(-std=c11 -pedantic -Wall -Wextra -Werror -fsyntax-only -x c -I "$root")
cpp_flags=(-std=c++20 -pedantic -Wall -Wextra -Werror -fsyntax-only -x c++ -I "$root")

try() { # WHAT COMMAND...
    local what=$1
    shift
    "$@" || {
        echo "$what: refused by $1"
        failed=1
    }
}

for header in "${headers[@]}" tarvo.h; do
    printf '#include "%s"\ntypedef int anything;\n' "$header" >"$work/one"
    try "$header as C11" gcc "${c_flags[@]}" "$work/one"
    try "$header as C++20" g++ "${cpp_flags[@]}" "$work/one"
done
program=$root/tests/checks/c11_program.c
for file in "$root/tests/checks/c11_headers.c" "$program"; do
    try "${file##*/}" clang "${c_flags[@]}" "$file"
    try "${file##*/}" x86_64-w64-mingw32-gcc-posix "${c_flags[@]}" "$file"
    try "${file##*/} for Windows" clang --target=x86_64-w64-mingw32 "${c_flags[@]}" "$file"
done

need_file "$build/release/libtarvo.so"
try 'linking with libtarvo.so' gcc -std=c11 -pedantic -Wall -Wextra -Werror -I "$root" "$program" -o "$work/program" \
    -L "$build/release" -ltarvo "-Wl,-rpath,$build/release"
try 'the program with libtarvo.so' "$work/program"

need_file "$build/windows/tarvo.wfx64"
try 'linking with tarvo.wfx64' x86_64-w64-mingw32-gcc-posix -std=c11 -pedantic -Wall -Wextra -Werror -I "$root" \
    "$program" -o "$work/program.exe" "$build/windows/tarvo.wfx64"
if [ -n "${TARVO_WINE:-}" ]; then # the program looks for the library beside itself
    cp "$build/windows/tarvo.wfx64" "$work/"
    try 'the program with tarvo.wfx64' timeout 60 "$TARVO_WINE" "$work/program.exe"
fi
exit "$failed"
