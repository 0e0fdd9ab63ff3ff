// Checking volumes, and joining the free space of disks.
#include "volume/repair.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>

#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "tests/support/medium.h"
#include "tests/support/stored_volume.h"
#include "tests/support/system45_builder.h"

using namespace tests;

namespace
{

using Names = std::vector<std::string>;

// In another order in the directory.
DiskVolume with_holes()
{
    DiskVolume volume = disk_with_holes();
    std::swap(volume.entries[0], volume.entries[2]);
    return volume;
}

// LONG of 4,200 records, of which each byte differs from that two records on, and NEXT behind it, two records too high.
Bytes long_file()
{
    DiskVolume volume;
    volume.tracks = 150;
    volume.data_tracks = 148;
    volume.entries = {{.name = "LONG", .start = 62, .records = 4200},
                      {.name = "NEXT", .start = 4262, .records = 3, .fill = 'n'}};
    volume.runs = Runs{{60, 2}, {4265, 235}};
    Bytes bytes = disk45_image(volume);
    for (size_t i = 62 * record_bytes; i < 4262 * record_bytes; ++i)
        bytes[i] = static_cast<uint8_t>(i / 512 * 7 + i % 256);
    return bytes;
}

int32_t defrag(const TemporaryFile &image)
{
    forget_error();
    return image_defrag(image.path());
}

StoredFile stored_named(const StoredVolume &volume, const std::string &name)
{
    const StoredFile *file = file_named(volume, name);
    EXPECT_NE(file, nullptr) << name;
    return file == nullptr ? StoredFile{} : *file;
}

Bytes stored_content(const Bytes &image, const std::string &name)
{
    return content_of(image, stored_named(stored_disk(image), name));
}

void expect_untouched(const TemporaryFile &image, uint32_t error, const std::string &detail)
{
    const Bytes before = image.bytes();
    const LogCapture log(0);
    EXPECT_EQ(defrag(image), -1);
    EXPECT_EQ(global_error, error);
    EXPECT_EQ(std::string(global_error_info), detail);
    EXPECT_EQ(image.bytes(), before);
}

size_t temporary_files()
{
    size_t count = 0;
    for (const auto &entry : std::filesystem::directory_iterator(std::filesystem::temp_directory_path()))
        count += entry.path().filename().string().starts_with("TRV$$") ? size_t{1} : 0;
    return count;
}

}

// ---- checking ------------------------------------------------------------------------------------------------

TEST(Check, SoundVolumes)
{
    for (const Bytes &bytes : {lif_image(demo_volume()), disk45_image(three_disk_files()),
                               tape45_image(three_tape_files()), lif_image(lif_volume_with_files(0))}) {
        const TemporaryFile image(bytes);
        for (const int32_t repair : {0, 1}) {
            EXPECT_EQ(image_check(image.path(), repair), 0) << error_text();
            EXPECT_EQ(image.bytes(), bytes);
        }
    }
}

TEST(Check, OpensWithItsFlags)
{
    const TemporaryFile image(lif_image(demo_volume()));
    const LogCapture log(3);
    const OutputCapture output;
    image_check(image.path(), 0);
    image_check(image.path(), 1);
    EXPECT_TRUE(contains(log.text(), "format=0, flags=$001C)\n")) << log.text();
    EXPECT_TRUE(contains(log.text(), "format=0, flags=$003C)\n")) << log.text();
    EXPECT_TRUE(contains(output.text(), "-- Image file info --\n"));
}

// The volume opens all the same, with what could be read; a check says that this wasn't all.
TEST(Check, DirectoryThatCannotBeReadWhole)
{
    LifVolume damaged = three_files();
    damaged.entries[1] = {.name = "TWO", .start = 0, .length = 3};
    const TemporaryFile image(lif_image(damaged));
    const LogCapture log(0);
    forget_error();
    EXPECT_EQ(image_check(image.path(), 0), -1);
    EXPECT_EQ(error_text(), "Bad directory entry (file \"TWO\" has location zero)");
    EXPECT_EQ(image_check(image.path(), 1), 0);
    EXPECT_EQ(image.bytes(), lif_image(damaged));
}

