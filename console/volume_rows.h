// The rows of the verbs that make volumes, look for faults in them and tidy them up.
#pragma once

#include "console/check.h"
#include "console/init.h"
#include "console/pack.h"
#include "console/shared_rows.h"

constexpr const char *volume_formats[] = {"lif", "disk45", "tape45"};
constexpr const char *disk_computers[] = {"9845", "9831", "250", "9825"};
constexpr ArgumentRow init_rows[] = {
    {
        .names = "MEDIUM",
        .help = "the image file to be made; not with --media list",
        .text = &Arguments::medium,
    },
    {
        .names = "--media",
        .help = "size and geometry of this medium; list prints the table of media, alone or with --json",
        .value = "NAME",
        .text = &Arguments::media,
    },
    {
        .names = "--format",
        .help = "lif, disk45 (System 45 disk, as without this option) or tape45 (DC100 tape of 852 records)",
        .value = "FORMAT",
        .text = &Arguments::format,
        .choices = volume_formats,
    },
    {
        .names = "--system",
        .help = "the computer of a System 45 disk: 9845 (or 9835, as without this option), 9831, 250 (or 260), which "
                "alone can say more than 65535 free records, or 9825",
        .value = "NAME",
        .text = &Arguments::system,
        .choices = disk_computers,
    },
    {
        .names = "--size",
        .help = "without --media: bytes, or with K or M behind the number 1,024 or 1,048,576 of them",
        .value = "N",
        .text = &Arguments::volume_size,
    },
    {
        .names = "--sectors",
        .help = "with --size: records a track; without it 32 on disks, and LIF volumes don't say",
        .value = "N",
        .number = &Arguments::sectors,
        .least = 1,
        .most = 65535,
    },
    {
        .names = "--heads",
        .help = "with --sectors: surfaces of a LIF volume; without it 1",
        .value = "N",
        .number = &Arguments::heads,
        .least = 1,
        .most = 65535,
    },
    {.names = "--label",
     .help = "up to 6 characters on LIF volumes, 8 on disks of the 250",
     .value = "TEXT",
     .text = &Arguments::label},
    {
        .names = "--dir",
        .help = "room for this many files in the directory",
        .value = "N",
        .number = &Arguments::entries,
        .least = 1,
        .most = 1000000,
    },
    {
        .names = "--interleave",
        .help = "the interleave factor that a disk says it has, instead of the medium's",
        .value = "N",
        .number = &Arguments::interleave,
        .least = 0,
        .most = 65535,
    },
    {
        .names = "--boot",
        .help = "the 30,720 bytes of system code for a disk of the 9825; without them these records stay zero",
        .value = "FILE",
        .text = &Arguments::boot,
    },
    {.names = "--quick", .help = "only head and tables; the file area stays zero", .flag = &Arguments::quick},
    {.names = "--force", .help = "replace a file that is there already", .flag = &Arguments::force},
    json_option,
    {.names = "--dry-run", .help = "only say what the volume would be", .flag = &Arguments::dry_run},
};
constexpr ArgumentRow check_rows[] = {medium_argument, json_option};
constexpr ArgumentRow image_backup_option = {
    .names = "--backup",
    .help = "copy the image file first, to MEDIUM.bak, or to MEDIUM.bak2, MEDIUM.bak3 ... when that is there",
    .flag = &Arguments::backup,
};
constexpr ArgumentRow repair_rows[] = {
    medium_argument,
    image_backup_option,
    {.names = "--dry-run", .help = "only say what would be done", .flag = &Arguments::dry_run},
};
constexpr ArgumentRow pack_rows[] = {
    medium_argument,
    image_backup_option,
    {
        .names = "--dry-run",
        .help = "pack a temporary copy only, and say where its files went",
        .flag = &Arguments::dry_run,
    },
    {.names = "-v,--verbose", .help = "say on standard error where the files went", .flag = &Arguments::verbose},
};

constexpr Verb init_verb = {
    .name = "init",
    .aliases = {},
    .summary = "make a new, empty volume",
    .text = "Makes an image file with a new volume: a LIF volume, a System 45 disk or a DC100 tape. It has the "
            "size of the medium, and the file area is filled with a pattern, zeros and ones as the format has "
            "it.\n"
            "A file that is there already stays, unless --force is given; that one is replaced when the new one "
            "is whole.\n",
    .example = "tarvo init --media list\ntarvo init disc.hpi --media 9895\n"
               "tarvo init disc.lif --format lif --media 9122 --label DEMO\n"
               "tarvo init disc.lif --format lif --size 270K --dir 64\n",
    .arguments = init_rows,
    .run = run_init,
};

constexpr Verb check_verb = {
    .name = "check",
    .aliases = {},
    .summary = "look for faults of a volume",
    .text = "Looks over the directory, the places of files and tables, spare tables and free space, and changes "
            "nothing. Faults are entries that can't be read, share records or a name, or reach behind the end of "
            "the volume, spare tables that differ from the main ones, and free space that doesn't add up. Notes "
            "are no faults: dates that are none, an October that is stored as month 16, which whoever rewrites a "
            "directory makes of it, and free space over spare tables or behind the end, which some media have "
            "from the start.\n"
            "The program ends with 3 when there are faults.\n",
    .example = "tarvo check disc.hpi\n",
    .arguments = check_rows,
    .run = run_check,
};

constexpr Verb repair_verb = {
    .name = "repair",
    .aliases = {},
    .summary = "write the tables of a volume anew",
    .text = "Takes away what check finds wrong in the tables: entries that can't be read are left out, and lost; "
            "spare tables become what the main ones are; free space becomes what files and tables leave. The "
            "directory is then in the order of the files' places. It says what was done, and what is left: files "
            "that share records or a name, or reach behind the end.\n"
            "The program ends with 2 when something is left, with 3 when there is nothing that it could do.\n",
    .example = "tarvo repair disc.hpi --backup\n",
    .arguments = repair_rows,
    .run = run_repair,
};

constexpr Verb pack_verb = {
    .name = "pack",
    .aliases = {},
    .summary = "join the free space of a System 45 disk",
    .text = "Moves the files of a disk together, so that its free space is in one piece. This is done on a copy "
            "beside the image, MEDIUM.new, without file headers; when every file there has the name, the type, "
            "the date and the bytes that it had, the copy takes the image's place, otherwise the image stays as "
            "it is. What was purged is gone for good.\n"
            "A file whose last record is a part of one would lose that part: such a disk isn't packed. Nor is one "
            "with a file area of more than 65534 records, which ends in the error \"No space left on device\".\n",
    .example = "tarvo pack disc.hpi --dry-run\n",
    .arguments = pack_rows,
    .run = run_pack,
};
