// Targets: which medium a text names, and what on it.
#include "volume/target.h"

#include <gtest/gtest.h>

#include <string>

#include "base/error.h"
#include "tests/support/capture.h"
#include "volume/media.h"

using namespace tests;

namespace
{

struct Parsed {
    int32_t result = 0;
    std::string msus;
    std::string filespec;
    uint32_t access = 99;
    uint32_t address = 99;
    uint32_t unit = 99;
    uint32_t volume = 99;
    uint32_t drive = 99;
};

Parsed parsed(const std::string &target)
{
    Parsed p;
    char msus[FILE_PATH_SIZE] = "";
    char filespec[FILE_PATH_SIZE] = "";
    p.result = parse_target(target.c_str(), msus, filespec, &p.access, &p.address, &p.unit, &p.volume, &p.drive);
    p.msus = msus;
    p.filespec = filespec;
    return p;
}

struct Address {
    int32_t result = 0;
    uint32_t address = 99;
    uint32_t unit = 99;
    uint32_t volume = 99;
};

Address address_of(const char *msus)
{
    Address a;
    a.result = parse_gpib_msus(msus, &a.address, &a.unit, &a.volume);
    return a;
}

void expect_image(const std::string &target, const std::string &msus, const std::string &filespec)
{
    const Parsed p = parsed(target);
    EXPECT_EQ(p.result, 0) << target;
    EXPECT_EQ(p.access, uint32_t{ACCESS_IMAGE}) << target;
    EXPECT_EQ(p.msus, msus) << target;
    EXPECT_EQ(p.filespec, filespec) << target;
    EXPECT_EQ(p.address + p.unit + p.volume + p.drive, 0u) << target;
}

void expect_gpib(const char *msus, int32_t taken, uint32_t address, uint32_t unit, uint32_t volume)
{
    const Address a = address_of(msus);
    EXPECT_EQ(a.result, taken) << msus;
    EXPECT_EQ(a.address, address) << msus;
    EXPECT_EQ(a.unit, unit) << msus;
    EXPECT_EQ(a.volume, volume) << msus;
}

void expect_refused(const char *msus, const char *detail)
{
    forget_error();
    EXPECT_EQ(address_of(msus).result, -1) << msus;
    EXPECT_EQ(global_error, 204u) << msus;
    EXPECT_STREQ(global_error_info, detail) << msus;
}

}

TEST(Target, NoneIsAnError)
{
    forget_error();
    EXPECT_EQ(parse_target(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), -1);
    EXPECT_EQ(global_error, 103u);
    EXPECT_STREQ(global_error_info, "Null pointer");
}

TEST(Target, AnEmptyOneIsAnError)
{
    forget_error();
    EXPECT_EQ(parsed("").result, -1);
    EXPECT_EQ(global_error, 103u);
    EXPECT_STREQ(global_error_info, "Empty target string");
}

TEST(Target, DigitsUpToThreeAreFloppyDrives)
{
    for (uint32_t drive = 0; drive < 4; ++drive) {
        const std::string msus = std::to_string(drive) + ":";
        const Parsed p = parsed(msus + "SUB/FILE:X");
        EXPECT_EQ(p.result, 0);
        EXPECT_EQ(p.access, uint32_t{ACCESS_FLOPPY});
        EXPECT_EQ(p.msus, msus);
        EXPECT_EQ(p.filespec, "SUB/FILE:X");
        EXPECT_EQ(p.drive, drive);
        EXPECT_EQ(p.address + p.unit + p.volume, 0u);
    }
}

TEST(Target, FourIsAnImageFile)
{
    expect_image("4:", "4", "");
    expect_image("0", "0", "");
    expect_image("10:A", "10", "A");
}

TEST(Target, GpibDevices)
{
    const Parsed p = parsed("70123:DIR/FILE");
    EXPECT_EQ(p.result, 0);
    EXPECT_EQ(p.access, uint32_t{ACCESS_GPIB});
    EXPECT_EQ(p.msus, "70123:");
    EXPECT_EQ(p.filespec, "DIR/FILE");
    EXPECT_EQ(p.address, 1u);
    EXPECT_EQ(p.unit, 2u);
    EXPECT_EQ(p.volume, 3u);
    EXPECT_EQ(p.drive, 0u);
}

TEST(Target, SevenAloneIsTheBusItself)
{
    const Parsed p = parsed("7:");
    EXPECT_EQ(p.result, 0);
    EXPECT_EQ(p.access, uint32_t{ACCESS_GPIB});
    EXPECT_EQ(p.msus, "7:");
    EXPECT_EQ(p.filespec, "");
    EXPECT_EQ(p.address, 31u);
    EXPECT_EQ(p.unit + p.volume, 0u);
}

TEST(Target, SevenWithoutAColonIsAnImageFile)
{
    expect_image("7", "7", "");
    expect_image("70 disc.lif", "70 disc.lif", "");
}

