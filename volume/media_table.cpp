// The known drives. In four rows system and data tracks don't add up to the tracks: new volumes are laid out by what
// stands here.
#include "volume/media_table.h"

constinit const MediaTableRow *media_table = default_media_table;

const MediaTableRow default_media_table[] = {
    // clang-format off
    // name        description                                   letter heads sectors tracks system  data spare dir alloc  end interleave
    {"9895",     "HP9895A dual 1.15M AMIGO floppy disc",        'H',     2,    30,    150,     2,    148,    58,   1,    23,    29,   7},
    {"9885",     "HP9885M 500K SS/DD floppy disc",              'F',     1,    30,     67,     2,     65,    29,   5,    23,    29,   0},
    {"82901",    "HP82901 dual 270K AMIGO floppy disc",         '?',     2,    16,     66,     2,     64,    14,   1,     9,    16,   6},
    {"9121",     "HP9121 dual 270K AMIGO floppy disc",          '?',     2,    16,     66,     2,     64,    14,   1,     9,    16,   6},
    {"7910",     "HP7910 12M AMIGO Winchester disc",            'M',     6,    32,   1470,    12,   1458,   246,   6,   144,   191,   1},
    {"7905",     "HP7905 10M AMIGO removable hard disc",        'Y',     2,    48,    800,     8,    792,     0,   4,   144,   191,   0},
    {"7906",     "HP7906 10M AMIGO removable hard disc",        'C',     2,    48,    800,     8,    792,     0,   4,   144,   191,   0},
    {"7920",     "HP7920 47M AMIGO removable hard disc",        'P',     5,    48,   4000,    32,   3968,     0,  16,   501,   767,   0},
    {"7925",     "HP7925 115M AMIGO removable hard disc",       'X',     9,    64,   7200,    58,   7142,     0,  29,  1190,  1855,   0},
    {"9134A",    "HP9133A/HP9134A 4.8M AMIGO hard disc",        'G',     4,    31,    612,     4,    608,    94,   2,    49,    62,   0},
    {"9134B",    "HP9133B/HP9134B 9.6M AMIGO hard disc",        'H',     4,    31,   1220,     4,   1216,   189,   2,    49,    62,   0},
    {"9134XV",   "HP9133XV/HP9134XV 14.5M AMIGO hard disc",     'I',     6,    31,   1830,     4,   1826,   283,   2,    49,    62,   0},
    {"7908",     "HP7908 17M CS/80 hard disc",                  'Q',     5,    35,   1850,    36,   1814,   323,   4,    93,   140,   1},
    {"7911",     "HP7911 28M CS/80 hard disc",                  'R',     3,    64,   1716,    21,   1695,   549,   3,   128,   192,   1},
    {"7912",     "HP7912 66M CS/80 hard disc",                  'S',     7,    64,   4004,    25,   3979,  1281,   5,   213,   320,   1},
    {"7941",     "HP7941/HP7942 23M CS/80 hard disc",           'T',     2,    32,   2904,    42,   2862,     0,   6,   128,   192,   1},
    {"7945",     "HP7945/HP7946 52M CS/80 hard disc",           'U',     2,    32,   6776,    48,   6728,     0,   9,   192,   288,   1},
    {"9122",     "HP9122 dual 616K SS/80 floppy disc",          'A',     2,    16,    154,     2,    152,    14,   1,    21,    32,   2},
    {"9134D",    "HP9133D/HP9134D 15M SS/80 Winchester disc",   'M',     6,    32,   1812,    14,   1804,     0,   7,   149,   224,   3},
    {"9134H",    "HP9133H/HP9134H 20M SS/80 Winchester disc",   'M',     4,    32,   2432,    14,   2424,     0,   7,   149,   224,   3},
    {"9134L",    "HP9133L/HP9134L 40M SS/80 Winchester disc",   'M',     5,    32,   4865,    14,   4851,     0,   7,   149,   224,   3},
    {"7957A",    "HP7957A 78M CS/80 hard disc",                 'V',     4,    63,   5065,    22,   5043,     0,  11,   462,   693,   1},
    {"7958A",    "HP7958A 145M CS/80 hard disc",                'V',     6,    63,   8104,    22,   8082,     0,  11,   462,   693,   1},
    {"9154B",    "HP9153B/HP9154B 20M SS/80 Winchester disc",   'N',     2,    28,   2808,     8,   2800,     0,   4,    74,   112,   1},
    {"9144-150", "HP9144A 150 feet 16M HCD tape cartridge",     'K',     1,    64,   1022,    12,   1010,     0,   6,   256,   384,   1},
    {"9144-600", "HP9144A 600 feet 64M HCD tape cartridge",     'K',     1,    64,   4088,    12,   4076,     0,   6,   256,   384,   1},
    {"9145-150", "HP9145A 150 feet 32M XTD tape cartridge",     'K',     1,    64,   2044,    12,   2020,     0,   6,   256,   384,   1},
    {"9145-600", "HP9145A 600 feet 128M XTD tape cartridge",    'K',     1,    64,   8176,    12,   8152,     0,   6,   256,   384,   1},
    {},
    // clang-format on
};
