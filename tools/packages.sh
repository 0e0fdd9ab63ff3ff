# shellcheck shell=bash disable=SC2034
# What ./run and ./test need from the system, and how it gets there. Sourced by both.

# Each row: a word for what is needed, the package that brings it. A need is a command, or a file when it has a slash;
# a pattern stands for any file that it matches.
run_needs='
g++                                     g++
cmake                                   cmake
ninja                                   ninja-build
/usr/include/CLI/CLI.hpp                libcli11-dev
/usr/include/rapidjson/document.h       rapidjson-dev
'
test_needs="$run_needs"'
gcc                                     gcc
/usr/src/googletest/CMakeLists.txt      googletest
x86_64-w64-mingw32-g++-posix            g++-mingw-w64-x86-64-posix
/usr/bin/wine                           wine
/usr/lib/wine/wine64                    wine64
clang++                                 clang
/usr/lib/llvm-*/lib/clang/*/lib/linux/libclang_rt.fuzzer-x86_64.a  libclang-rt-14-dev
clang-tidy                              clang-tidy
clang-format                            clang-format
cppcheck                                cppcheck
valgrind                                valgrind
strace                                  strace
python3                                 python3
nm                                      binutils
'
host_needs="$run_needs"'
doublecmd                               doublecmd-gtk
Xvfb                                    xvfb
openbox                                 openbox
xdotool                                 xdotool
xclip                                   xclip
import                                  imagemagick
'
bench_needs="$run_needs"'
gcc                                     gcc
python3                                 python3
hyperfine                               hyperfine
/usr/include/benchmark/benchmark.h      libbenchmark-dev
'

has_need() {
    case $1 in
    */*) compgen -G "$1" >/dev/null ;;
    *) command -v -- "$1" >/dev/null 2>&1 ;;
    esac
}

# Prints the packages of a list of needs that the machine lacks, each once.
missing_packages() {
    local need package
    while read -r need package; do
        [ -z "$need" ] || has_need "$need" || printf '%s\n' "$package"
    done <<<"$1" | sort -u
}

# Runs a command as root, without ever asking for a password.
as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        env DEBIAN_FRONTEND=noninteractive "$@"
    else
        sudo -n env DEBIAN_FRONTEND=noninteractive "$@"
    fi
}

can_install() {
    command -v apt-get >/dev/null 2>&1 || return 1
    [ "$(id -u)" -eq 0 ] || { command -v sudo >/dev/null 2>&1 && sudo -n true 2>/dev/null; }
}

# Installs packages from the lists as they are or, with "renewed", from the present ones.
install_packages() { # known|renewed PACKAGE...
    local lists=$1
    shift
    if [ "$lists" = renewed ]; then as_root apt-get update -q || return 1; fi
    as_root apt-get install -y -q --no-install-recommends -- "$@"
} </dev/null

# Makes sure that a list of needs is met; says on standard error what it installs, or what is missing when it can't.
# Returns 1 in that case.
provide_packages() {
    local missing output lists
    mapfile -t missing < <(missing_packages "$1")
    [ "${#missing[@]}" -gt 0 ] || return 0
    if ! can_install; then
        echo "tarvo: these packages are missing and can't be installed from here: ${missing[*]}" >&2
        return 1
    fi
    echo "tarvo: installing ${missing[*]}" >&2
    # Where the package lists are empty or old they must be had anew; others are spared the wait. With empty lists an
    # installation may also succeed and bring nothing, since "g++" is a pattern then.
    for lists in known renewed; do
        compgen -G '/var/lib/apt/lists/*_Packages*' >/dev/null || lists=renewed
        output=$(install_packages "$lists" "${missing[@]}" 2>&1)
        hash -r
        mapfile -t missing < <(missing_packages "$1")
        [ "${#missing[@]}" -gt 0 ] || return 0
    done
    printf '%s\n' "$output" >&2
    echo "tarvo: these packages could not be installed: ${missing[*]}" >&2
    return 1
}
