#!/usr/bin/env bash
# All sources are written as .clang-format says.
. "$(dirname -- "${BASH_SOURCE[0]}")/common.sh"
sources_of "${source_folders[@]}" | (cd "$root" && xargs -0 clang-format --dry-run -Werror tarvo.h) || exit 1
