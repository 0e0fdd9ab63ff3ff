// The rules for targets: what is taken, what is refused and in which words.
#include "dialog/target_rules.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace
{
// A host with one image, whose paths are told apart by letters; and what it was last asked for.
std::string asked;

PathState look(const char *path)
{
    asked = path;
    if (asked == "C:\\images\\disc.lif" || asked == "disc.lif" || asked == "7up.lif") return PathState::file;
    return asked == "C:\\images" || asked == "C:" ? PathState::folder : PathState::missing;
}

TargetFault fault_of(const std::string &target)
{
    asked = "nothing";
    return target_fault(target, look);
}

struct GpibCase {
    const char *target;
    uint32_t address;
    uint32_t unit;
    uint32_t volume;
};

void expect_drive(const GpibCase &row)
{
    GpibDrive drive = {99, 99, 99};
    EXPECT_EQ(read_gpib(row.target, &drive), TargetFault::none) << row.target;
    EXPECT_EQ(drive.address, row.address) << row.target;
    EXPECT_EQ(drive.unit, row.unit) << row.target;
    EXPECT_EQ(drive.volume, row.volume) << row.target;
    EXPECT_EQ(fault_of(row.target), TargetFault::none) << row.target;
}

void expect_gpib_fault(const char *target, TargetFault fault)
{
    GpibDrive drive = {99, 99, 99};
    EXPECT_EQ(read_gpib(target, &drive), fault) << target;
    EXPECT_EQ(drive.address + drive.unit + drive.volume, 297u) << target << " set the drive";
    EXPECT_EQ(fault_of(target), fault) << target;
    EXPECT_EQ(asked, "nothing") << target << " was looked for on the host";
}
}

TEST(PlainTarget, BlanksAroundItGo)
{
    EXPECT_EQ(plain_target("  C:\\my images\\a b.lif \t"), "C:\\my images\\a b.lif");
    EXPECT_EQ(plain_target("\r\n700:\r\n"), "700:");
    EXPECT_EQ(plain_target(" \t "), "");
    EXPECT_EQ(plain_target(""), "");
}

TEST(PlainTarget, QuotesOfACopiedPathGo)
{
    EXPECT_EQ(plain_target("\"C:\\a b.lif\""), "C:\\a b.lif");
    EXPECT_EQ(plain_target(" \"C:\\a.lif\" "), "C:\\a.lif");
    EXPECT_EQ(plain_target("\"\""), "");
}

TEST(PlainTarget, ALoneQuoteStays)
{
    EXPECT_EQ(plain_target("\""), "\"");
    EXPECT_EQ(plain_target("\"C:\\a.lif"), "\"C:\\a.lif");
    EXPECT_EQ(plain_target("a.lif\""), "a.lif\"");
}

TEST(TargetKind, DigitAndColonAreAFloppyDriveUpToThree)
{
    EXPECT_EQ(target_kind("0:"), TargetKind::floppy);
    EXPECT_EQ(target_kind("3:DIR/FILE"), TargetKind::floppy);
    EXPECT_EQ(target_kind("4:"), TargetKind::image);
    EXPECT_EQ(target_kind("/:"), TargetKind::image);
    EXPECT_EQ(target_kind("0"), TargetKind::image);
    EXPECT_EQ(target_kind("00:"), TargetKind::image);
}

TEST(TargetKind, SevenWithAColonAnywhereIsGpib)
{
    EXPECT_EQ(target_kind("700:"), TargetKind::gpib);
    EXPECT_EQ(target_kind("7:"), TargetKind::gpib);
    EXPECT_EQ(target_kind("7up.lif:FILE"), TargetKind::gpib);
    EXPECT_EQ(target_kind("7up.lif"), TargetKind::image);
}

TEST(TargetKind, TheRestIsAnImage)
{
    EXPECT_EQ(target_kind("C:\\700:"), TargetKind::image);
    EXPECT_EQ(target_kind("disc.lif"), TargetKind::image);
    EXPECT_EQ(target_kind(""), TargetKind::image);
}

TEST(ImagePath, AColonBehindTheDrivePrefixDivides)
{
    EXPECT_EQ(image_path("C:\\images\\disc.hpi:SUB/FILE"), "C:\\images\\disc.hpi");
    EXPECT_EQ(image_path("c:\\images\\disc.hpi"), "c:\\images\\disc.hpi");
    EXPECT_EQ(image_path("disc.hpi:FILE:MORE"), "disc.hpi");
    EXPECT_EQ(image_path("\\\\server\\share\\disc.hpi:"), "\\\\server\\share\\disc.hpi");
    EXPECT_EQ(image_path("C:"), "C:");
    EXPECT_EQ(image_path(":FILE"), "");
    EXPECT_EQ(image_path(""), "");
}

TEST(GpibForm, AddressUnitAndVolumeByPlace)
{
    constexpr GpibCase cases[] = {
        {"700:", 0, 0, 0},     {"730:", 30, 0, 0},     {"7051:", 5, 1, 0},         {"70597:", 5, 9, 7},
        {"7:", 31, 0, 0},      {"73100:", 31, 0, 0},   {"732:", 32, 0, 0},         {"70000:", 0, 0, 0},
        {"700:FILE", 0, 0, 0}, {"70102:A:B", 1, 0, 2}, {"7051:SUB/FILE", 5, 1, 0},
    };
    for (const GpibCase &row : cases) expect_drive(row);
}

