// Disks and tapes made to do harm: they end in an error or a shorter list, within bounds, and stay as they were.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

#include "base/error.h"
#include "base/output.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "tests/support/system45_builder.h"
#include "volume/allocation.h"
#include "volume/catalogue.h"
#include "volume/catalogue_inner.h"
#include "volume/names.h"
#include "volume/navigate.h"
#include "volume/operations.h"
#include "volume/table.h"

using namespace tests;

namespace
{

struct Hostile {
    std::string what;
    Bytes image;
};

constexpr uint16_t words_to_try[] = {0, 1, 23, 30, 60, 199, 200, 0x7FFF, 0x8000, 0xFFFF};

// Their images end ahead of what the geometry says.
DiskVolume small_disk()
{
    DiskVolume volume = three_disk_files();
    volume.records = 200;
    return volume;
}

// Each word of the system record.
void add_header_words(std::vector<Hostile> &images)
{
    for (size_t offset = 2; offset < 20; offset += 2) {
        for (const uint16_t value : words_to_try) {
            DiskVolume volume = small_disk();
            volume.long_runs = value % 2 != 0;
            Bytes image = disk45_image(volume);
            set_word_at(image, offset, value);
            images.push_back({"word " + std::to_string(offset) + " is " + std::to_string(value), image});
        }
    }
}

void add_runs(std::vector<Hostile> &images)
{
    const Runs rows[] = {{{76, 524}, {76, 524}, {76, 524}},
                         {{76, 100}, {100, 100}, {90, 400}, {0, 600}},
                         {{0, 0xFFFF}, {1, 0xFFFE}, {0xFFFE, 0xFFFE}},
                         {{60, 1}, {61, 1}, {62, 600}, {0xFFFE, 1}},
                         {{599, 1}, {599, 2}, {600, 1}, {601, 0}},
                         {{500, 0}, {500, 0}, {0, 0}}};
    for (const Runs &runs : rows) {
        DiskVolume volume = small_disk();
        volume.runs = runs;
        images.push_back({"run at " + std::to_string(runs[0].first), disk45_image(volume)});
        volume.long_runs = true;
        volume.runs->emplace_back(0xFFFFFFF0, 0x20);
        volume.runs->emplace_back(0xFFFEFFFF, 0xFFFFFFFF);
        volume.runs->emplace_back(0x7FFFFFFF, 0x80000001);
        images.push_back({"long run at " + std::to_string(runs[0].first), disk45_image(volume)});
    }
}

void add_entries(std::vector<Hostile> &images)
{
    for (const uint32_t start : {1u, 22u, 30u, 59u, 60u, 599u, 600u, 65535u, 65536u, 0x7FFFFFu}) {
        for (const uint16_t count : {uint16_t{0}, uint16_t{1}, uint16_t{600}, uint16_t{0xFFFF}}) {
            DiskVolume volume = small_disk();
            volume.entries.push_back({.name = "START", .start = start, .records = count});
            volume.entries.push_back({.name = "LENGTH", .start = start, .records = count, .words = 0xFFFF});
            volume.entries.push_back({.name = "NONE", .start = start, .records = count, .words = 0});
            images.push_back({"entry at " + std::to_string(start), disk45_image(volume)});
        }
    }
    for (uint32_t start = 0; start < 1024; start += 93) {
        for (const uint16_t words : {uint16_t{0}, uint16_t{128}, uint16_t{0xFFFF}}) {
            TapeVolume volume = three_tape_files();
            volume.entries.push_back({.name = "START", .start = start, .words = words});
            volume.entries.push_back({.name = "LONG", .start = start, .records = 0xFFFF, .words = words});
            images.push_back({"tape entry at " + std::to_string(start), tape45_image(volume)});
        }
    }
}

void add_texts(std::vector<Hostile> &images)
{
    DiskVolume volume = three_disk_files();
    volume.magic = 0x0600;
    volume.label = "%n%s%n%s";
    TapeVolume tape;
    for (const std::string &name : {std::string("%n%n%n"), std::string("A\0B\0C\0", 6), std::string("\0ABCDE", 6),
                                    std::string("\x1B[2J\r\n"), std::string("../../"), std::string("      "),
                                    std::string("\xFF"
                                                "BCDEF"),
                                    std::string("\xFF\xFE"), std::string(6, '\x80')}) {
        volume.entries.push_back({.name = name});
        tape.entries.push_back({.name = name});
    }
    images.push_back({"texts on a disk", disk45_image(volume)});
    images.push_back({"texts on a tape", tape45_image(tape)});
}

// Tables that end nowhere: no end mark, and a length that the image doesn't have.
void add_endless_tables(std::vector<Hostile> &images)
{
    for (const uint16_t magic : {uint16_t{0x0500}, uint16_t{0}}) {
        for (const uint8_t fill : {uint8_t{0}, uint8_t{1}, uint8_t{'A'}, uint8_t{0x80}}) {
            DiskVolume volume;
            volume.magic = magic;
            volume.tracks = 0xFFFF;
            volume.availability_end = 0xFFFF;
            volume.records = 400;
            Bytes image = disk45_image(volume);
            std::fill(image.begin() + 256, image.end(), fill);
            images.push_back({"all bytes are " + std::to_string(fill), image});
            if (magic == 0) continue; // the 9825's has a fixed place
            volume.availability_start = 0xFFFF;
            image = disk45_image(volume);
            std::fill(image.begin() + 256, image.end(), fill);
            images.push_back({"a directory of bytes " + std::to_string(fill), image});
        }
    }
    TapeVolume tape;
    tape.end_mark = false;
    images.push_back({"a tape of zeros", tape45_image(tape)});
    Bytes image = tape45_image(tape);
    std::fill(image.begin() + 260, image.end(), uint8_t{'A'});
    images.push_back({"a tape of letters", image});
}

void add_cuts(std::vector<Hostile> &images)
{
    for (const Bytes &whole :
         {disk45_image(three_disk_files()), tape45_image(three_tape_files()), disk45_image(disk_of_9825())}) {
        for (const size_t size : {2u, 12u, 20u, 40u, 256u, 258u, 300u, 512u, 768u, 1279u, 6000u, 8000u, 15000u})
            images.push_back({"cut to " + std::to_string(size),
                              Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size))});
    }
}