TEST(Check, WhatIsNoVolume)
{
    const LogCapture log(0);
    forget_error();
    EXPECT_EQ(image_check("nowhere.lif", 0), -1);
    EXPECT_EQ(global_error, 300u);
    const TemporaryFile image(Bytes(1000, 0x55));
    EXPECT_EQ(image_check(image.path(), 1), -1);
    EXPECT_EQ(global_error, 203u);
    EXPECT_EQ(image_check(nullptr, 0), -1);
    EXPECT_EQ(global_error, 103u);
}

// ---- joining free space --------------------------------------------------------------------------------------

TEST(Defrag, Hazard_K3_FilesMoveDownWithoutHeaders)
{
    const TemporaryFile image(disk45_image(with_holes()));
    const Bytes before = image.bytes();
    ASSERT_EQ(defrag(image), 0) << error_text();
    const Bytes after = image.bytes();
    const StoredVolume volume = stored_disk(after);
    EXPECT_EQ(names_of(volume), (Names{"ALPHA", "BETA", "GAMMA"})); // by location
    EXPECT_EQ(stored_named(volume, "ALPHA").start, 60u);
    EXPECT_EQ(stored_named(volume, "BETA").start, 63u);
    EXPECT_EQ(stored_named(volume, "GAMMA").start, 68u);
    for (const char *name : {"ALPHA", "BETA", "GAMMA"})
        EXPECT_EQ(stored_content(after, name), stored_content(before, name)) << name;
    EXPECT_EQ(volume.runs, (Runs{{76, 44}}));
    EXPECT_TRUE(volume.spares_agree);
}

TEST(Defrag, OnlyPlacesChange)
{
    const TemporaryFile image(disk45_image(with_holes()));
    const StoredVolume before = stored_disk(image.bytes());
    ASSERT_EQ(defrag(image), 0);
    const StoredVolume after = stored_disk(image.bytes());
    for (const StoredFile &file : before.files) {
        StoredFile moved = stored_named(after, file.name);
        moved.start = file.start;
        EXPECT_EQ(moved, file) << file.name;
    }
}

TEST(Defrag, SecondTimeChangesNothing)
{
    const TemporaryFile image(disk45_image(with_holes()));
    ASSERT_EQ(defrag(image), 0);
    const Bytes once = image.bytes();
    ASSERT_EQ(defrag(image), 0);
    EXPECT_EQ(image.bytes(), once);
}

TEST(Defrag, LongRunsAndDisksOfA9825)
{
    DiskVolume long_runs = with_holes();
    long_runs.long_runs = true;
    DiskVolume disk = with_holes();
    disk.magic = 0;
    disk.tracks = 67;
    for (DiskEntry &entry : disk.entries) {
        entry.type &= 0x1FFF;
        entry.words = 128;
    }
    for (const DiskVolume &volume : {long_runs, disk}) {
        const OutputCapture output;
        const TemporaryFile image(disk45_image(volume));
        const Bytes before = image.bytes();
        ASSERT_EQ(defrag(image), 0) << error_text();
        const StoredVolume after = stored_disk(image.bytes());
        EXPECT_EQ(stored_named(after, "GAMMA").start, 68u);
        EXPECT_EQ(stored_content(image.bytes(), "GAMMA"), stored_content(before, "GAMMA"));
        EXPECT_EQ(after.runs.size(), 1u);
        EXPECT_TRUE(after.spares_agree);
    }
}

