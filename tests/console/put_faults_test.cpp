// Copying to a volume with each call of the system failing in turn: the volume must open afterwards, and each file on
// it must be whole, whatever the copy said of itself.
#include <map>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "console/exit_code.h"
#include "console/put.h"
#include "tests/console/folder.h"
#include "tests/console/program.h"
#include "tests/support/faults.h"
#include "tests/support/medium.h"
#include "tests/support/volume_builder.h"
#include "volume/state.h"

using tests::Bytes;
using tests::FileFault;

namespace
{

using Contents = std::map<std::string, Bytes>; // of the files on a volume, by their names

Contents contents_of(const tests::TemporaryFile &volume)
{
    Contents contents;
    const tests::Medium medium(volume.path());
    if (medium.md == nullptr) {
        ADD_FAILURE() << "the volume doesn't open";
        return contents;
    }
    EXPECT_EQ(medium->state->table_result, 0);
    Bytes image = volume.bytes();
    image.resize(image.size() + 1000 * 256);
    for (const FileInfo *info = medium->root; info != nullptr; info = info->next) {
        const auto start = image.begin() + static_cast<std::ptrdiff_t>(info->location) * 256;
        EXPECT_TRUE(contents.emplace(info->name, Bytes(start, start + static_cast<std::ptrdiff_t>(info->size))).second)
            << info->name;
    }
    return contents;
}

// A run of put over three_files: what it said, and what is on the volume after it.
struct Ended {
    int code;
    std::string errors;
    Contents contents;
};

class Copy
{
  public:
    Copy()
    {
        arguments_.words = {folder_.add("NEW1.BIN", Bytes(1500, '1')), folder_.add("TWO.BIN", Bytes(700, '2')),
                            folder_.add("NEW2.txt", "a line\nanother\n")};
        arguments_.txt = true;
        arguments_.overwrite = true;
    }

    Ended run(FileFault fault, uint32_t nth, bool *ret_reached)
    {
        const tests::TemporaryFile volume(tests::lif_image(tests::three_files()));
        arguments_.medium = volume.path();
        testing::internal::CaptureStderr();
        int code = 0;
        {
            const tests::FileFaults faults(fault, nth);
            code = run_put(arguments_);
            *ret_reached = faults.reached;
        }
        const std::string errors = testing::internal::GetCapturedStderr();
        return {code, errors, contents_of(volume)};
    }

    Ended run_with_heap(uint32_t nth, bool *ret_reached)
    {
        const tests::TemporaryFile volume(tests::lif_image(tests::three_files()));
        arguments_.medium = volume.path();
        testing::internal::CaptureStderr();
        int code = 0;
        {
            const tests::HeapFaults faults(nth);
            code = run_put(arguments_);
            *ret_reached = faults.reached;
            EXPECT_EQ(faults.releases, faults.allocations - (faults.reached ? 1 : 0)) << nth;
        }
        const std::string errors = testing::internal::GetCapturedStderr();
        return {code, errors, contents_of(volume)};
    }

