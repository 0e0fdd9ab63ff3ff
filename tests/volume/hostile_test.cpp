// Images made to do harm: they end in an error or a shorter list, within bounds, and stay as they were.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "tests/support/medium.h"
#include "volume/allocation.h"
#include "volume/catalogue.h"
#include "volume/catalogue_inner.h"
#include "volume/names.h"
#include "volume/navigate.h"
#include "volume/table.h"

using namespace tests;

namespace
{

struct Hostile {
    std::string what;
    Bytes image;
};

LifVolume usual_volume()
{
    LifVolume volume;
    volume.entries = {{.name = "ONE"}, {.name = "TWO", .type = 0xE961}, {.name = "THREE", .type = 0xE848}};
    return volume;
}

Bytes with_header_number(size_t offset, uint32_t value)
{
    Bytes image = lif_image(usual_volume());
    set_dword_at(image, offset, value);
    return image;
}

void add_header_numbers(std::vector<Hostile> &images)
{
    const struct {
        const char *name;
        size_t offset;
    } fields[] = {
        {"directory start", 8}, {"directory length", 16}, {"tracks", 24}, {"surfaces", 28}, {"records a track", 32}};
    for (const auto &[name, offset] : fields)
        for (const uint32_t value : {0u, 1u, 3u, 159u, 160u, 161u, 65536u, 0x00FFFFFFu, 0x01000000u, 0x7FFFFFFFu,
                                     0x80000000u, 0xFFFFFFFEu, 0xFFFFFFFFu})
            images.push_back({std::string(name) + ' ' + std::to_string(value), with_header_number(offset, value)});
}

void add_entry_numbers(std::vector<Hostile> &images)
{
    for (const uint16_t type : {uint16_t{0}, uint16_t{1}, uint16_t{0xE961}, uint16_t{0xE848}})
        for (const uint32_t value : {1u, 2u, 3u, 160u, 0x00FFFFFFu, 0x01000000u, 0x80000000u, 0xFFFFFFFFu}) {
            LifVolume volume = usual_volume();
            volume.entries.push_back(
                {.name = "START", .type = type, .start = value, .length = 2, .implementation = {}});
            volume.entries.push_back(
                {.name = "LENGTH", .type = type, .start = 20, .length = value, .implementation = {}});
            volume.entries.push_back({.name = "BOTH",
                                      .type = type,
                                      .start = value,
                                      .length = value,
                                      .implementation = {0x80, 1, 1, 1, 0xFF, 0xFF}});
            images.push_back(
                {"entry of type " + std::to_string(type) + " at " + std::to_string(value), lif_image(volume)});
        }
}

void add_texts(std::vector<Hostile> &images)
{
    LifVolume volume = usual_volume();
    volume.label = "%n%s%n";
    volume.entries.push_back({.name = "%n%n%n%n%n"});
    volume.entries.push_back({.name = std::string("A\0B\0C\0D\0E\0", 10)});
    volume.entries.push_back({.name = std::string("\0AAAAAAAAA", 10)});
    volume.entries.push_back({.name = "__________", .type = 0xEA32});
    volume.entries.push_back({.name = "\x1B[2J\r\n\t \x7F"});
    volume.entries.push_back({.name = "../../etc"});
    volume.entries.push_back({.name = "          "});
    volume.entries.push_back({.name = "     X    ", .date = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}});
    images.push_back({"texts", lif_image(volume)});
    volume.label = std::string("\x00\x01\x07\x1B\x0D\xFF", 6);
    volume.date = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
    images.push_back({"label of control characters", lif_image(volume)});
}

void add_shapes(std::vector<Hostile> &images)
{
    const Bytes whole = lif_image(usual_volume());
    for (const size_t size : {size_t{0}, size_t{1}, size_t{2}, size_t{41}, size_t{255}, size_t{256}, size_t{257},
                              size_t{512}, size_t{513}, size_t{640}, size_t{1023}})
        images.push_back({"cut to " + std::to_string(size),
                          Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size))});
    images.push_back({"all bytes set", Bytes(65536, 0xFF)});
    images.push_back({"all bytes $80", Bytes(65536, 0x80)});
    Bytes endless(65536, 0x41); // entries to the end of the image and, says the header, far beyond
    std::copy(whole.begin(), whole.begin() + 256, endless.begin());
    set_dword_at(endless, 16, 0xFFFFFFFF);
    images.push_back({"endless directory", endless});
    LifVolume geometry = usual_volume();
    geometry.tracks = geometry.surfaces = geometry.records_per_track = 65536;
    geometry.records = 160;
    images.push_back({"65536 * 65536 * 65536", lif_image(geometry)});
}

