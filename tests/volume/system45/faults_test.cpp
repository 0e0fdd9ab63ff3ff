// Reading and writing the tables with the n-th access failing, for every n.
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "tests/support/system45_builder.h"
#include "volume/allocation.h"
#include "volume/table.h"

using namespace tests;

namespace
{

struct Kind {
    const char *name;
    std::function<Bytes()> image;
};

DiskVolume many_files()
{
    DiskVolume volume;
    volume.records = 400;
    volume.availability_start = 5;
    volume.availability_end = 8;
    volume.entries = numbered_files(40);
    volume.runs = Runs{};
    for (uint32_t i = 0; i < 80; ++i) volume.runs->emplace_back(200 + 2 * i, 1);
    return volume;
}

Bytes tape_with_many_files()
{
    TapeVolume volume;
    for (const DiskEntry &entry : numbered_files(30)) volume.entries.push_back({.name = entry.name});
    return tape45_image(volume);
}

Bytes disk_of_9825_with_many_files()
{
    DiskVolume volume = many_files();
    volume.magic = 0;
    volume.tracks = 67;
    volume.availability_start = 23;
    volume.availability_end = 25;
    return disk45_image(volume);
}

const Kind kinds[] = {{"disk", [] { return disk45_image(many_files()); }},
                      {"tape", tape_with_many_files},
                      {"9825", disk_of_9825_with_many_files}};

int32_t read_all(MediaDescriptor *md)
{
    if (get_media_info(md) < 0) return -1;
    if (get_file_table(md, nullptr, nullptr, 0, 0, 0, 1, 0, 0) < 0) return -1;
    return get_alloc_table(md, 0);
}

// What lies outside all tables.
Bytes without_tables(Bytes image, const MediaDescriptor &md)
{
    const auto clear = [&image](uint32_t start, uint32_t length) {
        for (size_t i = size_t{start} * record_bytes; i < (size_t{start} + length) * record_bytes; ++i) image[i] = 0;
    };
    clear(md.dir_start, md.dir_size);
    clear(md.spare_dir_start, md.dir_size);
    clear(md.alloc_start, md.alloc_size);
    clear(md.spare_alloc_start, md.alloc_size);
    return image;
}

uint32_t error_of(FileFault kind)
{
    if (kind == FileFault::seek) return 301;
    return kind == FileFault::read ? 302 : 303;
}

void expect_reading_bears(const Kind &kind, FileFault fault)
{
    bool reached = true;
    for (uint32_t n = 1; reached; ++n) {
        ASSERT_LT(n, 500u);
        HandMedium hand(kind.image()); // each record is read by itself
        const Bytes before = hand.file.bytes();
        HeapFaults heap;
        forget_error();
        {
            const FileFaults faults(fault, n);
            const int32_t result = read_all(&hand.md);
            reached = faults.reached;
            EXPECT_EQ(result, reached ? -1 : 0) << kind.name << ' ' << n;
        }
        if (reached) {
            EXPECT_EQ(global_error, error_of(fault)) << kind.name << ' ' << n;
        }
        EXPECT_EQ(hand.file.bytes(), before);
    }
}

// A main table that was cut off leaves its spare copy whole, and the other way round.
void expect_one_copy_is_whole(const OpenVolume &open, const std::vector<std::string> &old_names, const char *kind)
{
    const OutputCapture output;
    const Medium again(open.file.path());
    ASSERT_TRUE(again) << kind;
    EXPECT_EQ(names(again.md).size(), old_names.size()) << kind;
    if (again->format != FORMAT_DISK45) return;
    EXPECT_EQ(get_file_table(again.md, nullptr, nullptr, 0, 1, 0, 1, 0, 0), 0);
    EXPECT_EQ(names(again.md).size(), old_names.size()) << kind;
}

void expect_writing_bears(const Kind &kind, FileFault fault)
{
    bool reached = true;
    for (uint32_t n = 1; reached; ++n) {
        ASSERT_LT(n, 500u);
        const OutputCapture output;
        const OpenVolume open(kind.image());
        ASSERT_TRUE(open.md != nullptr);
        const Bytes before = open.file.bytes();
        const std::vector<std::string> old_names = names(open.md);
        for (FileInfo *info = open.md->root; info != nullptr; info = info->next) info->name[0] = 'G';
        forget_error();
        int32_t result = 0;
        {
            const FileFaults faults(fault, n);
            result = update_all_tables(open.md);
            reached = faults.reached;
        }
        EXPECT_EQ(result, reached ? -1 : 0) << kind.name << ' ' << n;
        if (reached) {
            EXPECT_EQ(global_error, error_of(fault)) << kind.name << ' ' << n;
        }
        EXPECT_EQ(without_tables(open.file.bytes(), *open.md), without_tables(before, *open.md)) << n;
        expect_one_copy_is_whole(open, old_names, kind.name);
    }
}

}

TEST(System45Faults, EveryFailingReadOrSeekInReadingTheTablesIsAnError)
{
    const OutputCapture output;
    for (const Kind &kind : kinds)
        for (const FileFault fault : {FileFault::read, FileFault::seek}) expect_reading_bears(kind, fault);
}

TEST(System45Faults, EveryFailingReadOrSeekAtOpeningStillOpensOrIsAnError)
{
    const OutputCapture output;
    for (const Kind &kind : kinds) {
        const TemporaryFile file(kind.image());
        for (const FileFault fault : {FileFault::read, FileFault::seek, FileFault::short_read}) {
            bool reached = true;
            for (uint32_t n = 1; reached; ++n) {
                ASSERT_LT(n, 500u);
                const FileFaults faults(fault, n, true);
                forget_error();
                const Medium medium(file.path());
                reached = faults.reached;
                if (!medium) {
                    EXPECT_NE(global_error, 0u) << kind.name << ' ' << n;
                }
            }
        }
        EXPECT_EQ(file.bytes(), kind.image()) << kind.name;
    }
}

TEST(System45Faults, EveryFailingAllocationInReadingTheTablesIsOutOfMemory)
{
    const OutputCapture output;
    for (const Kind &kind : kinds) {
        bool reached = true;
        for (uint32_t n = 1; reached; ++n) {
            ASSERT_LT(n, 1000u);
            HandMedium hand(kind.image());
            HeapFaults faults(n);
            forget_error();
            const int32_t result = read_all(&hand.md);
            reached = faults.reached;
            EXPECT_EQ(result, reached ? -1 : 0) << kind.name << ' ' << n;
            if (reached) {
                EXPECT_EQ(global_error, 105u) << kind.name << ' ' << n;
            }
        }
    }
}

TEST(System45Faults, EveryFailingWriteOrSeekIsAnErrorAndOneCopyStaysWhole)
{
    for (const Kind &kind : kinds)
        for (const FileFault fault : {FileFault::write, FileFault::short_write, FileFault::seek})
            expect_writing_bears(kind, fault);
}

TEST(System45Faults, Hazard_D17_RecordsAreWrittenInAscendingOrder)
{
    const OutputCapture output;
    for (const Kind &kind : kinds) {
        const OpenVolume open(kind.image());
        ASSERT_TRUE(open.md != nullptr);
        const FileFaults counter;
        EXPECT_EQ(update_all_tables(open.md), 0) << error_text();
        uint64_t last = 0;
        for (const FileAccess &access : counter.accesses) {
            if (!access.writing) continue;
            EXPECT_GT(access.position, last) << kind.name;
            EXPECT_EQ(access.bytes, record_bytes);
            last = access.position;
        }
        EXPECT_GT(last, 0u);
    }
}
