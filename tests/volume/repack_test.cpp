// Free space joined on the way into another image, against the same done in place.
#include "volume/repack.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "tests/support/medium.h"
#include "tests/support/random_choice.h"
#include "tests/support/stored_volume.h"
#include "tests/support/system45_builder.h"
#include "volume/open.h"
#include "volume/repair.h"

using namespace tests;

namespace
{

constexpr uint16_t sorted_reading = OPEN_READ_VOLUME | OPEN_SORT | OPEN_READ_ONLY;

// Each byte of the image is another one than its neighbours, so that whatever is moved can be told from what isn't;
// the tables stay.
Bytes patterned(const DiskVolume &volume, uint32_t from = 60)
{
    Bytes bytes = disk45_image(volume);
    for (size_t i = from * record_bytes; i < bytes.size(); ++i)
        bytes[i] = static_cast<uint8_t>(i / 256 * 7 + i / 65536 * 3 + i % 251);
    return bytes;
}

DiskVolume disk_with_long_file()
{
    DiskVolume volume;
    volume.tracks = 150;
    volume.data_tracks = 148;
    volume.entries = {{.name = "LONG", .start = 62, .records = 4200}, {.name = "NEXT", .start = 4265, .records = 3}};
    volume.runs = Runs{{60, 2}, {4262, 3}, {4268, 232}};
    return volume;
}

// Files in any order of the directory, with holes between them, some of them empty or of part records.
DiskVolume random_disk(RandomChoice *choice)
{
    DiskVolume volume;
    volume.runs = Runs{};
    volume.spare_distance = static_cast<uint16_t>(choice->one_in(2) ? 1 : choice->from_to(2, 15));
    const uint32_t spares = volume.spare_distance * 30u + 1;
    uint32_t next = 60;
    while (next < 560) {
        const uint32_t hole = choice->one_in(2) ? choice->from_to(1, 30) : 0;
        if (next + hole + 32 > spares && next < spares + 28) {
            next = spares + 28;
            continue;
        }
        if (hole > 0) volume.runs->push_back({next, hole});
        DiskEntry entry = {.name = "F" + std::to_string(volume.entries.size()), .start = next + hole};
        entry.records = static_cast<uint16_t>(choice->below(20));
        if (choice->one_in(4)) entry.words = static_cast<uint16_t>(choice->from_to(1, 200));
        next += hole + static_cast<uint32_t>((size_t{entry.records} * entry.words * 2 + 255) / 256);
        volume.entries.push_back(entry);
    }
    volume.runs->push_back({next, 600 - std::min(next, 600u)});
    for (size_t i = volume.entries.size() - 1; i > 0; --i)
        std::swap(volume.entries[i], volume.entries[choice->below(static_cast<uint32_t>(i + 1))]);
    return volume;
}

Bytes packed_in_place(const Bytes &before)
{
    const TemporaryFile image(before, ".hpi");
    EXPECT_EQ(image_defrag(image.path()), 0) << error_text();
    return image.bytes();
}

void expect_same_files(const Bytes &before, const Bytes &after)
{
    const StoredVolume packed = stored_disk(after);
    for (const StoredFile &file : stored_disk(before).files) {
        const StoredFile *moved = file_named(packed, file.name);
        ASSERT_NE(moved, nullptr) << file.name;
        Bytes old_content = content_of(before, file);
        Bytes content = content_of(after, *moved);
        // A part of a record stays behind.
        const size_t whole = size_t{file.count} * file.words * 2 / record_bytes * record_bytes;
        old_content.resize(whole);
        content.resize(whole);
        EXPECT_TRUE(content == old_content) << file.name;
    }
}

// What repack_to makes; empty when it fails.
Bytes packed_elsewhere(const Bytes &before)
{
    const TemporaryFile from(before, ".hpi");
    const TemporaryFile to(Bytes{}, ".new");
    MediaDescriptor *md = image_open(from.path(), nullptr, sorted_reading);
    if (md == nullptr) return {};
    const int32_t result = repack_to(md, to.path());
    image_close(md);
    EXPECT_EQ(from.bytes(), before);
    return result == 0 ? to.bytes() : Bytes{};
}

// What both ways make, with all files as they were.
Bytes packed_both_ways(const Bytes &before)
{
    const LogCapture log(0);
    const Bytes packed = packed_elsewhere(before);
    EXPECT_FALSE(packed.empty()) << error_text();
    EXPECT_TRUE(packed == packed_in_place(before));
    expect_same_files(before, packed);
    return packed;
}

}

TEST(RepackTo, MakesWhatPackingInPlaceMakes)
{
    struct Row {
        const char *name;
        Bytes image;
    };
    Bytes trimmed = patterned(disk_with_holes());
    trimmed.resize(95 * record_bytes + 100);
    Bytes longer = patterned(disk_with_holes());
    longer.insert(longer.end(), 1000, 0xAB);
    DiskVolume long_runs = disk_with_holes();
    long_runs.long_runs = true;
    DiskVolume spares_among_files = disk_with_holes();
    spares_among_files.spare_distance = 3;
    spares_among_files.runs = Runs{{60, 3}, {66, 4}, {75, 15}, {98, 15}};
    const Row rows[] = {
        {"holes", patterned(disk_with_holes())},
        {"runs of 8 bytes", patterned(long_runs)},
        {"a long file", patterned(disk_with_long_file())},
        {"an image that ends early", trimmed},
        {"an image with more behind the volume", longer},
        {"spare tables among the files", disk45_image(spares_among_files)},
        {"packed already", packed_in_place(patterned(disk_with_holes()))},
    };
    const LogCapture log(0);
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        packed_both_ways(row.image);
    }
}

