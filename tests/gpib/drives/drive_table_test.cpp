// The table of known drives: every figure, and what the rows have in common.
#include "gpib/drives/drive_table.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <string>

#include "gpib/controllers/settings.h"

namespace
{

// Name, description; protocol, identify word, status mask and value, device number, cylinders, heads, sectors, bytes of
// a block, interleave, removable.
constexpr const char *wanted =
    "9895|HP9895A dual 1.15M AMIGO floppy disc|0 0x0081 0x00 0x00 0x00000 77 2 30 256 7 1\n"
    "82901|HP82901 dual 270K AMIGO floppy disc|0 0x0104 0x01 0x00 0x00000 35 2 16 256 6 1\n"
    "9121|HP9121 dual 270K AMIGO floppy disc|0 0x0104 0x01 0x01 0x00000 35 2 16 256 6 1\n"
    "7910|HP7910 12M AMIGO Winchester disc|0 0x0001 0x00 0x00 0x00000 735 2 32 256 1 0\n"
    "7905|HP7905 10M AMIGO removable hard disc (MAC)|0 0x0002 0x06 0x04 0x00000 400 2 48 256 1 1\n"
    "7906|HP7906 10M AMIGO removable hard disc (MAC)|0 0x0002 0x06 0x00 0x00000 400 2 48 256 1 1\n"
    "7920|HP7920 47M AMIGO removable hard disc (MAC)|0 0x0002 0x06 0x02 0x00000 815 5 48 256 1 1\n"
    "7925|HP7925 115M AMIGO removable hard disc (MAC)|0 0x0002 0x06 0x06 0x00000 815 9 64 256 1 1\n"
    "7905|HP7905 10M AMIGO removable hard disc (ICD)|0 0x0003 0x06 0x04 0x00000 400 2 48 256 1 1\n"
    "7906|HP7906 10M AMIGO removable hard disc (ICD)|0 0x0003 0x06 0x00 0x00000 400 2 48 256 1 1\n"
    "7920|HP7920 47M AMIGO removable hard disc (ICD)|0 0x0003 0x06 0x02 0x00000 815 5 48 256 1 1\n"
    "7925|HP7925 115M AMIGO removable hard disc (ICD)|0 0x0003 0x06 0x06 0x00000 815 9 64 256 1 1\n"
    "9134A|HP9133A/HP9134A 4.8M AMIGO hard disc|0 0x0106 0x00 0x00 0x00000 152 4 31 256 1 0\n"
    "9134B|HP9133B/HP9134B 9.6M AMIGO hard disc|0 0x010A 0x00 0x00 0x00000 305 4 31 256 1 0\n"
    "9134XV|HP9133XV/HP9134XV 14.5M AMIGO hard disc|0 0x010F 0x00 0x00 0x00000 305 6 31 256 1 0\n"
    "7970|HP7970E magnetic tape drive|1 0x0183 0x00 0x00 0x00000 1 1 1 256 1 1\n"
    "7974|HP7974A magnetic tape drive|1 0x0174 0x00 0x00 0x00000 1 1 1 256 1 1\n"
    "7976|HP7976A magnetic tape drive|1 0x0176 0x00 0x00 0x00000 1 1 1 256 1 1\n"
    "7978|HP7978A magnetic tape drive|1 0x0178 0x00 0x00 0x00000 1 1 1 256 1 1\n"
    "7979|HP7979A magnetic tape drive|1 0x0179 0x00 0x00 0x00000 1 1 1 256 1 1\n"
    "7980|HP7980A magnetic tape drive|1 0x0180 0x00 0x00 0x00000 1 1 1 256 1 1\n"
    "C1511|HPC1511A DAT drive|1 0x0190 0x00 0x00 0x00000 1 1 1 256 1 1\n"
    "7908|HP7908 17M CS/80 hard disc|2 0x0200 0x00 0x00 0x79080 370 5 35 256 1 0\n"
    "7911|HP7911 28M CS/80 hard disc|2 0x0204 0x00 0x00 0x79110 572 3 64 256 1 0\n"
    "7912|HP7912 66M CS/80 hard disc|2 0x0208 0x00 0x00 0x79120 572 7 64 256 1 0\n"
    "7941|HP7941/HP7942 CS/80 hard disc|2 0x0000 0x00 0x00 0x79410 968 3 32 256 1 0\n"
    "7945|HP7945 CS/80 hard disc|2 0x0220 0x00 0x00 0x79450 968 7 32 256 1 0\n"
    "7946|HP7946 CS/80 hard disc|2 0x0220 0x00 0x00 0x79460 968 7 32 256 1 0\n"
    "7957|HP7957A 78M CS/80 hard disc|2 0x0220 0x00 0x00 0x79570 1269 4 63 256 1 0\n"
    "7958|HP7958A 145M CS/80 hard disc|2 0x0220 0x00 0x00 0x79580 1572 6 63 256 1 0\n"
    "7959|HP7959A 290M CS/80 hard disc|2 0x0220 0x00 0x00 0x79590 1572 12 63 256 1 2\n"
    "9122|HP9122A dual 616K SS/80 floppy disc|3 0x0222 0x00 0x00 0x91220 77 2 16 256 1 2\n"
    "9133D|HP9133D 15MB SS/80 Winchester disc|3 0x0221 0x00 0x00 0x91330 303 6 32 256 1 0\n"
    "9133H|HP9133H 20MB SS/80 Winchester disc|3 0x0221 0x00 0x00 0x91330 608 4 32 256 1 0\n"
    "9133L|HP9133L 40MB SS/80 Winchester disc|3 0x0221 0x00 0x00 0x91330 977 5 32 256 1 0\n"
    "9134D|HP9134D 15MB SS/80 Winchester disc|3 0x0222 0x00 0x00 0x91340 303 6 32 256 1 0\n"
    "9134H|HP9134H 20MB SS/80 Winchester disc|3 0x0222 0x00 0x00 0x91340 608 4 32 256 1 0\n"
    "9154A|HP9153B/HP9154B 20MB SS/80 Winchester disc|3 0x0000 0x00 0x00 0x91540 698 2 30 256 1 0\n"
    "9154B|HP9153B/HP9154B 20MB SS/80 Winchester disc|3 0x0000 0x00 0x00 0x91540 1400 2 30 256 1 0\n"
    "9154C|HP9153B/HP9154B 20MB SS/80 Winchester disc|3 0x0000 0x00 0x00 0x91540 1051 2 30 256 1 0\n"
    "9154M|HP9153B/HP9154B 20MB SS/80 Winchester disc|3 0x0000 0x00 0x00 0x91540 1400 2 30 256 1 0\n"
    "9144-150|HP9144A 15MB tape (150 ft. HCD cartridge)|2 0x0260 0x00 0x00 0x91440 16352 1 1 1024 1 1\n"
    "9144-600|HP9144A 60MB tape (600 ft. HCD cartridge)|2 0x0260 0x00 0x00 0x91440 65408 1 1 1024 1 1\n"
    "9145-150|HP9145A 30MB tape (150 ft. XTD cartridge)|2 0x0268 0x00 0x00 0x91450 32640 1 1 1024 1 1\n"
    "9145-600|HP9145A 120MB tape (600 ft. XTD cartridge)|2 0x0268 0x00 0x00 0x91450 130560 1 1 1024 1 1\n"
    "1707A|HP1707A (600/A) 600MB CD-ROM|2 0x0250 0x00 0x00 0x17070 1 60 600 256 1 1\n"
    "9885|HP9885M 500K SS/DD floppy disc|0 0x0081 0x00 0x00 0x00000 67 1 30 256 0 1\n";

std::string shown(const GpibDriveInfo &row)
{
    std::array<char, 400> text{};
    snprintf(text.data(), text.size(), "%s|%s|%u 0x%04X 0x%02X 0x%02X 0x%05X %u %u %u %u %u %u\n", row.name,
             row.description, row.protocol, row.identify, row.status_mask, row.status_value, row.device_number,
             row.cylinders, row.heads, row.sectors, row.block_size, row.interleave, row.removable);
    return text.data();
}

}

TEST(DriveTable, EveryFigure)
{
    std::string text;
    for (const GpibDriveInfo *row = default_drive_table; row->name != nullptr; row++) text += shown(*row);
    EXPECT_EQ(text, wanted);
}

TEST(DriveTable, RowsSayNothingOfAnOpenDrive)
{
    uint32_t count = 0;
    for (const GpibDriveInfo *row = default_drive_table; row->name != nullptr; row++, count++) {
        EXPECT_EQ(row->units, 1) << row->name;
        EXPECT_EQ(row->is_tape, 0u) << row->name;
        EXPECT_EQ(row->media_present, 0u) << row->name;
        EXPECT_EQ(row->media_formatted, 0u) << row->name;
        EXPECT_LE(strlen(row->name), 16u) << row->name;
    }
    EXPECT_EQ(count, 47u);
}

TEST(DriveTable, TheDefaultIsInForce)
{
    EXPECT_EQ(drive_table, &default_drive_table[0]);
}

TEST(BoardSettings, AsTheyAreAtLoad)
{
    EXPECT_EQ(board_select, 0);
    EXPECT_EQ(port_address, 0u);
    EXPECT_EQ(gpib_limit_load, 1);
}