const std::vector<Hostile> &hostile_images()
{
    static const std::vector<Hostile> images = [] {
        std::vector<Hostile> list;
        add_header_words(list);
        add_runs(list);
        add_entries(list);
        add_texts(list);
        add_endless_tables(list);
        add_cuts(list);
        return list;
    }();
    return images;
}

void print_line(void *, const MediaDescriptor *md, const FileInfo *info)
{
    print_list_entry(md, info, 0);
}

// Everything that only looks.
void look_at(MediaDescriptor *md)
{
    print_media_info(md);
    print_list_header(md);
    visit_matching(md, nullptr, print_line, nullptr);
    output_flush();
    uint32_t searches = 0;
    for (const FileInfo *info = md->root; info != nullptr && searches < 20; info = info->next, ++searches) {
        char name[VISIBLE_NAME_SIZE];
        compose_filename(md, info, name);
        image_find_typed_file(md, md->root, name, 0, 0);
    }
}

bool inside(uint64_t record, uint32_t start, uint32_t length)
{
    return record >= start && record < uint64_t{start} + length;
}

// Only tables may have changed.
void expect_only_tables_changed(const Bytes &before, const Bytes &after, const MediaDescriptor &md,
                                const std::string &what)
{
    ASSERT_GE(after.size(), before.size()) << what;
    ASSERT_LE(after.size(), (before.size() + record_bytes - 1) / record_bytes * record_bytes) << what;
    for (size_t i = 0; i < before.size(); ++i) {
        if (before[i] == after[i]) continue;
        const uint64_t record = i / record_bytes;
        const bool in_table =
            inside(record, md.dir_start, md.dir_size) || inside(record, md.spare_dir_start, md.dir_size) ||
            inside(record, md.alloc_start, md.alloc_size) || inside(record, md.spare_alloc_start, md.alloc_size);
        ASSERT_TRUE(in_table && record != 0) << what << ", byte " << i;
    }
}

std::vector<std::string> names_in(const TemporaryFile &file)
{
    const Medium medium(file.path());
    return medium ? names(medium.md) : std::vector<std::string>{};
}

constexpr uint16_t ways_to_open[] = {OPEN_READ_VOLUME, OPEN_READ_VOLUME | OPEN_CHECK | OPEN_SORT,
                                     OPEN_READ_VOLUME | OPEN_REPAIR | OPEN_CHECK,
                                     OPEN_READ_VOLUME | OPEN_READ_ONLY | OPEN_RECURSIVE};

}

