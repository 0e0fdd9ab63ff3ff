# shellcheck shell=bash disable=SC2034
# What the shell checks share. A check prints what is wrong and ends with 0 for passed, 1 for failed, 77 for skipped.
set -u
root=$(cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/../.." && pwd -P)
build=$root/build
source_folders=(base bench config console dialog floppy fuzz gpib platform plugin tape tests volume)

skip() {
    echo "skipped: $*"
    exit 77
}

need_file() {
    [ -e "$1" ] || {
        echo "$1 is missing: build it first"
        exit 1
    }
}

# Prints the sources and headers of the given folders, each ended by a NUL; folders that don't exist yet are left out.
sources_of() {
    local folder
    for folder in "$@"; do
        [ ! -d "$root/$folder" ] || find "$root/$folder" -name '*.cpp' -print0 -o -name '*.h' -print0 -o -name '*.c' -print0
    done | sort -z
}
