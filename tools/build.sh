# shellcheck shell=bash
# How ./run and ./test build a preset. Sourced by both.

# A build folder that came here with a copied tree knows its sources by their old place and is of no use.
drop_strange_build() { # ROOT PRESET
    local cache=$1/build/$2/CMakeCache.txt
    [ ! -f "$cache" ] || grep -qxF "CMAKE_HOME_DIRECTORY:INTERNAL=$1" "$cache" || rm -rf -- "$1/build/$2"
}

# Configures a preset unless that has been done, and builds it. Says nothing on success but what the tools say.
build_preset() { # ROOT PRESET
    local root=$1 preset=$2
    (
        cd -- "$root" || exit 1
        mkdir -p build
        exec 9>"build/$preset.lock"
        ! command -v flock >/dev/null 2>&1 || flock 9
        drop_strange_build "$root" "$preset"
        [ -f "build/$preset/build.ninja" ] || cmake --preset "$preset" || exit 1
        cmake --build --preset "$preset" --parallel "$(nproc)"
    ) </dev/null
}
