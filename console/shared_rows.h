// Rows that several verbs have.
#pragma once

#include "console/verbs.h"

constexpr ArgumentRow medium_argument = {
    .names = "MEDIUM",
    .help = "image file, floppy drive (0: to 3:) or GPIB drive (7AAUV:)",
    .required = true,
    .text = &Arguments::medium,
};
constexpr ArgumentRow json_option = {
    .names = "--json",
    .help = "print one JSON object instead of text",
    .flag = &Arguments::json,
};
constexpr ArgumentRow verbose_option = {
    .names = "-v,--verbose",
    .help = "name each file on standard error",
    .flag = &Arguments::verbose,
};

constexpr ArgumentRow backup_option = {
    .names = "--backup",
    .help = "copy the image file first, to MEDIUM.bak, or to MEDIUM.bak2, MEDIUM.bak3 ... when that is there",
    .flag = &Arguments::backup,
};
constexpr ArgumentRow damaged_option = {
    .names = "--damaged",
    .help = "change a volume although entries of its directory can't be read; they are then lost",
    .flag = &Arguments::damaged,
};
constexpr ArgumentRow dry_run_option = {
    .names = "--dry-run",
    .help = "only say for each file what would become of it",
    .flag = &Arguments::dry_run,
};
