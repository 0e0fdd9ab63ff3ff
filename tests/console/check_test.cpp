// Faults and notes of damaged volumes, each of its kind.
#include <algorithm>
#include <chrono>
#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include "tests/console/disks.h"
#include "tests/console/folder.h"

using tests::Bytes;
using tests::disk45_image;
using tests::disk_with_holes;
using tests::DiskVolume;
using tests::error_line;
using tests::LifVolume;
using tests::Names;
using tests::Outcome;
using tests::run;
using tests::run_on;
using tests::Runs;
using tests::TemporaryFile;
using tests::with_byte;

namespace fs = std::filesystem;

namespace
{

constexpr size_t spare_directory = 31 * 256; // of disk_with_holes
constexpr size_t spare_availability = 53 * 256;

// What check says of an image that it doesn't change, behind its first line.
std::string said(const Bytes &image, int code)
{
    const TemporaryFile volume(image);
    const Outcome outcome = run_on("check", volume);
    EXPECT_EQ(outcome.code, code) << outcome.output << outcome.errors;
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(volume.bytes(), image);
    EXPECT_EQ(outcome.output.rfind(std::string(volume.path()) + ": ", 0), 0U);
    return outcome.output.substr(outcome.output.find('\n') + 1);
}

std::string faults_of(const Bytes &image)
{
    return said(image, 3);
}

std::string notes_of(const Bytes &image)
{
    return said(image, 0);
}

std::string faults_of(const DiskVolume &volume)
{
    return faults_of(disk45_image(volume));
}

LifVolume lif_with(const std::vector<tests::LifEntry> &entries)
{
    return tests::volume_of(entries);
}

}

TEST(Check, SoundVolumesHaveNoFaults)
{
    DiskVolume of_9825 = tests::disk_of_9825();
    of_9825.entries = {{.name = "A", .type = 0x0800}};
    const Bytes images[] = {
        tests::lif_image(tests::demo_volume()),         tests::lif_image(tests::lif_volume_with_files(0)),
        disk45_image(tests::three_disk_files()),        disk45_image(disk_with_holes()),
        tests::tape45_image(tests::three_tape_files()),
    };
    for (const Bytes &image : images) EXPECT_EQ(notes_of(image), "");
    const TemporaryFile volume(disk45_image(of_9825));
    EXPECT_EQ(run_on("check", volume).code, 0) << run_on("check", volume).output;
}

TEST(Check, Samples)
{
    for (const char *name : {"hp9845.hpi", "hp85.lif", "text.lif"}) {
        const std::string path = tests::sample(name);
        if (path.empty()) GTEST_SKIP() << "TARVO_SAMPLES names no folder with " << name;
        const Outcome outcome = run({"check", path});
        EXPECT_EQ(outcome.code, 0) << outcome.output << outcome.errors;
    }
}

TEST(Check, FirstLineSaysHowItStands)
{
    const TemporaryFile volume(disk45_image(disk_with_holes()));
    EXPECT_EQ(run_on("check", volume).output, std::string(volume.path()) + ": System 45 disk, files: 3, faults: 0\n");
}

// ---- entries and names ---------------------------------------------------------------------------------------

TEST(Check, EntriesThatCannotBeRead)
{
    LifVolume volume = tests::three_files();
    volume.entries[1] = {.name = "TWO", .start = 0, .length = 3};
    volume.entries[2].start = 9;
    EXPECT_EQ(faults_of(tests::lif_image(volume)),
              "fault: entry 1 in record 2 of the directory: Bad directory entry (file \"TWO\" has location zero)\n");
    DiskVolume disk = disk_with_holes();
    disk.entries[2].name = "B:D";
    EXPECT_EQ(
        faults_of(disk).rfind("fault: entry 2 in record 1 of the directory: Bad directory entry (file \"B:D\"", 0), 0U);
}

TEST(Check, DirectoryBehindTheEnd)
{
    LifVolume volume;
    for (int i = 0; i < 16; ++i) volume.entries.push_back({.name = "F" + std::to_string(i)});
    volume.end_mark = false;
    volume.records = 3;
    const std::string text = faults_of(tests::lif_image(volume));
    EXPECT_NE(text.find("fault: the directory reaches behind the end of the medium, record 3\n"), std::string::npos)
        << text;
}