// A file that moves by less than its own length goes over its own old place.
TEST(Defrag, FileMovesOverItself)
{
    DiskVolume volume;
    volume.entries = {{.name = "LONG", .start = 61, .records = 50}};
    volume.runs = Runs{{60, 1}, {111, 489}};
    Bytes bytes = disk45_image(volume);
    for (size_t i = 61 * record_bytes; i < 111 * record_bytes; ++i) bytes[i] = static_cast<uint8_t>(i / 256 + i % 256);
    const TemporaryFile image(bytes);
    ASSERT_EQ(defrag(image), 0) << error_text();
    EXPECT_EQ(stored_named(stored_disk(image.bytes()), "LONG").start, 60u);
    EXPECT_EQ(stored_content(image.bytes(), "LONG"), stored_content(bytes, "LONG"));
}

TEST(Defrag, KeepsPartRecordBehindWhenRepacking)
{
    DiskVolume volume;
    volume.entries = {{.name = "PART", .type = 0xD000, .start = 70, .records = 3, .words = 100, .fill = 'p'},
                      {.name = "WHOLE", .start = 80, .records = 2, .fill = 'w'}};
    volume.runs = Runs{{60, 10}, {73, 7}, {82, 518}};
    const TemporaryFile image(disk45_image(volume));
    ASSERT_EQ(defrag(image), 0) << error_text();
    const Bytes after = image.bytes();
    // Of 600 bytes 512 move, and the next file stands where the rest would be.
    EXPECT_EQ(stored_named(stored_disk(after), "PART").start, 60u);
    EXPECT_EQ(stored_named(stored_disk(after), "WHOLE").start, 62u);
    EXPECT_EQ(stored_content(after, "WHOLE"), Bytes(512, 'w'));
    Bytes part(512, 'p');
    part.resize(768, 'w');
    EXPECT_EQ(stored_content(after, "PART"), part);
    EXPECT_EQ(stored_disk(after).runs, (Runs{{64, 536}}));
}

TEST(Defrag, Hazard_K2_WhatIsLeftOfAPartRecordIsFree)
{
    DiskVolume volume;
    volume.entries = {{.name = "PART", .type = 0xD000, .start = 70, .records = 3, .words = 100, .fill = 'p'}};
    volume.runs = Runs{{60, 10}, {73, 527}};
    const TemporaryFile image(disk45_image(volume));
    ASSERT_EQ(defrag(image), 0) << error_text();
    EXPECT_EQ(stored_disk(image.bytes()).runs, (Runs{{62, 538}})); // of three records two have moved
    EXPECT_EQ(image_check(image.path(), 0), 0);
}

// An empty file has the place of the next one, in a packed area and in a full one.
TEST(Defrag, EmptyFilesTakeNoRoom)
{
    DiskVolume volume;
    volume.entries = {{.name = "EMPTY", .start = 60, .records = 0},
                      {.name = "WHOLE", .start = 60, .records = 2, .fill = 'w'},
                      {.name = "VOID", .start = 65, .records = 0},
                      {.name = "LAST", .start = 65, .records = 2, .fill = 'l'}};
    volume.runs = Runs{{62, 3}, {67, 533}};
    const TemporaryFile image(disk45_image(volume));
    ASSERT_EQ(defrag(image), 0) << error_text();
    const StoredVolume after = stored_disk(image.bytes());
    EXPECT_EQ(stored_named(after, "EMPTY").start, 60u);
    EXPECT_EQ(stored_named(after, "VOID").start, 62u);
    EXPECT_EQ(stored_named(after, "LAST").start, 62u);
    EXPECT_EQ(stored_content(image.bytes(), "WHOLE"), Bytes(512, 'w'));
    EXPECT_EQ(stored_content(image.bytes(), "LAST"), Bytes(512, 'l'));
    EXPECT_EQ(after.runs, (Runs{{64, 536}}));
}

TEST(Defrag, EmptyFileBehindAFullArea)
{
    DiskVolume volume;
    volume.entries = {{.name = "ALL", .start = 60, .records = 540, .fill = 'a'},
                      {.name = "EMPTY", .start = 599, .records = 0}};
    volume.runs = Runs{{599, 0}}; // a run of no records: there is a free list
    const TemporaryFile image(disk45_image(volume));
    ASSERT_EQ(defrag(image), 0) << error_text();
    const StoredVolume after = stored_disk(image.bytes());
    EXPECT_EQ(stored_named(after, "EMPTY").start, 599u);
    EXPECT_EQ(stored_content(image.bytes(), "ALL"), Bytes(540 * record_bytes, 'a'));
    EXPECT_TRUE(after.runs.empty());
}

