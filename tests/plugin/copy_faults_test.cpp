// Copies and moves with their n-th access to a file failing, for every n, and with the n-th allocation refused: what
// the host is told, and that nothing is lost.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>

#include "plugin/plugin.h"
#include "plugin/state.h"
#include "tests/plugin/copy_host.h"
#include "tests/support/faults.h"
#include "volume/access.h"

using namespace tests;

namespace
{

using Names = std::vector<std::string>;

constexpr uint32_t most_accesses = 400;
const std::string local_text = "first line\r\n" + std::string(400, 'y') + "\r\nlast line\r\n";

struct Copy {
    const char *name;
    bool outward;
    bool converted;
    const char *visible; // of the file on the medium, behind or ahead of the copy
    const char *stored;
    const char *local;
    int32_t flags;
};

const Copy copies_out[] = {
    {"out", true, false, "SORT.CODE", "SORTC_____", "SORT.CODE", 0},
    {"out over another", true, false, "SORT.CODE", "SORTC_____", "SORT.CODE", COPY_OVERWRITE},
    {"move out", true, false, "SORT.CODE", "SORTC_____", "SORT.CODE", COPY_MOVE},
    {"text out", true, true, "README.ASCII", "README", "README.ASCII", 0},
    {"move text out", true, true, "README.ASCII", "README", "README.ASCII", COPY_MOVE},
};

const Copy copies_in[] = {
    {"in", false, false, "NEW.PROG", "NEW", "NEW.PROG", 0},
    {"move in", false, false, "NEW.PROG", "NEW", "NEW.PROG", COPY_MOVE},
    {"move in over another", false, false, "SORT.CODE", "SORTC_____", "SORT.CODE", COPY_MOVE | COPY_OVERWRITE},
    {"text in", false, true, "NEW.ASCII", "NEW", "NEW.ASCII.txt", 0},
    {"move text in", false, true, "NEW.TEXT", "NEWT______", "NEW.TEXT.txt", COPY_MOVE},
};

bool has(const Names &names, const std::string &name)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

// The volume without the file that is copied: what must never change.
void expect_other_files_kept(const CopyHost &host, const Copy &copy, const Names &names)
{
    const Bytes image = host.image();
    for (const StoredEntry &entry : stored_entries(host.before)) {
        if (entry.name == copy.stored) continue;
        EXPECT_TRUE(has(names, entry.name)) << entry.name;
        EXPECT_EQ(stored_content(image, entry), stored_content(host.before, entry)) << entry.name;
    }
}

struct Outcome {
    Bytes local;  // what a copy out made, or a copy in had
    Bytes stored; // what stands on the medium
};

int32_t run(const Copy &copy)
{
    return copy.outward ? get_file(copy.visible, copy.local, copy.flags) : put_file(copy.local, copy.flags);
}

std::string written_name(const Copy &copy)
{
    return std::string(copy.local) + (copy.outward && copy.converted ? ".txt" : "");
}

Bytes local_bytes(const Copy &copy)
{
    const std::string name = written_name(copy);
    return exists(name) ? read_file(name) : Bytes();
}

void prepare(const Copy &copy)
{
    plugin.medium->use_file_conversion = copy.converted ? 1 : 0;
    if (!copy.outward) write_text(copy.local, local_text);
    if (copy.outward && (copy.flags & COPY_OVERWRITE) != 0) write_text(copy.local, "old");
}

// What there is when nothing fails.
Outcome whole(const Copy &copy)
{
    const CopyHost host;
    prepare(copy);
    const Bytes stored = host.content(copy.stored);
    EXPECT_EQ(run(copy), FILE_OK) << copy.name;
    if (copy.outward) return {local_bytes(copy), stored};
    return {bytes_of(local_text), host.content(copy.stored)};
}

// Whatever failed: a whole copy or the whole original is there, and the result is not better than that.
void expect_nothing_lost(const CopyHost &host, const Copy &copy, const Outcome &wanted, int32_t result)
{
    end_operation();
    const Names names = stored_names(host.image());
    const std::vector<StoredEntry> entries = stored_entries(host.image());
    const auto shown = std::count_if(entries.begin(), entries.end(), [](const auto &entry) { return entry.type != 0; });
    EXPECT_EQ(names_after_reopening().size(), static_cast<size_t>(shown));
    expect_other_files_kept(host, copy, names);
    const bool on_medium = has(names, copy.stored) && host.content(copy.stored) == wanted.stored;
    const bool on_host = local_bytes(copy) == wanted.local;
    EXPECT_TRUE(on_medium || on_host);
    if (result != FILE_OK) {
        EXPECT_EQ(result, FILE_READ_FAILED);
        EXPECT_FALSE(host.host.messages.empty());
    } else if (copy.outward) {
        EXPECT_TRUE(on_host || copy.converted) << "a short text is no failure, but keeps the original";
        EXPECT_TRUE(on_medium || (copy.flags & COPY_MOVE) != 0);
    } else {
        EXPECT_TRUE(on_medium);
        EXPECT_EQ(exists(copy.local), (copy.flags & COPY_MOVE) == 0);
    }
}

// False when there was no n-th access.
bool fail_access(const Copy &copy, const Outcome &wanted, FileFault fault, uint32_t n, bool onward)
{
    SCOPED_TRACE(std::string(copy.name) + ", fault " + std::to_string(static_cast<int>(fault)) + ", access " +
                 std::to_string(n) + (onward ? " onward" : ""));
    const CopyHost host;
    prepare(copy);
    int32_t result = 0;
    bool reached = false;
    refresh_medium(plugin.medium); // what was read ahead would need no reading
    {
        const FileFaults faults(fault, n, onward);
        result = run(copy);
        reached = faults.reached;
    }
    EXPECT_TRUE(reached || result == FILE_OK);
    expect_nothing_lost(host, copy, wanted, result);
    return reached;
}

void fail_each_access(const Copy &copy, FileFault fault, bool onward)
{
    const Outcome wanted = whole(copy);
    uint32_t n = 1;
    while (n < most_accesses && fail_access(copy, wanted, fault, n, onward)) n++;
    EXPECT_GT(n, 1u) << copy.name;
    EXPECT_LT(n, most_accesses) << copy.name;
}

bool refuse_memory(const Copy &copy, const Outcome &wanted, uint32_t n)
{
    SCOPED_TRACE(std::string(copy.name) + ", allocation " + std::to_string(n));
    const CopyHost host;
    prepare(copy);
    int32_t result = 0;
    bool reached = false;
    {
        const HeapFaults faults(n);
        result = run(copy);
        reached = faults.reached;
    }
    EXPECT_EQ(result, reached ? FILE_READ_FAILED : FILE_OK);
    EXPECT_EQ(host.host.messages, reached ? Names{"Out of memory"} : Names{});
    expect_nothing_lost(host, copy, wanted, result);
    return reached;
}

void refuse_each_allocation(const Copy &copy)
{
    const Outcome wanted = whole(copy);
    uint32_t n = 1;
    while (n < most_accesses && refuse_memory(copy, wanted, n)) n++;
    EXPECT_GT(n, 1u) << copy.name;
    EXPECT_LT(n, most_accesses) << copy.name;
}

}

