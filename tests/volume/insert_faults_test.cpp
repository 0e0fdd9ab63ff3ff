// Copying onto a medium with the n-th call failing, for every n: what the caller gets, and what the volume still holds.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "base/error.h"
#include "base/file_inner.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "tests/volume/insert_support.h"
#include "volume/allocation.h"
#include "volume/table.h"

using namespace tests;
using namespace tests::insertion;

namespace
{

using Names = std::vector<std::string>;

struct Way { // in which a file goes in
    const char *name;
    const char *source; // its name
    uint16_t flags;
    uint32_t headers;
};

constexpr Way ways[] = {
    {"raw", "NEW.BAS8x", 0, 0},
    {"raw over an old file", "TWO.BAS8x", INSERT_OVERWRITE, 0},
    {"raw with a header looked for", "NEW.BAS8x", 0, 1},
    {"ASCII", "NEW.ASCII", INSERT_CONVERT | INSERT_FORCE, 0},
    {"DATA", "NEW.DATA", INSERT_CONVERT | INSERT_FORCE, 0},
    {"Pascal TEXT", "NEW.TEXT", INSERT_CONVERT | INSERT_FORCE, 0},
    {"HP 75 TEXT", "NEW.TXT75", INSERT_CONVERT | INSERT_FORCE, 0},
    {"ASCII over an old file", "TWO.ASCII", INSERT_OVERWRITE | INSERT_CONVERT | INSERT_FORCE, 0},
};

std::string text()
{
    std::string lines;
    for (int i = 1; i <= 300; ++i) lines += std::to_string(i * 10) + " A line of the source with some words\n";
    return lines;
}

LifVolume fault_volume()
{
    LifVolume volume = roomy_volume(400);
    for (size_t i = 0; i < 3; ++i) {
        const size_t bytes = volume.entries[i].content.size();
        volume.entries[i].content = numbered(bytes, static_cast<uint32_t>(i) + 7);
    }
    return volume;
}

// What has to be there after a reopening: the files that nobody named, with their bytes.
void expect_others(const TemporaryFile &file, bool two_may_be_gone, const std::string &what)
{
    const Medium again(file.path());
    ASSERT_TRUE(again) << what;
    const LifVolume volume = fault_volume();
    const Bytes image = file.bytes();
    const uint32_t starts[] = {5, 6, 9};
    for (size_t i = 0; i < 3; ++i) {
        const LifEntry &old = volume.entries[i];
        const FileInfo *entry = entry_named(again.md, old.name);
        if (i == 1 && two_may_be_gone) continue;
        ASSERT_NE(entry, nullptr) << what << ": " << old.name;
        EXPECT_EQ(entry->location, starts[i]) << what;
        EXPECT_EQ(entry->size, in_records(old.content).size()) << what;
        EXPECT_TRUE(part_of(image, starts[i] * 256, old.content.size()) == old.content) << what << ": " << old.name;
    }
}

struct Outcome {
    bool reached;
    Added added;
};

using Attempt = std::function<Outcome(MediaDescriptor *md, const std::string &source)>;

// One call with a fault in it, then the tables written, then a reopening. False when the fault wasn't reached.
bool survives(const Way &way, const std::string &what, const Words &errors, const Attempt &attempt)
{
    const Scratch folder;
    const std::string source = folder.file(way.source, text());
    const TemporaryFolder temporary;
    const OpenVolume open(fault_volume());
    open.md->use_file_headers = way.headers;
    const Bytes before = open.file.bytes();
    const Outcome outcome = attempt(open.md, source);
    const Added &added = outcome.added;
    const bool over = (way.flags & INSERT_OVERWRITE) != 0;
    EXPECT_EQ(temporary.files(), 0u) << what;
    const Bytes after = open.file.bytes();
    EXPECT_TRUE(part_of(after, 0, 10 * 256) == part_of(before, 0, 10 * 256)) << what;
    expect_others(open.file, false, what); // the directory is the caller's to write
    if (outcome.reached) {
        EXPECT_EQ(added.result, -1) << what;
        EXPECT_TRUE(std::find(errors.begin(), errors.end(), added.error) != errors.end())
            << what << ": " << added.error;
    } else {
        EXPECT_EQ(added.result, 10) << what << ": " << added.error;
        EXPECT_GT(added.info.size, 0u) << what;
    }
    EXPECT_EQ(content(source), text()) << what;
    const Names in_memory = names(open.md);
    EXPECT_EQ(update_file_table(open.md, 0), 0) << what;
    expect_others(open.file, over, what + ", table written");
    const Medium again(open.file.path());
    EXPECT_EQ(names(again.md), in_memory) << what;
    return outcome.reached;
}

void each_file_call(FileFault kind, const char *kind_name, const Words &errors)
{
    for (const Way &way : ways) {
        uint32_t n = 0;
        bool reached = true;
        while (reached) {
            ASSERT_LT(++n, 600u) << way.name;
            const std::string what = std::string(way.name) + ", " + kind_name + " " + std::to_string(n);
            reached = survives(way, what, errors, [&](MediaDescriptor *md, const std::string &source) {
                const FileFaults faults(kind, n);
                Added added = add(md, source, way.flags);
                return Outcome{faults.reached, std::move(added)};
            });
            if (testing::Test::HasFailure()) return; // one is enough
        }
        // Some call of the kind there is, but plain bytes are read and written without going anywhere.
        const bool goes_nowhere = kind == FileFault::seek && way.headers == 0 && (way.flags & INSERT_CONVERT) == 0;
        EXPECT_GE(n, goes_nowhere ? 1u : 2u) << way.name;
    }
}

// The system says nothing of an open file, for the life of an object.
class WithoutFacts
{
  public:
    WithoutFacts() : old_(file_calls), calls_(*file_calls)
    {
        calls_.facts = [](PlatformFile, FileFacts *) { return false; };
        calls_.size = [](PlatformFile, uint64_t *) { return false; };
        file_calls = &calls_;
    }
    ~WithoutFacts()
    {
        file_calls = old_;
    }
    WithoutFacts(const WithoutFacts &) = delete;
    WithoutFacts &operator=(const WithoutFacts &) = delete;

