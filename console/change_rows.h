// The rows of the verbs that change files of a medium.
#pragma once

#include "console/change_verbs.h"
#include "console/shared_rows.h"

constexpr ArgumentRow names_argument = {
    .names = "NAME",
    .help = "the files, by name or pattern, see \"tarvo help ls\"",
    .required = true,
    .list = &Arguments::words,
};
constexpr ArgumentRow type_option = {
    .names = "--type",
    .help = "the type, as ls shows it, or # and up to four hexadecimal digits",
    .value = "TYPE",
    .text = &Arguments::type,
};
constexpr ArgumentRow system_option = {
    .names = "--system",
    .help = "the computer that the type belongs to, where several have one of that name: 9845, 98X6, SE80 ...",
    .value = "NAME",
    .text = &Arguments::system,
};
constexpr ArgumentRow record_option = {
    .names = "--record",
    .help = "the length of records, an even number of 2 to 65534, for types that have one",
    .value = "BYTES",
    .number = &Arguments::record,
    .least = 2,
    .most = 65534,
};
constexpr ArgumentRow ask_to_replace_option = {
    .names = "-i,--interactive",
    .help = "ask for each file that is there already whether it is to be replaced",
    .flag = &Arguments::interactive,
};
constexpr ArgumentRow replace_option = {
    .names = "--overwrite",
    .help = "replace files that are there already; an old file stays until the new one is whole, so there must be room "
            "for both",
    .flag = &Arguments::overwrite,
};

// ---- cp and mv -----------------------------------------------------------------------------------------

constexpr ArgumentRow destination_argument = {
    .names = "DEST",
    .help = "a new name for one file, another medium, or OTHER:NAME; a file of the host is taken for a medium, and "
            ":NAME always for a name",
    .required = true,
};
constexpr ArgumentRow cp_rows[] = {
    medium_argument,
    names_argument,
    destination_argument,
    replace_option,
    {.names = "--force", .help = "replace protected files as well", .flag = &Arguments::force},
    ask_to_replace_option,
    backup_option,
    damaged_option,
    dry_run_option,
    verbose_option,
};
constexpr ArgumentRow mv_rows[] = {
    medium_argument,
    names_argument,
    destination_argument,
    replace_option,
    {
        .names = "--force",
        .help = "move protected files to another medium, and replace them",
        .flag = &Arguments::force,
    },
    ask_to_replace_option,
    backup_option,
    damaged_option,
    dry_run_option,
    verbose_option,
};
constexpr Verb cp_verb = {
    .name = "cp",
    .aliases = {},
    .summary = "copy files of a medium to another one",
    .text = "Copies files of a medium to another medium, where they keep their names, or one file under a new name, on "
            "the same medium or another. A name without type keeps the file's type; the content is never converted. "
            "Between file systems the type becomes what it is called there, which -v shows.\n"
            "When a name is there already, nothing is copied without --overwrite. The directory is written behind the "
            "last file: what fails before leaves the medium as it was.\n",
    .example = "tarvo cp disc.lif NOTES NOTES2\ntarvo cp disc.lif 'A*' other.img -v\n",
    .arguments = cp_rows,
    .run = run_cp,
};
constexpr Verb mv_verb = {
    .name = "mv",
    .aliases = {},
    .summary = "rename files, or move them to another medium",
    .text = "Gives one file another name, or moves files to another medium: they are copied as cp does it, and removed "
            "when the copies are safe. A new name changes neither type nor length of records; attr does.\n"
            "When a name is there already, nothing is moved without --overwrite.\n",
    .example = "tarvo mv disc.lif OLD NEW\ntarvo mv disc.lif '*.BDAT' other.lif\n",
    .arguments = mv_rows,
    .run = run_mv,
};

// ---- rm ------------------------------------------------------------------------------------------------

constexpr ArgumentRow rm_rows[] = {
    medium_argument,
    names_argument,
    {
        .names = "--force",
        .help = "remove protected files as well; without this option the user is asked, or they are refused where "
                "nobody can be asked",
        .flag = &Arguments::force,
    },
    {.names = "-i,--interactive", .help = "ask for each file", .flag = &Arguments::interactive},
    backup_option,
    damaged_option,
    dry_run_option,
    verbose_option,
};
constexpr Verb rm_verb = {
    .name = "rm",
    .aliases = {},
    .summary = "remove files from a medium",
    .text = "Removes files from the directory, and their records become free. Nothing brings them back but a copy made "
            "by --backup. A pattern that matches no file is an error; the other files are removed, and the program "
            "ends with 2.\n",
    .example = "tarvo rm disc.lif OLD 'TMP*' --backup\n",
    .arguments = rm_rows,
    .run = run_rm,
};