TEST(CopyFaults, FailedReadsOutwardLoseNothing)
{
    for (const Copy &copy : copies_out) {
        fail_each_access(copy, FileFault::read, false);
        fail_each_access(copy, FileFault::read, true);
    }
}

TEST(CopyFaults, FailedWritesOutwardLoseNothing)
{
    for (const Copy &copy : copies_out) {
        fail_each_access(copy, FileFault::write, false);
        fail_each_access(copy, FileFault::write, true);
        fail_each_access(copy, FileFault::short_write, false);
    }
}

TEST(CopyFaults, FailedSeeksAndOpeningsOutwardLoseNothing)
{
    for (const Copy &copy : copies_out) {
        fail_each_access(copy, FileFault::seek, true);
        fail_each_access(copy, FileFault::open, false);
    }
}

TEST(CopyFaults, FailedReadsInwardLoseNothing)
{
    for (const Copy &copy : copies_in) {
        fail_each_access(copy, FileFault::read, false);
        fail_each_access(copy, FileFault::read, true);
    }
}

TEST(CopyFaults, FailedWritesInwardLoseNothing)
{
    for (const Copy &copy : copies_in) {
        fail_each_access(copy, FileFault::write, false);
        fail_each_access(copy, FileFault::write, true);
        fail_each_access(copy, FileFault::short_write, false);
    }
}

TEST(CopyFaults, FailedSeeksAndOpeningsInwardLoseNothing)
{
    for (const Copy &copy : copies_in) {
        fail_each_access(copy, FileFault::seek, true);
        fail_each_access(copy, FileFault::open, false);
    }
}

TEST(CopyFaults, OutOfMemoryIsToldAndLosesNothing)
{
    for (const Copy &copy : copies_out) refuse_each_allocation(copy);
    for (const Copy &copy : copies_in) refuse_each_allocation(copy);
}