TEST(Defrag, PurgedEntriesStayAsTheyAre)
{
    DiskVolume volume = with_holes();
    const DiskEntry purged = {.name = std::string("\0URGED", 6), .start = 300, .records = 5, .fill = 'x'};
    volume.entries.insert(volume.entries.begin(), purged);
    volume.entries.push_back(purged);
    const TemporaryFile image(disk45_image(volume));
    const LogCapture log(0);
    ASSERT_EQ(defrag(image), 0) << error_text();
    const StoredVolume after = stored_disk(image.bytes());
    EXPECT_EQ(names_of(after), (Names{"ALPHA", "BETA", "GAMMA"}));
    EXPECT_EQ(after.runs, (Runs{{76, 44}}));
}

TEST(Defrag, WhatIsDoneIsLogged)
{
    const TemporaryFile image(disk45_image(with_holes()));
    const LogCapture log(2);
    const OutputCapture output;
    ASSERT_EQ(defrag(image), 0);
    EXPECT_TRUE(contains(log.text(), "Info:  Relocating ALPHA...(63->60)...done.\n"
                                     "Info:  Relocating BETA...(70->63)...done.\n"
                                     "Info:  Relocating GAMMA...(90->68)...done.\n"))
        << log.text();
}

// ---- refusals and failures -----------------------------------------------------------------------------------

TEST(Defrag, Hazard_K4_NoFreeListIsRefused)
{
    expect_untouched(TemporaryFile(lif_image(three_files())), 203, "no free list");
    expect_untouched(TemporaryFile(tape45_image(three_tape_files())), 203, "no free list");
    DiskVolume full = with_holes();
    full.runs = Runs{};
    expect_untouched(TemporaryFile(disk45_image(full)), 211, "no free list");
}

TEST(Defrag, Hazard_K5_AreaOf65535RecordsAndMoreIsRefused)
{
    DiskVolume volume = with_holes();
    volume.records_per_track = 250;
    volume.tracks = 265;
    volume.system_tracks = 1;
    volume.data_tracks = 264;
    volume.long_runs = true;
    volume.records = 400;
    volume.entries = {{.name = "ALPHA", .start = 300, .records = 3, .fill = 'a'}};
    volume.runs = Runs{{250, 50}, {303, 65947}};
    expect_untouched(TemporaryFile(disk45_image(volume)), 211, "file \"ALPHA\"");
}

TEST(Defrag, Hazard_D14_DirectoryThatCannotBeReadWholeIsRefused)
{
    DiskVolume damaged = three_disk_files();
    damaged.entries[1].start = 0;
    const Bytes before = disk45_image(damaged);
    const TemporaryFile image(before);
    const LogCapture log(0);
    EXPECT_EQ(image_defrag(image.path()), -1);
    EXPECT_EQ(global_error, 215u);
    EXPECT_EQ(image.bytes(), before);
}

TEST(Defrag, VolumeThatCannotBeOpened)
{
    const LogCapture log(0);
    forget_error();
    EXPECT_EQ(image_defrag("nowhere.hpi"), -1);
    EXPECT_EQ(global_error, 300u);
}

// A damaged disk whose files overlap: what isn't out of its place yet is never written over.
TEST(Defrag, Hazard_D8_FileNotYetMovedIsNotWrittenOver)
{
    DiskVolume volume;
    volume.entries = {{.name = "A", .start = 60, .records = 50},
                      {.name = "B", .start = 61, .records = 49},
                      {.name = "C", .start = 115, .records = 4, .fill = 'c'}};
    volume.runs = Runs{{110, 5}, {119, 481}};
    expect_untouched(TemporaryFile(disk45_image(volume)), 211, "file \"A\"");
}