// ---- mk ------------------------------------------------------------------------------------------------

constexpr ArgumentRow mk_rows[] = {
    medium_argument,
    {
        .names = "NAME",
        .help = "the name on the volume: NAME, NAME.TYPE or NAME.&BYTES.TYPE",
        .required = true,
        .text = &Arguments::word,
    },
    {
        .names = "--size",
        .help = "how much room it gets, in whole records; it must be given",
        .value = "BYTES",
        .number = &Arguments::room,
        .least = 0,
        .most = 0x7FFFFFFF,
    },
    type_option,
    record_option,
    system_option,
    backup_option,
    damaged_option,
    dry_run_option,
    verbose_option,
};
constexpr Verb mk_verb = {
    .name = "mk",
    .aliases = {},
    .summary = "make an empty file on a medium",
    .text =
        "Makes a file of a given size with nothing in it, for a program of the old computer to fill. Without a type "
        "it is ASCII on LIF volumes and DATA on others.\n",
    .example = "tarvo mk disc.lif RESULTS --type BDAT --size 10000\n",
    .arguments = mk_rows,
    .run = run_mk,
};

// ---- attr ----------------------------------------------------------------------------------------------

constexpr const char *on_and_off[] = {"on", "off"};
constexpr ArgumentRow attr_rows[] = {
    medium_argument,
    names_argument,
    type_option,
    system_option,
    record_option,
    {
        .names = "--date",
        .help = "the date, YYYY-MM-DD or YYYY-MM-DDThh:mm:ss",
        .value = "DATE",
        .text = &Arguments::date,
    },
    {
        .names = "--protect",
        .help = "whether the file is protected: on or off",
        .value = "WORD",
        .text = &Arguments::protect,
        .choices = on_and_off,
    },
    {
        .names = "--hide",
        .help = "whether the file is hidden: on or off",
        .value = "WORD",
        .text = &Arguments::hide,
        .choices = on_and_off,
    },
    backup_option,
    damaged_option,
    dry_run_option,
    verbose_option,
};
constexpr Verb attr_verb = {
    .name = "attr",
    .aliases = {},
    .summary = "change what the directory says of files",
    .text = "Changes type, length of records, date and protection of files; their content stays as it is. What a "
            "volume can't say of a file is refused: LIF volumes have dates, disks of the 9845 and its relatives have "
            "protection, and none of them has hidden files. Unless all files can be changed, none is.\n",
    .example = "tarvo attr disc.lif NOTES --type TEXT\ntarvo attr disc.lif '*' --date 1987-03-09\n",
    .arguments = attr_rows,
    .run = run_attr,
};

// ---- undelete ------------------------------------------------------------------------------------------

constexpr ArgumentRow undelete_rows[] = {
    medium_argument,
    {.names = "NAME", .help = "the file, as ls --purged shows it", .required = true, .text = &Arguments::word},
    {
        .names = "--type",
        .help =
            "the type that it had, which a purged file has lost, so that it must be given: as ls shows it, or # and "
            "up to four hexadecimal digits",
        .value = "TYPE",
        .text = &Arguments::type,
    },
    system_option,
    {
        .names = "--at",
        .help = "the address, where several purged files have that name",
        .value = "RECORD",
        .number = &Arguments::address,
        .least = 1,
        .most = 0x7FFFFFFF,
    },
    backup_option,
    damaged_option,
    dry_run_option,
    verbose_option,
};
constexpr Verb undelete_verb = {
    .name = "undelete",
    .aliases = {},
    .summary = "bring a purged file of a LIF volume back",
    .text = "Brings a file back that one of the old computers has purged, as long as its records haven't been given to "
            "another file; whether their content has been changed isn't known. What rm has removed is gone from the "
            "directory and can't be brought back.\n",
    .example = "tarvo ls --purged disc.lif\ntarvo undelete disc.lif NOTES --type ASCII\n",
    .arguments = undelete_rows,
    .run = run_undelete,
};