TEST(Target, SevenWithAColonAnywhereMustBeAnAddress)
{
    for (const char *target : {"7disc.lif:SUB", "7:X", "7:SUB", "733:", "700x:", "700123:", "70 :"}) {
        forget_error();
        EXPECT_EQ(parsed(target).result, -1) << target;
        EXPECT_EQ(error_text(), "Bad msus specifier (\"" + std::string(target) + "\")");
    }
}

TEST(Target, ARefusedAddressIsNamedWhole)
{
    forget_error();
    EXPECT_EQ(parsed("733:FILE").result, -1);
    EXPECT_EQ(error_text(), "Bad msus specifier (\"733:FILE\")");
}

TEST(Target, ImageFiles)
{
    expect_image("disc.lif", "disc.lif", "");
    expect_image("disc.lif:", "disc.lif", "");
    expect_image("disc.lif:SUB/FILE", "disc.lif", "SUB/FILE");
    expect_image("/a b/disc.lif:F", "/a b/disc.lif", "F");
}

TEST(Target, ADriveLetterBelongsToThePath)
{
    expect_image("C:", "C:", "");
    expect_image("C:\\IMAGES\\DISC.HPI:SUBDIR/FILE", "C:\\IMAGES\\DISC.HPI", "SUBDIR/FILE");
    expect_image("z:disc.lif", "z:disc.lif", "");
}

TEST(Target, WhatFollowsAFurtherColonIsTheFilespec)
{
    expect_image("disc:1.lif:FILE", "disc", "1.lif:FILE");
    expect_image("CC:X", "CC", "X");
    expect_image("C:a:b", "C:a", "b");
}

TEST(Target, ResultsMayBeLeftOut)
{
    EXPECT_EQ(parse_target("1:A", nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(parse_target("70012:A", nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(parse_target("x.lif:A", nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr), 0);
    EXPECT_EQ(parse_gpib_msus("70012:", nullptr, nullptr, nullptr), 6);
}

TEST(Target, Hazard_M20_ThePathMayHave259Characters)
{
    const std::string longest(259, 'p');
    expect_image(longest, longest, "");
    expect_image(longest + ":F", longest, "F");
}

TEST(Target, Hazard_M20_LongerPathsAreRefused)
{
    for (const size_t length : {size_t{260}, size_t{1000}, size_t{100000}}) {
        forget_error();
        EXPECT_EQ(parsed(std::string(length, 'p')).result, -1) << length;
        EXPECT_EQ(global_error, 300u) << length;
    }
}

TEST(Target, Hazard_M20_LongerFilespecsAreRefused)
{
    forget_error();
    EXPECT_EQ(parsed("a.lif:" + std::string(260, 'f')).result, -1);
    EXPECT_EQ(global_error, 300u);
    EXPECT_EQ(parsed("1:" + std::string(260, 'f')).result, -1);
    EXPECT_EQ(parsed("700:" + std::string(260, 'f')).result, -1);
}

TEST(Target, Hazard_M20_ShortAddressesAreNotReadBehindTheirEnd)
{
    for (const char *msus : {"", "7", "70", "700", "7001", "70012", "7:X", "70:"})
        EXPECT_EQ(address_of(msus).result, -1) << msus;
}

TEST(GpibAddress, Forms)
{
    expect_gpib("7:", 2, 31, 0, 0);
    expect_gpib("700:", 4, 0, 0, 0);
    expect_gpib("708:", 4, 8, 0, 0);
    expect_gpib("730:SUB", 4, 30, 0, 0);
    expect_gpib("7001:", 5, 0, 1, 0);
    expect_gpib("70012:", 6, 0, 1, 2);
    expect_gpib("71597:F", 6, 15, 9, 7);
}

TEST(GpibAddress, ThirtyOneAndThirtyTwoPass)
{
    expect_gpib("731:", 4, 31, 0, 0);
    expect_gpib("732:", 4, 32, 0, 0);
}

TEST(GpibAddress, OutOfRange)
{
    expect_refused("733:", "target address out of range: 33");
    expect_refused("7:X", "target address out of range: 140");
    expect_refused("7:XY:", "target address out of range: 140");
    expect_refused("700A:", "unit out of range: 17");
    expect_refused("70018:", "volume out of range: 8");
}

TEST(GpibAddress, WithoutTheColonAtItsPlaceThereIsNone)
{
    EXPECT_EQ(address_of("700123:").result, -1);
    EXPECT_EQ(address_of("70012X:").result, -1);
    EXPECT_EQ(address_of("800:").result, -1);
}

TEST(GpibAddress, KeepsCharactersThatAreNoDigitsModulo256)
{
    expect_gpib("7I8:", 4, 2, 0, 0); // 10 * 25 + 8
}

TEST(GpibAddress, NullIsAnError)
{
    forget_error();
    EXPECT_EQ(parse_gpib_msus(nullptr, nullptr, nullptr, nullptr), -1);
    EXPECT_EQ(global_error, 103u);
    EXPECT_STREQ(global_error_info, "Null pointer");
}
