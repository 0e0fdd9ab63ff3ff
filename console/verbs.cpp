// The table of verbs, and how a verb is found in it.
#include "console/verbs.h"

#include <algorithm>

#include "console/catalogue_verbs.h"
#include "console/change_rows.h"
#include "console/completion.h"
#include "console/configuration.h"
#include "console/get.h"
#include "console/help.h"
#include "console/put.h"
#include "console/tape_rows.h"
#include "console/volume_rows.h"

namespace
{
constexpr const char *header_forms[] = {"none", "hpbasic", "hpcalc"};

constexpr ArgumentRow recursive_option = {
    .names = "-R,--recursive",
    .help = "go into the directories of a volume that has some, and into those in them",
    .flag = &Arguments::recursive,
};

constexpr ArgumentRow common_rows[] = {
    {
        .names = "--config",
        .help = "read this configuration file; without this option tarvo.ini in the present directory, or else beside "
                "the program, if there is one",
        .value = "FILE",
        .text = &Arguments::config,
    },
    {.names = "--no-config", .help = "read no configuration file", .flag = &Arguments::no_config},
    {
        .names = "--log",
        .help =
            "log level, to standard error: 0 errors, 1 warnings (as without this option), 2 information, 3 calls, "
            "4 bus bytes, 5 records; from 8 on the same for the system's debugger, where there is one. It goes before "
            "that of a configuration file",
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
        .help = "list only files that match: NAME, NAME.TYPE, TEXT*, *TEXT or *TEXT*; case counts. On a volume with "
                "directories also DIRECTORY, for all that is in it, and DIRECTORY/PATTERN",
        .list = &Arguments::words,
    },
    recursive_option,
    {.names = "--purged", .help = "list purged files as well", .flag = &Arguments::purged},
    json_option,
};
constexpr ArgumentRow info_rows[] = {medium_argument, json_option};

constexpr ArgumentRow get_rows[] = {
    medium_argument,
    {
        .names = "PATTERN",
        .help = "copy only files that match, see \"tarvo help ls\"; without a pattern all are copied",
        .list = &Arguments::words,
    },
    recursive_option,
    {
        .names = "-d,--directory",
        .help = "put the files into this directory, which is made where it is missing; without this option the present "
                "one",
        .value = "DIR",
        .text = &Arguments::folder,
    },
    {
        .names = "-o,--output",
        .help = "the name of the copy of one file; - is standard output",
        .value = "FILE",
        .text = &Arguments::output,
    },
    {.names = "--text", .help = "turn files of known content into text", .flag = &Arguments::text},
    {
        .names = "--force-text",
        .help = "turn files into text whatever they hold: one of unknown content becomes an empty file",
        .flag = &Arguments::force_text,
    },
    {
        .names = "--txt",
        .help = "as --text, and the names of the copies that are text end in .txt, but not with -o",
        .flag = &Arguments::txt,
    },
    {
        .names = "--header",
        .help = "ahead of each copy that isn't turned into text, a header that keeps what the directory says of the "
                "file: none (as without this option), hpbasic or hpcalc",
        .value = "FORM",
        .text = &Arguments::header,
        .choices = header_forms,
    },
    {
        .names = "--overwrite",
        .help = "replace files that are there already; of two files with the same name the later one stays",
        .flag = &Arguments::overwrite,
    },
    verbose_option,
};
constexpr ArgumentRow put_rows[] = {
    medium_argument,
    {.names = "FILE", .help = "a file of the host; - is standard input", .required = true, .list = &Arguments::words},
    {
        .names = "--as",
        .help = "the name on the volume of one file: NAME, NAME.TYPE or NAME.&BYTES.TYPE; standard input needs it",
        .value = "NAME",
        .text = &Arguments::name,
    },
    {
        .names = "--text",
        .help = "turn text into what the file's type holds; types whose content isn't text stay as they are",
        .flag = &Arguments::text,
    },
    {
        .names = "--txt",
        .help = "the same for files whose names end in .txt or .TXT, an ending that the volume doesn't see",
        .flag = &Arguments::txt,
    },
    {
        .names = "--header",
        .help = "take off the header ahead of a file that isn't text: none (as without this option), hpbasic or "
                "hpcalc; hpbasic is looked at, hpcalc is believed whatever the file holds",
        .value = "FORM",
        .text = &Arguments::header,
        .choices = header_forms,
    },
    {
        .names = "--type",
        .help = "the type of the files, as ls shows it, or # and up to four hexadecimal digits; without this option "
                "the ending of their names",
        .value = "TYPE",
        .text = &Arguments::type,
    },
    {
        .names = "--record",
        .help = "the length of their records, an even number of 2 to 65534, for types that have one",
        .value = "BYTES",
        .number = &Arguments::record,
        .least = 2,
        .most = 65534,
    },
    {
        .names = "--system",
        .help = "the computer that the type belongs to, where several have one of that name: 9845, 98X6, SE80 ...",
        .value = "NAME",
        .text = &Arguments::system,
    },
    {
        .names = "--overwrite",
        .help = "replace files that are there already. This isn't atomic: when it breaks off, old and new file may "
                "both be lost",
        .flag = &Arguments::overwrite,
    },
    backup_option,
    damaged_option,
    dry_run_option,
    verbose_option,
};
constexpr ArgumentRow cat_rows[] = {
    medium_argument,
    {.names = "NAME",
     .help = "the file, or a pattern that one file matches; on a volume with directories DIRECTORY/NAME",
     .required = true,
     .text = &Arguments::word},
    {.names = "--raw", .help = "print its bytes as they are", .flag = &Arguments::raw},
};

constexpr const char *config_actions[] = {"check"};
constexpr ArgumentRow config_rows[] = {
    {.names = "ACTION",
     .help = "check: whether the file can be understood",
     .required = true,
     .text = &Arguments::word,
     .choices = config_actions},
    {.names = "FILE",
     .help = "the configuration file; without this argument that of --config, or the one that is read anyway",
     .text = &Arguments::file},
};

constexpr ArgumentRow help_rows[] = {
    {.names = "VERB", .help = "the verb to explain, of one word or two", .list = &Arguments::words},
};
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
        .example = "tarvo ls disc.lif 'A*' NOTES.TEXT\ntarvo ls -R disc.sdf\ntarvo ls disc.sdf 'PROJECTS/OLD/A*'\n",
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
        .name = "get",
        .aliases = {},
        .summary = "copy files from a medium",
        .text = "Copies files from a medium to the host, by the names that they have there with their types, and with "
                "their dates. Text that is made of a file has lines ended by carriage return and line feed.\n"
                "When a name is there already, or two of the files would get the same one, nothing is copied without "
                "--overwrite. A pattern that matches no file is an error; the other files are copied, and the program "
                "ends with 2.\n"
                "A directory of a volume is copied with -R only, as a directory of the host with all that is in it.\n",
        .example = "tarvo get disc.lif -d files\ntarvo get disc.lif NOTES --text -o notes.txt\n"
                   "tarvo get -R disc.sdf PROJECTS -d files\n",
        .arguments = get_rows,
        .run = run_get,
    },
    {
        .name = "put",
        .aliases = {},
        .summary = "copy files to a medium",
        .text = "Copies files of the host to a medium. NAME.TYPE and NAME.&BYTES.TYPE give name, length of records and "
                "type; what else a name ends in counts as a type that isn't known, and the type is then ASCII on LIF "
                "volumes and DATA on others.\n"
                "When a name is there already, nothing is copied without --overwrite; likewise when two files would "
                "get the same name. A file that can't be copied is left out, and the program ends with 2.\n",
        .example = "tarvo put disc.lif notes.txt --txt\ntarvo put disc.lif - --as RESULTS.BDAT <results\n",
        .arguments = put_rows,
        .run = run_put,
    },
    {
        .name = "cat",
        .aliases = {},
        .summary = "print a file of a medium",
        .text = "Prints one file to standard output, as text when its content is known. Lines end in carriage return "
                "and line feed.\n",
        .example = "tarvo cat disc.lif NOTES | tr -d '\\r'\n",
        .arguments = cat_rows,
        .run = run_cat,
    },
    cp_verb,
    mv_verb,
    rm_verb,
    mk_verb,
    attr_verb,
    undelete_verb,
    init_verb,
    check_verb,
    repair_verb,
    pack_verb,
    tape_test_verb,
    tape_ls_verb,
    tape_convert_verb,
    {
        .name = "config",
        .aliases = {},
        .summary = "check a configuration file",
        .text = "Reads a configuration file as the program and the plug-in do, and says whether it can be understood. "
                "The first line that can't is shown, and the program ends with 3.\n",
        .example = "tarvo config check tarvo.ini\n",
        .arguments = config_rows,
        .run = run_config,
        .configured = false,
    },
    {
        .name = "help",
        .aliases = {},
        .summary = "explain a verb",
        .text = "Prints the help of a verb, or the list of verbs, or of those that begin with the same word.\n",
        .example = "tarvo help ls\n",
        .arguments = help_rows,
        .run = run_help,
        .takes_medium = false,
        .configured = false,
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
        .configured = false,
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

std::string_view family_of(const Verb &verb)
{
    const std::string_view name = verb.name;
    const size_t blank = name.find(' ');
    return blank == std::string_view::npos ? "" : name.substr(0, blank);
}

std::vector<const Verb *> verbs_of(std::string_view family)
{
    std::vector<const Verb *> verbs;
    for (const Verb &verb : verb_table) {
        if (!family.empty() && family_of(verb) == family) verbs.push_back(&verb);
    }
    return verbs;
}

bool is_option(const ArgumentRow &row)
{
    return row.names[0] == '-';
}