TEST(Check, NamesThatTwoFilesBear)
{
    const LifVolume volume = lif_with({{.name = "SAME"}, {.name = "OTHER"}, {.name = "SAME", .type = 0xE020}});
    EXPECT_EQ(faults_of(tests::lif_image(volume)),
              "fault: SAME.BAS8x at record 6 bears the name of SAME.ASCII at record 4\n");
    const LifVolume purged = lif_with({{.name = "SAME", .type = 0}, {.name = "SAME"}});
    EXPECT_EQ(notes_of(tests::lif_image(purged)), "") << "one of them is gone";
}

// ---- places --------------------------------------------------------------------------------------------------

TEST(Check, FilesThatShareRecords)
{
    const LifVolume volume = lif_with({{.name = "ONE", .start = 10, .length = 5},
                                       {.name = "TWO", .start = 14, .length = 1},
                                       {.name = "THREE", .start = 15, .length = 1}});
    EXPECT_EQ(faults_of(tests::lif_image(volume)), "fault: ONE.ASCII and TWO.ASCII share records from 14 to 14\n");
    const LifVolume inside = lif_with({{.name = "ONE", .start = 10, .length = 9},
                                       {.name = "TWO", .start = 11, .length = 1},
                                       {.name = "THREE", .start = 18, .length = 1}});
    EXPECT_EQ(faults_of(tests::lif_image(inside)), "fault: ONE.ASCII and TWO.ASCII share records from 11 to 11\n"
                                                   "fault: ONE.ASCII and THREE.ASCII share records from 18 to 18\n");
}

TEST(Check, FilesOverTables)
{
    EXPECT_EQ(faults_of(tests::lif_image(lif_with({{.name = "ONE", .start = 3, .length = 1}}))),
              "fault: the directory and ONE.ASCII share records from 3 to 3\n");
    DiskVolume volume = disk_with_holes();
    volume.entries.push_back({.name = "LOW", .start = 40});
    EXPECT_EQ(faults_of(volume), "fault: the spare directory and LOW.PROG share records from 40 to 40\n");
}

TEST(Check, FilesBehindTheEnd)
{
    EXPECT_EQ(faults_of(tests::lif_image(lif_with({{.name = "ONE", .start = 150, .length = 20}}))),
              "fault: ONE.ASCII reaches to record 169, the volume ends ahead of 160\n");
    Bytes cut = disk45_image(disk_with_holes());
    cut.resize(92 * 256);
    EXPECT_NE(faults_of(cut).find("fault: GAMMA"), std::string::npos);
    // A product of two words that 32 bits can't hold.
    DiskVolume volume = disk_with_holes();
    volume.entries[2] = {.name = "HUGE", .type = 0xD000, .start = 90, .records = 0xFFFF, .words = 0xFFFF};
    EXPECT_NE(faults_of(volume).find("reaches to record 33553"), std::string::npos) << faults_of(volume);
}

TEST(Check, SpareTablesOverMainOnes)
{
    DiskVolume volume = disk_with_holes();
    volume.records_per_track = 15;
    volume.tracks = 8;
    volume.system_tracks = 4;
    volume.data_tracks = 4;
    const std::string text = faults_of(volume);
    EXPECT_NE(text.find("fault: the directory and the spare directory share records from 16 to 22\n"),
              std::string::npos)
        << text;
}

// ---- spare tables --------------------------------------------------------------------------------------------

TEST(Check, SpareTablesThatDiffer)
{
    const Bytes image = disk45_image(disk_with_holes());
    EXPECT_EQ(faults_of(with_byte(image, spare_directory + 17, 'X')),
              "fault: the spare directory differs from the main one, first in record 31\n");
    EXPECT_EQ(faults_of(with_byte(image, spare_availability + 3, 9)),
              "fault: the spare availability table differs from the main one, first in record 53\n");
    EXPECT_EQ(faults_of(with_byte(image, spare_directory + 48 + 1, 'X')),
              "fault: the spare directory differs from the main one, first in record 31\n")
        << "the end mark";
    EXPECT_EQ(notes_of(with_byte(image, spare_directory + 64, 'X')), "") << "nobody reads what stands behind the end";
    EXPECT_EQ(notes_of(with_byte(image, spare_availability + 20, 'X')), "");
}

