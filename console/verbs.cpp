// The table of verbs, and how a verb is found in it.
#include "console/verbs.h"

#include <algorithm>

#include "console/catalogue_verbs.h"
#include "console/completion.h"
#include "console/help.h"

namespace
{
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

constexpr ArgumentRow common_rows[] = {
    {
        .names = "--log",
        .help = "log level, to standard error: 0 errors, 1 warnings (as without this option), 2 information, 3 calls, "
                "4 bus bytes, 5 records; from 8 on the same for the system's debugger, where there is one",
        .value = "N",
        .number = &Arguments::log,
        .least = 0,
        .most = 15,
    },
    {.names = "-h,--help", .help = "print this help"},
    {.names = "--version", .help = "print the version"},
};

constexpr ArgumentRow ls_rows[] = {
    medium_argument,
    {
        .names = "PATTERN",
        .help = "list only files that match: NAME, NAME.TYPE, TEXT*, *TEXT or *TEXT*; case counts",
        .list = &Arguments::words,
    },
    {.names = "--purged", .help = "list purged files as well", .flag = &Arguments::purged},
    json_option,
};
constexpr ArgumentRow info_rows[] = {medium_argument, json_option};
constexpr ArgumentRow help_rows[] = {{.names = "VERB", .help = "the verb to explain", .text = &Arguments::word}};
constexpr ArgumentRow completion_rows[] = {
    {.names = "SHELL", .help = "bash", .required = true, .text = &Arguments::word},
};

constexpr const char *ls_aliases[] = {"list", "dir"};

constexpr Verb verb_table[] = {
    {
        .name = "ls",
        .aliases = ls_aliases,
        .summary = "list the files of a medium",
        .text = "Prints the catalogue of a medium: its head, then a line for each file. A pattern that matches no file "
                "is an error. A directory that can't be read whole is listed as far as it can be; the program then "
                "ends with 2.\n",
        .example = "tarvo ls disc.lif 'A*' NOTES.TEXT\n",
        .arguments = ls_rows,
        .run = run_ls,
    },
    {
        .name = "info",
        .aliases = {},
        .summary = "tell about the volume on a medium",
        .text = "Prints what the medium's first records say about its volume: file system, label, geometry, and where "
                "its directory and its files stand.\n",
        .example = "tarvo info disc.lif\n",
        .arguments = info_rows,
        .run = run_info,
    },
    {
        .name = "help",
        .aliases = {},
        .summary = "explain a verb",
        .text = "Prints the help of a verb, or the list of verbs.\n",
        .example = "tarvo help ls\n",
        .arguments = help_rows,
        .run = run_help,
        .takes_medium = false,
    },
    {
        .name = "completion",
        .aliases = {},
        .summary = "print what a shell needs to complete command lines",
        .text = "Prints the completion functions for a shell.\n",
        .example = "source <(tarvo completion bash)\n",
        .arguments = completion_rows,
        .run = run_completion,
        .takes_medium = false,
        .hidden = true,
    },
};
}

std::span<const Verb> all_verbs()
{
    return verb_table;
}

std::span<const ArgumentRow> common_options()
{
    return common_rows;
}

const Verb *find_verb(std::string_view name)
{
    for (const Verb &verb : verb_table) {
        if (name == verb.name) return &verb;
        auto is_name = [name](const char *alias) { return name == alias; };
        if (std::any_of(verb.aliases.begin(), verb.aliases.end(), is_name)) return &verb;
    }
    return nullptr;
}

bool is_option(const ArgumentRow &row)
{
    return row.names[0] == '-';
}
