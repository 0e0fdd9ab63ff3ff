// The rows of the verbs for tape images.
#pragma once

#include "console/shared_rows.h"
#include "console/tape_convert.h"
#include "console/tape_verbs.h"

constexpr int32_t largest_block = 0xFFFFFF; // bytes of a record
constexpr const char *tape_layouts[] = {"simh", "fixed", "hpi"};

constexpr ArgumentRow tape_test_rows[] = {
    {.names = "FILE", .help = "a file of the host", .required = true, .text = &Arguments::medium},
    {.names = "--xml", .help = "print all that stands on the tape as a report", .flag = &Arguments::xml},
    {
        .names = "--block",
        .help = "bytes of data in a slot of the fixed layout; without this option the first record tells, which one "
                "that doesn't fill its slot may do wrongly",
        .value = "N",
        .number = &Arguments::block,
        .least = 1,
        .most = largest_block,
    },
};
constexpr ArgumentRow tape_ls_rows[] = {
    {.names = "FILE", .help = "a file of the host", .required = true, .text = &Arguments::medium},
    json_option,
};
constexpr ArgumentRow tape_convert_rows[] = {
    {.names = "FROM", .help = "a tape image, or a plain one", .required = true, .text = &Arguments::medium},
    {.names = "TO", .help = "the file to make", .required = true, .text = &Arguments::word},
    {
        .names = "--to",
        .help = "what it becomes: simh (a tape image of the variable layout), fixed (one of the fixed layout) or hpi "
                "(a plain image)",
        .value = "LAYOUT",
        .required = true,
        .text = &Arguments::layout,
        .choices = tape_layouts,
    },
    {
        .names = "--block",
        .help = "bytes of a record, slot or block that is made; without this option 1024 for fixed and 256 otherwise. "
                "From the fixed layout to hpi the size of its slots",
        .value = "N",
        .number = &Arguments::block,
        .least = 1,
        .most = largest_block,
    },
    {
        .names = "--pack",
        .help = "with --to fixed: join the records between two tape marks, so that only the last slot isn't full",
        .flag = &Arguments::pack,
    },
    {.names = "--force", .help = "replace TO when it is there already", .flag = &Arguments::force},
};

constexpr Verb tape_test_verb = {
    .name = "tape test",
    .aliases = {},
    .summary = "test a tape image",
    .text = "Reads a SIMH magtape image forward and backward, says of which layout it is and what it holds, or where "
            "it stops being one; the program then ends with 3.\n",
    .example = "tarvo tape test tape.tap\ntarvo tape test tape.tap --xml >report\n",
    .arguments = tape_test_rows,
    .run = run_tape_test,
};

constexpr Verb tape_ls_verb = {
    .name = "tape ls",
    .aliases = {},
    .summary = "list the records and marks of a tape image",
    .text = "Prints a line for each record and each tape mark of a SIMH magtape image, with its position in the file. "
            "Behind a fault nothing is listed; the program then ends with 2.\n",
    .example = "tarvo tape ls tape.tap\n",
    .arguments = tape_ls_rows,
    .run = run_tape_ls,
};

constexpr Verb tape_convert_verb = {
    .name = "tape convert",
    .aliases = {},
    .summary = "turn tape images and plain ones into each other",
    .text = "Makes a tape image of a plain one, or the other way round, or changes the layout of a tape image from "
            "variable to fixed. What FROM is, is found by the test of tape images; a file called .tap, .tape or "
            ".simh that doesn't pass it isn't converted, and the program ends with 3.\n"
            "TO isn't replaced without --force. When a conversion fails, TO is removed.\n",
    .example = "tarvo tape convert disc.hpi tape.tap --to simh\n"
               "tarvo tape convert tape.tap disc.hpi --to hpi --block 256\n",
    .arguments = tape_convert_rows,
    .run = run_tape_convert,
};
