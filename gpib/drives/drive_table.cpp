// The known drives. Some rows are reached by no search, since one before them matches first or since their identify
// word is 0; they are here for those who put a table of their own together.
#include "gpib/drives/drive_table.h"

#include <iterator>

constinit const GpibDriveInfo *drive_table = default_drive_table;

const GpibDriveInfo default_drive_table[] = {
    // clang-format off
    // name       description                                        protocol        identi. mask  value device   un.   cyl hd sec bytes il rm
    {"9895",      "HP9895A dual 1.15M AMIGO floppy disc",            PROTOCOL_AMIGO, 0x0081, 0x00, 0x00, 0x00000, 1,     77,  2,  30,  256, 7, 1, 0, 0, 0},
    {"82901",     "HP82901 dual 270K AMIGO floppy disc",             PROTOCOL_AMIGO, 0x0104, 0x01, 0x00, 0x00000, 1,     35,  2,  16,  256, 6, 1, 0, 0, 0},
    {"9121",      "HP9121 dual 270K AMIGO floppy disc",              PROTOCOL_AMIGO, 0x0104, 0x01, 0x01, 0x00000, 1,     35,  2,  16,  256, 6, 1, 0, 0, 0},
    {"7910",      "HP7910 12M AMIGO Winchester disc",                PROTOCOL_AMIGO, 0x0001, 0x00, 0x00, 0x00000, 1,    735,  2,  32,  256, 1, 0, 0, 0, 0},
    {"7905",      "HP7905 10M AMIGO removable hard disc (MAC)",      PROTOCOL_AMIGO, 0x0002, 0x06, 0x04, 0x00000, 1,    400,  2,  48,  256, 1, 1, 0, 0, 0},
    {"7906",      "HP7906 10M AMIGO removable hard disc (MAC)",      PROTOCOL_AMIGO, 0x0002, 0x06, 0x00, 0x00000, 1,    400,  2,  48,  256, 1, 1, 0, 0, 0},
    {"7920",      "HP7920 47M AMIGO removable hard disc (MAC)",      PROTOCOL_AMIGO, 0x0002, 0x06, 0x02, 0x00000, 1,    815,  5,  48,  256, 1, 1, 0, 0, 0},
    {"7925",      "HP7925 115M AMIGO removable hard disc (MAC)",     PROTOCOL_AMIGO, 0x0002, 0x06, 0x06, 0x00000, 1,    815,  9,  64,  256, 1, 1, 0, 0, 0},
    {"7905",      "HP7905 10M AMIGO removable hard disc (ICD)",      PROTOCOL_AMIGO, 0x0003, 0x06, 0x04, 0x00000, 1,    400,  2,  48,  256, 1, 1, 0, 0, 0},
    {"7906",      "HP7906 10M AMIGO removable hard disc (ICD)",      PROTOCOL_AMIGO, 0x0003, 0x06, 0x00, 0x00000, 1,    400,  2,  48,  256, 1, 1, 0, 0, 0},
    {"7920",      "HP7920 47M AMIGO removable hard disc (ICD)",      PROTOCOL_AMIGO, 0x0003, 0x06, 0x02, 0x00000, 1,    815,  5,  48,  256, 1, 1, 0, 0, 0},
    {"7925",      "HP7925 115M AMIGO removable hard disc (ICD)",     PROTOCOL_AMIGO, 0x0003, 0x06, 0x06, 0x00000, 1,    815,  9,  64,  256, 1, 1, 0, 0, 0},
    {"9134A",     "HP9133A/HP9134A 4.8M AMIGO hard disc",            PROTOCOL_AMIGO, 0x0106, 0x00, 0x00, 0x00000, 1,    152,  4,  31,  256, 1, 0, 0, 0, 0},
    {"9134B",     "HP9133B/HP9134B 9.6M AMIGO hard disc",            PROTOCOL_AMIGO, 0x010A, 0x00, 0x00, 0x00000, 1,    305,  4,  31,  256, 1, 0, 0, 0, 0},
    {"9134XV",    "HP9133XV/HP9134XV 14.5M AMIGO hard disc",         PROTOCOL_AMIGO, 0x010F, 0x00, 0x00, 0x00000, 1,    305,  6,  31,  256, 1, 0, 0, 0, 0},
    {"7970",      "HP7970E magnetic tape drive",                     PROTOCOL_TAPE,  0x0183, 0x00, 0x00, 0x00000, 1,      1,  1,   1,  256, 1, 1, 0, 0, 0},
    {"7974",      "HP7974A magnetic tape drive",                     PROTOCOL_TAPE,  0x0174, 0x00, 0x00, 0x00000, 1,      1,  1,   1,  256, 1, 1, 0, 0, 0},
    {"7976",      "HP7976A magnetic tape drive",                     PROTOCOL_TAPE,  0x0176, 0x00, 0x00, 0x00000, 1,      1,  1,   1,  256, 1, 1, 0, 0, 0},
    {"7978",      "HP7978A magnetic tape drive",                     PROTOCOL_TAPE,  0x0178, 0x00, 0x00, 0x00000, 1,      1,  1,   1,  256, 1, 1, 0, 0, 0},
    {"7979",      "HP7979A magnetic tape drive",                     PROTOCOL_TAPE,  0x0179, 0x00, 0x00, 0x00000, 1,      1,  1,   1,  256, 1, 1, 0, 0, 0},
    {"7980",      "HP7980A magnetic tape drive",                     PROTOCOL_TAPE,  0x0180, 0x00, 0x00, 0x00000, 1,      1,  1,   1,  256, 1, 1, 0, 0, 0},
    {"C1511",     "HPC1511A DAT drive",                              PROTOCOL_TAPE,  0x0190, 0x00, 0x00, 0x00000, 1,      1,  1,   1,  256, 1, 1, 0, 0, 0},
    {"7908",      "HP7908 17M CS/80 hard disc",                      PROTOCOL_CS80,  0x0200, 0x00, 0x00, 0x79080, 1,    370,  5,  35,  256, 1, 0, 0, 0, 0},
    {"7911",      "HP7911 28M CS/80 hard disc",                      PROTOCOL_CS80,  0x0204, 0x00, 0x00, 0x79110, 1,    572,  3,  64,  256, 1, 0, 0, 0, 0},
    {"7912",      "HP7912 66M CS/80 hard disc",                      PROTOCOL_CS80,  0x0208, 0x00, 0x00, 0x79120, 1,    572,  7,  64,  256, 1, 0, 0, 0, 0},
    {"7941",      "HP7941/HP7942 CS/80 hard disc",                   PROTOCOL_CS80,  0x0000, 0x00, 0x00, 0x79410, 1,    968,  3,  32,  256, 1, 0, 0, 0, 0},
    {"7945",      "HP7945 CS/80 hard disc",                          PROTOCOL_CS80,  0x0220, 0x00, 0x00, 0x79450, 1,    968,  7,  32,  256, 1, 0, 0, 0, 0},
    {"7946",      "HP7946 CS/80 hard disc",                          PROTOCOL_CS80,  0x0220, 0x00, 0x00, 0x79460, 1,    968,  7,  32,  256, 1, 0, 0, 0, 0},
    {"7957",      "HP7957A 78M CS/80 hard disc",                     PROTOCOL_CS80,  0x0220, 0x00, 0x00, 0x79570, 1,   1269,  4,  63,  256, 1, 0, 0, 0, 0},
    {"7958",      "HP7958A 145M CS/80 hard disc",                    PROTOCOL_CS80,  0x0220, 0x00, 0x00, 0x79580, 1,   1572,  6,  63,  256, 1, 0, 0, 0, 0},
    {"7959",      "HP7959A 290M CS/80 hard disc",                    PROTOCOL_CS80,  0x0220, 0x00, 0x00, 0x79590, 1,   1572, 12,  63,  256, 1, 2, 0, 0, 0},
    {"9122",      "HP9122A dual 616K SS/80 floppy disc",             PROTOCOL_SS80,  0x0222, 0x00, 0x00, 0x91220, 1,     77,  2,  16,  256, 1, 2, 0, 0, 0},
    {"9133D",     "HP9133D 15MB SS/80 Winchester disc",              PROTOCOL_SS80,  0x0221, 0x00, 0x00, 0x91330, 1,    303,  6,  32,  256, 1, 0, 0, 0, 0},
    {"9133H",     "HP9133H 20MB SS/80 Winchester disc",              PROTOCOL_SS80,  0x0221, 0x00, 0x00, 0x91330, 1,    608,  4,  32,  256, 1, 0, 0, 0, 0},
    {"9133L",     "HP9133L 40MB SS/80 Winchester disc",              PROTOCOL_SS80,  0x0221, 0x00, 0x00, 0x91330, 1,    977,  5,  32,  256, 1, 0, 0, 0, 0},
    {"9134D",     "HP9134D 15MB SS/80 Winchester disc",              PROTOCOL_SS80,  0x0222, 0x00, 0x00, 0x91340, 1,    303,  6,  32,  256, 1, 0, 0, 0, 0},
    {"9134H",     "HP9134H 20MB SS/80 Winchester disc",              PROTOCOL_SS80,  0x0222, 0x00, 0x00, 0x91340, 1,    608,  4,  32,  256, 1, 0, 0, 0, 0},
    {"9154A",     "HP9153B/HP9154B 20MB SS/80 Winchester disc",      PROTOCOL_SS80,  0x0000, 0x00, 0x00, 0x91540, 1,    698,  2,  30,  256, 1, 0, 0, 0, 0},
    {"9154B",     "HP9153B/HP9154B 20MB SS/80 Winchester disc",      PROTOCOL_SS80,  0x0000, 0x00, 0x00, 0x91540, 1,   1400,  2,  30,  256, 1, 0, 0, 0, 0},
    {"9154C",     "HP9153B/HP9154B 20MB SS/80 Winchester disc",      PROTOCOL_SS80,  0x0000, 0x00, 0x00, 0x91540, 1,   1051,  2,  30,  256, 1, 0, 0, 0, 0},
    {"9154M",     "HP9153B/HP9154B 20MB SS/80 Winchester disc",      PROTOCOL_SS80,  0x0000, 0x00, 0x00, 0x91540, 1,   1400,  2,  30,  256, 1, 0, 0, 0, 0},
    {"9144-150",  "HP9144A 15MB tape (150 ft. HCD cartridge)",       PROTOCOL_CS80,  0x0260, 0x00, 0x00, 0x91440, 1,  16352,  1,   1, 1024, 1, 1, 0, 0, 0},
    {"9144-600",  "HP9144A 60MB tape (600 ft. HCD cartridge)",       PROTOCOL_CS80,  0x0260, 0x00, 0x00, 0x91440, 1,  65408,  1,   1, 1024, 1, 1, 0, 0, 0},
    {"9145-150",  "HP9145A 30MB tape (150 ft. XTD cartridge)",       PROTOCOL_CS80,  0x0268, 0x00, 0x00, 0x91450, 1,  32640,  1,   1, 1024, 1, 1, 0, 0, 0},
    {"9145-600",  "HP9145A 120MB tape (600 ft. XTD cartridge)",      PROTOCOL_CS80,  0x0268, 0x00, 0x00, 0x91450, 1, 130560,  1,   1, 1024, 1, 1, 0, 0, 0},
    {"1707A",     "HP1707A (600/A) 600MB CD-ROM",                    PROTOCOL_CS80,  0x0250, 0x00, 0x00, 0x17070, 1,      1, 60, 600,  256, 1, 1, 0, 0, 0},
    {"9885",      "HP9885M 500K SS/DD floppy disc",                  PROTOCOL_AMIGO, 0x0081, 0x00, 0x00, 0x00000, 1,     67,  1,  30,  256, 0, 1, 0, 0, 0},
    {},
    // clang-format on
};
static_assert(std::size(default_drive_table) == 47 + 1, "47 drives and the end");