// A failure on the way leaves the tables of before; they are written when all files are in their new places.
TEST(Defrag, Hazard_K1_TablesComeBehindTheFiles)
{
    const Bytes before = disk45_image(with_holes());
    const LogCapture log(0);
    const size_t temporary_before = temporary_files();
    for (const FileFault fault : {FileFault::read, FileFault::write, FileFault::open, FileFault::seek}) {
        bool reached = true;
        for (uint32_t n = 1; reached; ++n) {
            ASSERT_LT(n, 300u);
            const TemporaryFile image(before);
            int32_t result = 0;
            bool tables_begun = false;
            {
                const FileFaults faults(fault, n);
                result = defrag(image);
                reached = faults.reached;
                for (const FileAccess &access : faults.accesses)
                    tables_begun |= access.writing && access.position == 1 * record_bytes; // the directory
            }
            EXPECT_TRUE(reached || result == 0) << n;
            const Bytes after = image.bytes();
            if (!tables_begun) {
                EXPECT_EQ(result, -1) << n;
                EXPECT_TRUE(std::equal(before.begin(), before.begin() + 60 * record_bytes, after.begin())) << n;
            } else {
                Bytes packed(3 * record_bytes, 'a');
                packed.resize(8 * record_bytes, 'b');
                packed.resize(16 * record_bytes, 'c');
                EXPECT_EQ(records_of(after, 60, 16), packed) << n;
            }
            EXPECT_EQ(image_check(image.path(), 0), 0) << n << error_text();
            EXPECT_EQ(temporary_files(), temporary_before) << n;
        }
    }
}

// What is longer than a megabyte goes through a temporary file.
TEST(Defrag, LongFileMovesOverItself)
{
    const Bytes before = long_file();
    const size_t temporary_before = temporary_files();
    const TemporaryFile image(before);
    ASSERT_EQ(defrag(image), 0) << error_text();
    EXPECT_EQ(stored_named(stored_disk(image.bytes()), "LONG").start, 60u);
    EXPECT_EQ(stored_named(stored_disk(image.bytes()), "NEXT").start, 4260u);
    for (const char *name : {"LONG", "NEXT"})
        EXPECT_EQ(stored_content(image.bytes(), name), stored_content(before, name)) << name;
    EXPECT_EQ(temporary_files(), temporary_before);
}

TEST(Defrag, TroubleWithTheTemporaryFileHasItsOwnWords)
{
    const LogCapture log(0);
    bool seen_300 = false;
    bool seen_302 = false;
    const size_t temporary_before = temporary_files();
    for (uint32_t n = 1; n < 20; ++n) {
        const TemporaryFile image(long_file());
        const FileFaults faults(FileFault::open, n);
        if (defrag(image) < 0 && global_error == 300 && std::string(global_error_info) == "temporary file")
            seen_300 = true;
    }
    for (uint32_t n = 1; n < 60; ++n) {
        const TemporaryFile image(long_file());
        const FileFaults faults(FileFault::short_read, n);
        if (defrag(image) < 0 && global_error == 302 && std::string(global_error_info) == "temporary file")
            seen_302 = true;
    }
    EXPECT_TRUE(seen_300);
    EXPECT_TRUE(seen_302);
    EXPECT_EQ(temporary_files(), temporary_before);
}

TEST(Defrag, NoMemory)
{
    const LogCapture log(0);
    bool reached = true;
    for (uint32_t n = 1; reached; ++n) {
        ASSERT_LT(n, 100u);
        const TemporaryFile image(disk45_image(with_holes()));
        {
            HeapFaults heap(n);
            const int32_t result = defrag(image);
            reached = heap.reached;
            if (result < 0) {
                EXPECT_TRUE(global_error == 105 || global_error == 211)
                    << n; // no memory, or no room found for lack of it
            }
            EXPECT_EQ(heap.releases + (reached ? 1 : 0), heap.allocations) << n;
        }
        EXPECT_EQ(image_check(image.path(), 0), 0) << n << error_text();
    }
}