TEST(Check, SpareDirectoryInItsSecondRecord)
{
    DiskVolume volume;
    volume.entries = tests::numbered_files(40);
    const Bytes image = disk45_image(volume);
    EXPECT_EQ(notes_of(image), "");
    EXPECT_EQ(faults_of(with_byte(image, spare_directory + 2 * 256 + 3, 'X')),
              "fault: the spare directory differs from the main one, first in record 33\n");
}

TEST(Check, SpareDirectoryOfATape)
{
    const Bytes image = tests::tape45_image(tests::three_tape_files());
    EXPECT_EQ(faults_of(with_byte(image, 3 * 256 + 5, 'X')),
              "fault: the spare directory differs from the main one, first in record 3\n");
    EXPECT_EQ(faults_of(with_byte(image, 3 * 256 + 1, 'X')),
              "fault: the spare directory differs from the main one, first in record 3\n")
        << "its head";
}

// ---- free space ----------------------------------------------------------------------------------------------

TEST(Check, FreeSpaceThatDoesNotAddUp)
{
    const std::pair<Runs, std::string> rows[] = {
        {{{60, 3}, {66, 4}, {75, 15}}, "fault: 22 records belong to no file and aren't free\n"},
        {{}, "fault: 44 records belong to no file and aren't free\n"},
        {{{60, 4}, {66, 4}, {75, 15}, {98, 22}},
         "fault: the free run from record 60 on and ALPHA.PROG share records from 63 to 63\n"},
        {{{60, 3}, {66, 4}, {75, 10}, {80, 10}, {98, 22}},
         "fault: the free run from record 75 on and the free run from record 80 on share records from 80 to 84\n"},
        {{{60, 3}, {66, 4}, {75, 15}, {98, 23}},
         "fault: the free run from record 98 on leaves the file area, records 60 to 119\n"},
        {{{29, 1}, {60, 3}, {66, 4}, {75, 15}, {98, 22}},
         "fault: the free run from record 29 on leaves the file area, records 60 to 119\n"},
    };
    for (const auto &[runs, text] : rows) {
        DiskVolume volume = disk_with_holes();
        volume.runs = runs;
        EXPECT_EQ(faults_of(volume), text);
    }
}

TEST(Check, EmptyRunsAreNothing)
{
    DiskVolume volume = disk_with_holes();
    volume.runs = Runs{{60, 3}, {66, 4}, {70, 0}, {75, 15}, {98, 22}};
    EXPECT_EQ(notes_of(disk45_image(volume)), "");
}

TEST(Check, FreeSpaceThatSomeMediaHaveFromTheStartIsNoted)
{
    DiskVolume volume = disk_with_holes();
    volume.spare_distance = 3;
    volume.availability_end = 24;
    volume.tracks = 5;
    volume.data_tracks = 4;
    volume.entries.resize(1);
    volume.runs = Runs{{60, 3}, {66, 114}};
    volume.records = 150;
    EXPECT_EQ(notes_of(disk45_image(volume)),
              "note: the free run from record 66 on and the spare directory share records from 91 to 112\n"
              "note: the free run from record 66 on and the spare availability table share records from 113 to 113\n"
              "note: the free run from record 66 on reaches behind the end of the volume, record 150\n");
}

// ---- dates ---------------------------------------------------------------------------------------------------

TEST(Check, Hazard_D15_DatesAreNotedOnly)
{
    const LifVolume volume = lif_with({
        {.name = "GOOD", .date = {0x99, 0x12, 0x31, 0x23, 0x59, 0x59}},
        {.name = "NONE", .date = {}},
        {.name = "OCT10", .date = {0x85, 0x10, 0x09, 0x08, 0x07, 0x06}},
        {.name = "OCT16", .date = {0x85, 0x16, 0x09, 0x08, 0x07, 0x06}},
        {.name = "MONTH", .date = {0x85, 0x13, 0x09, 0x08, 0x07, 0x06}},
        {.name = "HEX", .date = {0x85, 0x0A, 0x09, 0x08, 0x07, 0x06}},
        {.name = "DAY", .date = {0x85, 0x01, 0x32, 0x08, 0x07, 0x06}},
        {.name = "GONE", .type = 0, .date = {0x85, 0x13, 0x09, 0x08, 0x07, 0x06}},
    });
    EXPECT_EQ(notes_of(tests::lif_image(volume)), "note: OCT16.ASCII: the October of its date is stored as month 16\n"
                                                  "note: MONTH.ASCII: its date is none (85 13 09 08 07 06)\n"
                                                  "note: HEX.ASCII: its date is none (85 0A 09 08 07 06)\n"
                                                  "note: DAY.ASCII: its date is none (85 01 32 08 07 06)\n");
}