std::vector<Hostile> hostile_images()
{
    std::vector<Hostile> images;
    add_header_numbers(images);
    add_entry_numbers(images);
    add_texts(images);
    add_shapes(images);
    return images;
}

// Everything that only looks.
void look_at(MediaDescriptor *md)
{
    print_media_info(md);
    print_list_header(md);
    for (const FileInfo *info = md->root; info != nullptr; info = info->next) {
        char name[VISIBLE_NAME_SIZE];
        compose_filename(md, info, name);
        print_list_entry(md, info, 0);
        image_find_typed_file(md, md->root, name, 0, 0);
    }
    const char *filespec[] = {"*", nullptr};
    match_count(md, filespec);
    FileInfo *list = nullptr;
    image_change_directory(md, nullptr, "SUB/..", nullptr, &list);
}

// The directory may be rewritten where it stands; nothing else of the image may change.
void expect_only_the_directory_changed(const Bytes &before, const Bytes &after, const MediaDescriptor *md,
                                       const std::string &what)
{
    const size_t whole_records = (before.size() + record_bytes - 1) / record_bytes * record_bytes;
    ASSERT_TRUE(after.size() == before.size() || after.size() == whole_records) << what;
    const uint64_t from = uint64_t{md->dir_start} * record_bytes;
    const uint64_t to = from + uint64_t{md->dir_size} * record_bytes;
    for (size_t i = 0; i < before.size(); ++i) {
        const bool outside = i < from || i >= to;
        ASSERT_TRUE(!outside || before[i] == after[i]) << what << ", byte " << i;
    }
}

constexpr uint16_t ways_to_open[] = {OPEN_READ_VOLUME,
                                     OPEN_READ_VOLUME | OPEN_CHECK,
                                     OPEN_READ_VOLUME | OPEN_SORT,
                                     OPEN_READ_VOLUME | OPEN_REPAIR | OPEN_CHECK,
                                     OPEN_READ_VOLUME | OPEN_READ_ONLY | OPEN_RECURSIVE,
                                     0};

}

TEST(HostileImage, OpensOrIsRefusedWithinBoundsAndStaysAsItWas)
{
    const OutputCapture output;
    for (const Hostile &hostile : hostile_images()) {
        const TemporaryFile file(hostile.image);
        for (const uint16_t flags : ways_to_open) {
            HeapFaults heap;
            FileFaults files;
            forget_error();
            {
                const Medium medium(file.path(), flags);
                if (medium)
                    look_at(medium.md);
                else
                    EXPECT_NE(global_error, 0u) << hostile.what;
            }
            EXPECT_LE(heap.bytes, 200 * 1024 + 16 * hostile.image.size()) << hostile.what;
            EXPECT_EQ(heap.releases, heap.allocations) << hostile.what;
            EXPECT_LE(files.bytes_read, 256 * 1024 + 4 * hostile.image.size()) << hostile.what;
            EXPECT_LE(files.seeks, 2000u + hostile.image.size() / 64) << hostile.what;
        }
        EXPECT_EQ(file.bytes(), hostile.image) << hostile.what;
    }
}

TEST(HostileImage, Hazard_D10_ARewriteTouchesTheDirectoryOrNothing)
{
    for (const Hostile &hostile : hostile_images()) {
        const TemporaryFile file(hostile.image);
        const Medium medium(file.path());
        if (!medium) continue;
        const int32_t result = update_file_table(medium.md, 0);
        if (result == 0)
            expect_only_the_directory_changed(hostile.image, file.bytes(), medium.md, hostile.what);
        else
            EXPECT_EQ(file.bytes(), hostile.image) << hostile.what;
        EXPECT_EQ(update_alloc_table(medium.md, 0), 0);
    }
}

TEST(HostileImage, SpaceIsNeverHandedOutInsideTheTablesOrOverALiveFile)
{
    for (const Hostile &hostile : hostile_images()) {
        const TemporaryFile file(hostile.image);
        const Medium medium(file.path());
        if (!medium) continue;
        const uint64_t position = image_allocate(medium.md, 1);
        if (position == 0) continue;
        EXPECT_GE(position, uint64_t{medium->dir_start} + medium->dir_size) << hostile.what;
        for (const FileInfo *info = medium->root; info != nullptr; info = info->next) {
            const uint64_t bytes = uint64_t{info->records} * info->record_len * 2; // what the catalogue shows of it
            EXPECT_TRUE(position < info->location || position >= info->location + (bytes + 255) / 256)
                << hostile.what << ' ' << info->name;
        }
    }
}