  private:
    const FileCalls *old_;
    FileCalls calls_;
};

}

TEST(InsertFaults, EveryOpenThatFails)
{
    each_file_call(FileFault::open, "open", Words{300, 306});
}

TEST(InsertFaults, EveryReadThatFails)
{
    each_file_call(FileFault::read, "read", Words{300, 302});
}

TEST(InsertFaults, EveryWriteThatFails)
{
    each_file_call(FileFault::write, "write", Words{303});
}

TEST(InsertFaults, EveryWriteThatIsCutShort)
{
    each_file_call(FileFault::short_write, "short write", Words{303});
}

TEST(InsertFaults, EverySeekThatFails)
{
    each_file_call(FileFault::seek, "seek", Words{301, 303}); // 303: a head that can't be put in front of a text
}

TEST(InsertFaults, EveryAllocationThatFails)
{
    for (const Way &way : ways) {
        uint32_t n = 0;
        bool reached = true;
        while (reached) {
            ASSERT_LT(++n, 100u) << way.name;
            const std::string what = std::string(way.name) + ", allocation " + std::to_string(n);
            reached = survives(way, what, Words{105}, [&](MediaDescriptor *md, const std::string &source) {
                const HeapFaults faults(n);
                Added added = add(md, source, way.flags);
                return Outcome{faults.reached, std::move(added)};
            });
            if (HasFailure()) return;
        }
        EXPECT_GE(n, 2u) << way.name;
    }
}

TEST(InsertFaults, ASizeThatCannotBeLearnedMakesNoFile)
{
    for (const Way &way : ways) {
        const Scratch folder;
        const std::string source = folder.file(way.source, text());
        const TemporaryFolder temporary;
        const OpenVolume open(fault_volume());
        const Bytes before = open.file.bytes();
        Added added;
        {
            const WithoutFacts calls;
            added = add(open.md, source, way.flags);
        }
        EXPECT_EQ(added.result, -1) << way.name;
        EXPECT_EQ(added.error, 211u) << way.name; // as one of 4 GiB and more
        EXPECT_TRUE(open.file.bytes() == before) << way.name;
        EXPECT_EQ(temporary.files(), 0u) << way.name;
    }
}