TEST(GpibForm, AnythingElseIsMalformed)
{
    for (const char *target : {"70:", "7::", "7:FILE", "7:00:", "700000:", "7up.lif:FILE",
                               "7A0:", "70A:", "7 5:", "7-1:", "7000000000:", "70:0:"}) {
        expect_gpib_fault(target, TargetFault::gpib_form);
    }
}

TEST(GpibForm, NumbersOutOfRangeAreNamed)
{
    expect_gpib_fault("733:", TargetFault::gpib_address);
    expect_gpib_fault("799:", TargetFault::gpib_address);
    expect_gpib_fault("79999:", TargetFault::gpib_address);
    expect_gpib_fault("700A:", TargetFault::gpib_unit);
    expect_gpib_fault("700 0:", TargetFault::gpib_unit);
    expect_gpib_fault("70008:", TargetFault::gpib_volume);
    expect_gpib_fault("70009:", TargetFault::gpib_volume);
    expect_gpib_fault("7000X:", TargetFault::gpib_volume);
}

TEST(GpibForm, WithoutTheSevenOrTheColonItIsNone)
{
    GpibDrive drive;
    for (const char *target : {"", "7", "700", "800:", "70000", "C:\\7.lif"}) {
        EXPECT_EQ(read_gpib(target, &drive), TargetFault::gpib_form) << target;
    }
}

TEST(TargetFault, EmptyIsRefused)
{
    EXPECT_EQ(fault_of(""), TargetFault::empty);
    EXPECT_EQ(asked, "nothing");
}

TEST(TargetFault, The260thCharacterIsTooMany)
{
    const std::string path = "C:\\images\\disc.lif:";
    const std::string longest = path + std::string(259 - path.size(), 'A');
    EXPECT_EQ(fault_of(longest), TargetFault::none);
    EXPECT_EQ(fault_of(longest + "A"), TargetFault::too_long);
    EXPECT_EQ(fault_of("700:" + std::string(256, 'A')), TargetFault::too_long);
    EXPECT_EQ(fault_of("0:" + std::string(5000, 'A')), TargetFault::too_long);
}

TEST(TargetFault, FloppyDrivesAreNotAskedFor)
{
    EXPECT_EQ(fault_of("0:"), TargetFault::none);
    EXPECT_EQ(fault_of("3:FILE"), TargetFault::none);
    EXPECT_EQ(asked, "nothing");
}

TEST(TargetFault, ImagesMustBeFilesOfTheHost)
{
    EXPECT_EQ(fault_of("C:\\images\\disc.lif"), TargetFault::none);
    EXPECT_EQ(fault_of("C:\\images\\disc.lif:SUB/FILE"), TargetFault::none);
    EXPECT_EQ(fault_of("7up.lif"), TargetFault::none);
    EXPECT_EQ(fault_of("C:\\images\\none.lif"), TargetFault::image_missing);
    EXPECT_EQ(fault_of("4:"), TargetFault::image_missing);
    EXPECT_EQ(asked, "4");
}

TEST(TargetFault, AFolderIsNoImage)
{
    EXPECT_EQ(fault_of("C:\\images"), TargetFault::image_is_folder);
    EXPECT_EQ(fault_of("C:\\images:disc.lif"), TargetFault::image_is_folder);
    EXPECT_EQ(fault_of("C:"), TargetFault::image_is_folder);
}

TEST(TargetFault, AFilespecAloneNamesNoImage)
{
    EXPECT_EQ(fault_of(":FILE"), TargetFault::image_unnamed);
    EXPECT_EQ(asked, "nothing");
}

TEST(FaultText, EachFaultHasItsOwnWords)
{
    EXPECT_STREQ(fault_text(TargetFault::none), "");
    std::set<std::string> texts;
    constexpr int last = static_cast<int>(TargetFault::image_is_folder);
    for (int fault = 1; fault <= last; fault++) {
        const std::string text = fault_text(static_cast<TargetFault>(fault));
        EXPECT_GT(text.size(), 10u) << fault;
        EXPECT_LT(text.size(), 120u) << "too long for two lines: " << text;
        texts.insert(text);
    }
    EXPECT_EQ(texts.size(), static_cast<size_t>(last));
}

TEST(Compose, GpibDrivesHaveAllTheirDigits)
{
    EXPECT_EQ(compose_gpib({0, 0, 0}), "70000:");
    EXPECT_EQ(compose_gpib({5, 1, 2}), "70512:");
    EXPECT_EQ(compose_gpib({30, 9, 7}), "73097:");
}

TEST(Compose, TheBusItselfHasNoUnitAndVolume)
{
    EXPECT_EQ(compose_gpib({bus_address, 3, 4}), "7:");
}

TEST(Compose, WhatIsComposedReadsBack)
{
    for (uint32_t address = 0; address < bus_address; address++) {
        for (uint32_t unit = 0; unit <= highest_unit; unit++) {
            for (uint32_t volume = 0; volume <= highest_volume; volume++) {
                const std::string target = compose_gpib({address, unit, volume});
                expect_drive({target.c_str(), address, unit, volume});
            }
        }
    }
    expect_drive({compose_gpib({bus_address, 0, 0}).c_str(), bus_address, 0, 0});
}

TEST(Compose, FloppyDrives)
{
    for (uint32_t drive = 0; drive < floppy_drives; drive++) {
        const std::string target = compose_floppy(drive);
        EXPECT_EQ(target, std::to_string(drive) + ":");
        EXPECT_EQ(target_kind(target), TargetKind::floppy);
    }
}