TEST(RepackTo, RandomDisks)
{
    const LogCapture log(0);
    RandomChoice choice(45);
    const uint32_t disks = random_steps() / 100;
    for (uint32_t i = 0; i < disks; ++i) {
        packed_both_ways(patterned(random_disk(&choice)));
        ASSERT_FALSE(HasFailure()) << i;
    }
}

// The first file goes behind the spare tables, where the last one isn't in its way; the second one must not go where
// the last one still is.
TEST(RepackTo, FileStaysWholeUntilItHasLeftItsPlace)
{
    DiskVolume volume;
    volume.spare_distance = 2;
    volume.directory_start = 6;
    volume.availability_start = 8;
    volume.availability_end = 12;
    volume.entries = {{.name = "FONE", .start = 45, .records = 10},
                      {.name = "GTWO", .start = 55, .records = 2},
                      {.name = "WWWW", .start = 60, .records = 2}};
    volume.runs = Runs{{62, 4}, {72, 528}};
    const Bytes packed = packed_both_ways(patterned(volume, 40));
    ASSERT_FALSE(HasFailure());
    EXPECT_EQ(file_named(stored_disk(packed), "FONE")->start, 72u);
    EXPECT_EQ(file_named(stored_disk(packed), "WWWW")->start, 60u);
}

// Tables behind the begin of the file area, as no drive has them.
TEST(RepackTo, TablesAmongTheFiles)
{
    DiskVolume volume;
    volume.system_tracks = 1;
    volume.spare_distance = 0;
    volume.data_tracks = 19;
    volume.directory_start = 29;
    volume.availability_start = 31;
    volume.availability_end = 32;
    for (uint16_t i = 0; i < 20; ++i)
        volume.entries.push_back({.name = "F" + std::to_string(i), .start = 40u + 3u * i, .records = 2});
    volume.runs = Runs{{100, 500}};
    packed_both_ways(patterned(volume, 40));
}

// Once: the image, and its tables again.
TEST(RepackTo, EachByteIsWrittenOnce)
{
    const Bytes before = patterned(disk_with_long_file());
    const TemporaryFile from(before, ".hpi");
    const TemporaryFile to(Bytes{}, ".new");
    MediaDescriptor *md = image_open(from.path(), nullptr, sorted_reading);
    ASSERT_NE(md, nullptr);
    uint64_t written = 0;
    {
        const FileFaults calls;
        EXPECT_EQ(repack_to(md, to.path()), 0) << error_text();
        for (const FileAccess &access : calls.accesses) written += access.writing ? access.bytes : 0;
    }
    image_close(md);
    const uint64_t tables = 60 * record_bytes;
    EXPECT_GE(written, before.size());
    EXPECT_LE(written, before.size() + tables);
}

TEST(RepackTo, WhatCannotBePackedIsRefused)
{
    struct Row {
        const char *name;
        Bytes image;
        const char *words;
    };
    DiskVolume full = disk_with_holes();
    full.runs = Runs{};
    DiskVolume damaged = disk_with_holes();
    damaged.entries[1].start = 0;
    const Row rows[] = {
        {"LIF", lif_image(three_files()), "Unsupported format (no free list)"},
        {"no free list", disk45_image(full), "No space left on device (no free list)"},
        {"an entry that is refused", disk45_image(damaged),
         "Unable to read media (directory not read whole, nothing is changed)"},
    };
    const LogCapture log(0);
    for (const Row &row : rows) {
        forget_error();
        EXPECT_TRUE(packed_elsewhere(row.image).empty()) << row.name;
        EXPECT_EQ(error_text(), row.words);
    }
}

TEST(RepackTo, Hazard_K1_EachFailureIsToldAndTheImageStays)
{
    const Bytes before = patterned(disk_with_holes());
    const Bytes packed = packed_in_place(before);
    const TemporaryFile from(before, ".hpi");
    const LogCapture log(0);
    for (const FileFault fault : {FileFault::open, FileFault::seek, FileFault::read, FileFault::write,
                                  FileFault::short_write, FileFault::set_end, FileFault::size}) {
        bool reached = true;
        uint32_t failed = 0;
        for (uint32_t n = 1; reached; ++n) {
            ASSERT_LT(n, 500u);
            const TemporaryFile to(Bytes{}, ".new");
            MediaDescriptor *md = image_open(from.path(), nullptr, sorted_reading);
            ASSERT_NE(md, nullptr);
            int32_t result = 0;
            {
                const FileFaults faults(fault, n);
                result = repack_to(md, to.path());
                reached = faults.reached;
            }
            image_close(md);
            EXPECT_TRUE(result < 0 || to.bytes() == packed) << n;
            EXPECT_TRUE(reached || result == 0) << n;
            failed += result < 0 ? 1u : 0u;
            ASSERT_TRUE(from.bytes() == before) << n;
        }
        EXPECT_GT(failed, 0u) << static_cast<int>(fault);
    }
}

TEST(RepackTo, FailedAllocations)
{
    const Bytes before = patterned(disk_with_holes());
    const Bytes packed = packed_in_place(before);
    const TemporaryFile from(before, ".hpi");
    const LogCapture log(0);
    bool reached = true;
    for (uint32_t n = 1; reached; ++n) {
        ASSERT_LT(n, 500u);
        const TemporaryFile to(Bytes{}, ".new");
        MediaDescriptor *md = image_open(from.path(), nullptr, sorted_reading);
        ASSERT_NE(md, nullptr);
        int32_t result = 0;
        {
            const HeapFaults faults(n);
            result = repack_to(md, to.path());
            reached = faults.reached;
        }
        image_close(md);
        // A list of which a part is missing is read again.
        EXPECT_TRUE(result == 0 ? to.bytes() == packed : reached) << n;
    }
}