  private:
    tests::TemporaryFolder folder_;
    Arguments arguments_;
};

Bytes padded(Bytes content)
{
    content.resize((content.size() + 255) / 256 * 256);
    return content;
}

const Bytes old_two = padded(Bytes(700, 'b'));

// Whole files only, the old ones all there, and an exit code that goes with that. Returns how many have been copied.
uint32_t check(const Ended &run)
{
    const Contents copies = {{"NEW1", padded(Bytes(1500, '1'))},
                             {"TWO", padded(Bytes(700, '2'))},
                             {"NEW2", padded(tests::lif_ascii({"a line", "another"}))}};
    const Contents kept = {{"ONE", Bytes(256, 'a')}, {"THREE", padded(Bytes(100, 'c'))}};
    uint32_t copied = 0;
    for (const auto &[name, content] : run.contents) {
        const auto copy = copies.find(name);
        if (copy != copies.end() && content == copy->second) {
            copied++;
        } else if (name == "TWO") {
            EXPECT_EQ(content, old_two);
        } else {
            EXPECT_TRUE(kept.count(name) == 1 && kept.at(name) == content) << name << run.errors;
        }
    }
    for (const char *name : {"ONE", "TWO", "THREE"}) EXPECT_EQ(run.contents.count(name), 1U) << name << run.errors;
    if (run.code == exit_done) {
        EXPECT_EQ(copied, 3U) << run.errors;
        EXPECT_EQ(run.errors, "");
    } else {
        EXPECT_GT(tests::error_lines(run.errors), 0U);
    }
    if (run.code == exit_partly) {
        EXPECT_TRUE(copied == 1 || copied == 2) << copied << run.errors;
    }
    return copied;
}

// How the runs ended, by their exit codes.
struct Ends {
    uint32_t done = 0;
    uint32_t partly = 0;
    uint32_t failed = 0;
};

void count(int code, Ends *ends)
{
    if (code == exit_done) ends->done++;
    if (code == exit_partly) ends->partly++;
    if (code == exit_failed) ends->failed++;
}

Ends run_all(FileFault fault)
{
    Copy copy;
    Ends ends;
    bool reached = true;
    for (uint32_t nth = 1; reached; nth++) {
        if (nth > 500) {
            ADD_FAILURE() << "no end of calls";
            break;
        }
        SCOPED_TRACE(nth);
        const Ended run = copy.run(fault, nth, &reached);
        check(run);
        count(run.code, &ends);
        if (!reached) {
            EXPECT_EQ(run.code, exit_done) << run.errors;
        }
    }
    return ends;
}

}

TEST(PutFaults, WithoutAFaultAllIsCopied)
{
    Copy copy;
    bool reached = false;
    const Ended run = copy.run(FileFault::none, 0, &reached);
    EXPECT_EQ(run.code, exit_done) << run.errors;
    EXPECT_EQ(check(run), 3U);
}

TEST(PutFaults, EachFailingWriteLeavesWholeFiles)
{
    const Ends ends = run_all(FileFault::write);
    EXPECT_GT(ends.failed, 0U) << "a directory that couldn't be written";
    EXPECT_GT(ends.partly, 0U) << "a file that couldn't be written";
}

TEST(PutFaults, EachFailingReadLeavesWholeFiles)
{
    const Ends ends = run_all(FileFault::read);
    EXPECT_EQ(ends.failed, 0U) << "what can't be read at once is read record by record";
    EXPECT_GT(ends.partly, 0U) << "a source that couldn't be read";
}

TEST(PutFaults, EachFailingOpenLeavesWholeFiles)
{
    const Ends ends = run_all(FileFault::open);
    EXPECT_GT(ends.failed, 0U);
    EXPECT_GT(ends.partly, 0U);
}

TEST(PutFaults, EachFailingSeekLeavesWholeFiles)
{
    const Ends ends = run_all(FileFault::seek);
    EXPECT_GT(ends.failed + ends.partly, 0U);
}

TEST(PutFaults, EachFailingSizeLeavesWholeFiles)
{
    run_all(FileFault::size);
}

TEST(PutFaults, EachFailingAllocationLeavesWholeFilesAndNothingAllocated)
{
    Copy copy;
    Ends ends;
    bool reached = true;
    for (uint32_t nth = 1; reached; nth++) {
        ASSERT_LT(nth, 500U) << "no end of allocations";
        SCOPED_TRACE(nth);
        const Ended run = copy.run_with_heap(nth, &reached);
        check(run);
        count(run.code, &ends);
    }
    EXPECT_GT(ends.failed, 0U);
    EXPECT_GT(ends.partly, 0U);
    EXPECT_EQ(ends.done, 1U) << "the last run, which needs no more";
}

// A write of which only a half is stored may tear a record of the directory; that must be told, and the volume opens.
TEST(PutFaults, EachShortWriteIsToldAndTheVolumeOpens)
{
    Copy copy;
    bool reached = true;
    for (uint32_t nth = 1; reached; nth++) {
        ASSERT_LT(nth, 500U) << "no end of writes";
        SCOPED_TRACE(nth);
        const Ended run = copy.run(FileFault::short_write, nth, &reached);
        EXPECT_EQ(run.code == exit_done, !reached) << run.errors;
        EXPECT_EQ(tests::error_lines(run.errors) > 0, reached) << run.errors;
        EXPECT_GE(run.contents.size(), 3U);
    }
}
