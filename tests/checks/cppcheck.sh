#!/usr/bin/env bash
# cppcheck over the product's sources. Left out are two messages that misjudge: on elements of an array of deduced type,
# which it takes for numbers, and on buffers that a constructor has a function fill.
. "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"

cd "$root" || exit 1
folders=()
for folder in base config console dialog floppy gpib platform plugin tape volume; do
    [ ! -d "$folder" ] || folders+=("$folder")
done
cppcheck --quiet --error-exitcode=1 --enable=warning,performance,portability --inline-suppr --std=c++20 \
    --language=c++ --suppress=missingIncludeSystem --suppress=CastIntegerToAddressAtReturn \
    --suppress=uninitMemberVar -DTARVO_BUILD \
    "-DTARVO_VERSION=\"0\"" -j "$(nproc)" -I . "${folders[@]}"