TEST(System45Hostile, OpensOrIsRefusedWithinBoundsAndStaysAsItWas)
{
    const OutputCapture output;
    for (const Hostile &hostile : hostile_images()) {
        const TemporaryFile file(hostile.image);
        for (const uint16_t flags : ways_to_open) {
            HeapFaults heap;
            const FileFaults files;
            forget_error();
            {
                const Medium medium(file.path(), flags);
                if (medium)
                    look_at(medium.md);
                else
                    EXPECT_NE(global_error, 0u) << hostile.what;
            }
            EXPECT_LE(heap.bytes, 200 * 1024 + 24 * hostile.image.size()) << hostile.what;
            EXPECT_EQ(heap.releases, heap.allocations) << hostile.what;
            EXPECT_LE(files.bytes_read, 256 * 1024 + 4 * hostile.image.size()) << hostile.what;
        }
        EXPECT_EQ(file.bytes(), hostile.image) << hostile.what;
    }
}

TEST(System45Hostile, Hazard_D10_ARewriteTouchesTablesOrNothingAndLosesNoFile)
{
    const OutputCapture output;
    for (const Hostile &hostile : hostile_images()) {
        const TemporaryFile file(hostile.image);
        const Medium medium(file.path());
        if (!medium) continue;
        const std::vector<std::string> old_names = names(medium.md);
        for (const int32_t use_spare : {0, 1}) {
            update_file_table(medium.md, use_spare);
            update_alloc_table(medium.md, use_spare);
        }
        expect_only_tables_changed(hostile.image, file.bytes(), *medium.md, hostile.what);
        EXPECT_EQ(names_in(file), old_names) << hostile.what;
    }
}

TEST(System45Hostile, Hazard_D8_SpaceIsNeverHandedOutInsideTablesOrOverALiveFile)
{
    const OutputCapture output;
    for (const Hostile &hostile : hostile_images()) {
        const TemporaryFile file(hostile.image);
        const Medium medium(file.path());
        if (!medium) continue;
        for (const uint32_t size : {1u, 7u, 100u, 1u, 0u, 500u}) {
            const uint32_t position = image_allocate(medium.md, size);
            if (position == 0) continue;
            for (uint64_t record = position; record < uint64_t{position} + size; ++record) {
                EXPECT_FALSE(inside(record, medium->dir_start, medium->dir_size)) << hostile.what;
                EXPECT_FALSE(inside(record, medium->spare_dir_start, medium->dir_size)) << hostile.what;
                EXPECT_FALSE(inside(record, medium->alloc_start, medium->alloc_size)) << hostile.what;
                EXPECT_FALSE(inside(record, medium->spare_alloc_start, medium->alloc_size)) << hostile.what;
                for (const FileInfo *info = medium->root; info != nullptr; info = info->next)
                    EXPECT_FALSE(inside(record, info->location, (info->size + 255) / 256))
                        << hostile.what << ' ' << info->name;
            }
        }
    }
}

TEST(System45Hostile, DeletingEveryFileEnds)
{
    const OutputCapture output;
    for (const Hostile &hostile : hostile_images()) {
        const TemporaryFile file(hostile.image);
        const Medium medium(file.path());
        if (!medium) continue;
        uint32_t deleted = 0;
        while (medium->root != nullptr && deleted++ < 100) image_delete_file(medium.md, medium->root, 0);
        uint64_t last = 0;
        for (const AllocEntry *run = medium->alloc_list; run != nullptr; run = run->next) {
            EXPECT_GE(run->location, last) << hostile.what;
            last = run->location;
        }
    }
}

TEST(System45Hostile, Hazard_F8_ATableOfHalfAMillionEntriesIsReadInReasonableTime)
{
    DiskVolume volume = disk_of_9825();
    volume.availability_end = 0xFFFF;
    volume.records = 8192;
    const TemporaryFile file(disk45_image(volume));
    const OutputCapture output;
    const auto start = std::chrono::steady_clock::now();
    const Medium medium(file.path());
    ASSERT_TRUE(medium);
    EXPECT_EQ(runs_of(*medium.md).size(), (8192u - 23u) * 64u);
    EXPECT_EQ(image_allocate(medium.md, 5), 0u);     // the table reaches over all of the disk
    EXPECT_EQ(update_alloc_table(medium.md, 0), -1); // and over its files
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}