// ---- as JSON, and refusals -----------------------------------------------------------------------------------

TEST(Check, AsJson)
{
    DiskVolume volume = disk_with_holes();
    volume.runs = Runs{{60, 3}, {66, 4}, {75, 15}};
    const TemporaryFile image(disk45_image(volume));
    const Outcome outcome = run_on("check", image, {"--json"});
    EXPECT_EQ(outcome.code, 3);
    const rapidjson::Document document = tests::json_of(outcome);
    EXPECT_STREQ(document["medium"].GetString(), image.path());
    EXPECT_STREQ(document["format"].GetString(), "System 45 disk");
    EXPECT_EQ(document["files"].GetUint(), 3U);
    EXPECT_EQ(document["fault_count"].GetUint(), 1U);
    EXPECT_EQ(document["note_count"].GetUint(), 0U);
    EXPECT_EQ(tests::json_text(document["findings"]),
              "[{\"fault\":true,\"kind\":\"space\",\"text\":\"22 records belong to no file and aren't free\"}]");
    const TemporaryFile sound(disk45_image(disk_with_holes()));
    EXPECT_EQ(tests::json_text(tests::json_of(run_on("check", sound, {"--json"}))["findings"]), "[]");
}

TEST(Check, WhatCannotBeOpened)
{
    const TemporaryFile nothing;
    EXPECT_EQ(run_on("check", nothing).code, 1);
    EXPECT_FALSE(nothing.exists());
    const TemporaryFile other(Bytes(1000, 0x55));
    EXPECT_EQ(run_on("check", other).errors, error_line("Unsupported format"));
    const TemporaryFile volume(tests::lif_image(tests::demo_volume()));
    EXPECT_EQ(run({"check", std::string(volume.path()) + ":DIR"}).code, 1);
    EXPECT_EQ(run({"check", "0:"}).code, 1);
}

TEST(Check, ImageThatMayOnlyBeRead)
{
    if (!tests::can_drop_rights()) GTEST_SKIP() << "rights can only be dropped natively, by root, with setpriv";
    const TemporaryFile volume(tests::lif_image(tests::demo_volume()));
    fs::permissions(volume.path(), fs::perms::group_read | fs::perms::others_read);
    EXPECT_EQ(tests::run_in_shell({"check", volume.path()}, tests::as_nobody).code, 0);
    EXPECT_EQ(tests::run_in_shell({"repair", volume.path()}, tests::as_nobody).code, 1);
}

TEST(Check, OutputThatIsFull)
{
    if (!tests::runs_natively() || !fs::exists("/dev/full")) GTEST_SKIP() << "there is no full device here";
    const TemporaryFile volume(tests::lif_image(tests::demo_volume()));
    EXPECT_EQ(tests::run_in_shell({"check", volume.path()}, "% >/dev/full").code, 1);
}

TEST(Check, WarningsOfTheLogComeWhereTheyAreAskedFor)
{
    DiskVolume volume = disk_with_holes();
    volume.runs = Runs{};
    const TemporaryFile image(disk45_image(volume));
    EXPECT_EQ(run_on("check", image).errors, "");
    EXPECT_NE(run_on("check", image, {"--log", "2"}).errors.find("report different free space"), std::string::npos);
}

TEST(Check, AsManyFaultsAsOneLikesTakeLittleTime)
{
    LifVolume volume;
    volume.directory_length = 8000;
    volume.tracks = 1000;
    volume.end_mark = false;
    for (uint32_t i = 0; i < 64000; ++i)
        volume.entries.push_back({.name = "SAME", .start = 100, .length = i % 2 == 0 ? 0xFFFFFFF : 0});
    const TemporaryFile image(tests::lif_image(volume));
    const auto started = std::chrono::steady_clock::now();
    const Outcome outcome = run_on("check", image);
    EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(60));
    EXPECT_EQ(outcome.code, 3);
    EXPECT_EQ(std::count(outcome.output.begin(), outcome.output.end(), '\n'), 1 + 1000 + 1);
    EXPECT_NE(outcome.output.find("\nfault: and "), std::string::npos);
}