TEST(InsertFaults, AFailingReadOfATextMakesNothing)
{
    const Scratch folder;
    const std::string source = folder.file("NEW.ASCII", text());
    const TemporaryFolder temporary;
    const OpenVolume open(fault_volume());
    const Bytes before = open.file.bytes();
    Added added;
    {
        const FileFaults faults(FileFault::read, 1);
        added = add(open.md, source, INSERT_CONVERT | INSERT_FORCE);
        EXPECT_TRUE(faults.reached);
    }
    EXPECT_EQ(added.result, -1);
    EXPECT_EQ(added.error, 302u);
    EXPECT_EQ(names(open.md), (Names{"ONE", "TWO", "THREE"}));
    EXPECT_TRUE(open.file.bytes() == before);
    EXPECT_EQ(temporary.files(), 0u);
}

TEST(InsertFaults, AFailingReadOfTheSourceLeavesTheEntry)
{
    const Scratch folder;
    const std::string source = folder.file("NEW.BAS8x", text());
    const OpenVolume open(fault_volume());
    Added added;
    {
        const FileFaults faults(FileFault::read, 1);
        added = add(open.md, source);
        EXPECT_TRUE(faults.reached);
    }
    EXPECT_EQ(added.result, -1);
    EXPECT_EQ(added.error, 302u);
    EXPECT_EQ(added.detail, "file \"" + source + "\"");
    EXPECT_EQ(names(open.md).back(), "NEW");
}

TEST(InsertFaults, AFailingSeekBackOverWhatIsNoHeaderLeavesTheEntry)
{
    const Scratch folder;
    const std::string source = folder.file("NEW.BAS8x", text());
    uint32_t with_error_301 = 0;
    for (uint32_t n = 1; n < 20; ++n) {
        const OpenVolume open(fault_volume());
        open.md->use_file_headers = 1;
        const FileFaults faults(FileFault::seek, n);
        const Added added = add(open.md, source);
        if (!faults.reached) break;
        EXPECT_EQ(added.result, -1) << n;
        EXPECT_EQ(added.error, 301u) << n;
        EXPECT_EQ(names(open.md).back(), "NEW") << n;
        with_error_301++;
    }
    EXPECT_GE(with_error_301, 1u);
}

TEST(InsertFaults, ADiscKeepsItsFreeListSoundWhateverFails)
{
    for (const FileFault kind : {FileFault::open, FileFault::read, FileFault::write, FileFault::seek}) {
        for (uint32_t n = 1;; ++n) {
            ASSERT_LT(n, 300u);
            const Scratch folder;
            const std::string source = folder.file("NEW", text());
            const auto disc = disc_with({{30, 10}, {100, 90}});
            Added added;
            bool reached = false;
            {
                const FileFaults faults(kind, n);
                added = add(&disc->md, source, INSERT_CONVERT | INSERT_FORCE);
                reached = faults.reached;
            }
            uint32_t free = 0;
            for (const FreeRun &run : runs_of(disc->md)) free += run.second;
            uint32_t used = 0;
            for (const FileInfo *info = disc->md.root; info != nullptr; info = info->next)
                used += (info->size + 255) / 256;
            EXPECT_EQ(free + used, 100u) << n;
            EXPECT_EQ(added.result, reached ? -1 : 100) << n;
            if (!reached) break;
        }
    }
}

TEST(InsertFaults, ADiscLosesNoRoomWhenTheEntryCannotBeMade)
{
    for (uint32_t n = 1;; ++n) {
        ASSERT_LT(n, 50u);
        const Scratch folder;
        const std::string source = folder.file("NEW", text());
        const auto disc = disc_with({{30, 10}, {100, 90}});
        const HeapFaults faults(n);
        const Added added = add(&disc->md, source);
        if (!faults.reached) break;
        EXPECT_EQ(added.result, -1) << n;
        EXPECT_EQ(added.error, 105u) << n;
        if (disc->md.root == nullptr) {
            EXPECT_EQ(runs_of(disc->md), (Runs{{30, 10}, {100, 90}})) << n;
        }
    }
}
