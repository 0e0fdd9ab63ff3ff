#!/usr/bin/env bash
# cppcheck over the product's sources. It takes the elements of an array of deduced type for numbers; a number that becomes
# a pointer is for the compilers to find.
. "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"

cd "$root" || exit 1
folders=()
for folder in base config console dialog floppy gpib platform plugin tape volume; do
    [ ! -d "$folder" ] || folders+=("$folder")
done
cppcheck --quiet --error-exitcode=1 --enable=warning,performance,portability --inline-suppr --std=c++20 \
    --language=c++ --suppress=missingIncludeSystem --suppress=CastIntegerToAddressAtReturn -DTARVO_BUILD \
    "-DTARVO_VERSION=\"0\"" -j "$(nproc)" -I . "${folders[@]}"
