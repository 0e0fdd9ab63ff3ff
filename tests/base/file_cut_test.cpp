// Removing and inserting bytes in the middle of a file.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "base/error.h"
#include "base/file.h"
#include "tests/platform/scratch.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"

namespace
{

using tests::content;
using tests::FileFault;
using tests::FileFaults;
using tests::forget_error;
using tests::Scratch;

constexpr FileHandle void_file = ~FileHandle{0};

std::string bytes_of(size_t count, size_t seed = 0)
{
    std::string text(count, '\0');
    for (size_t at = 0; at < count; ++at) text[at] = static_cast<char>((at + seed) * 131 % 251);
    return text;
}

// A file of its own for each case, and the position afterwards.
class Edited
{
  public:
    explicit Edited(const std::string &text, uint32_t position = 0) : path_(scratch_.file("f", text))
    {
        forget_error();
        EXPECT_EQ(file_open(&file, path_.c_str(), "rb+", 0), 1);
        EXPECT_EQ(file_seek(file, position), 1);
    }
    ~Edited()
    {
        file_close(file);
    }
    Edited(const Edited &) = delete;
    Edited &operator=(const Edited &) = delete;

    std::string text() const
    {
        return content(path_);
    }
    uint32_t position() const
    {
        uint32_t result = 0;
        EXPECT_EQ(file_getposition(file, &result), 0);
        return result;
    }

    FileHandle file = void_file;

  private:
    const Scratch scratch_;
    std::string path_;
};

const struct {
    const char *name;
    uint32_t size;
    uint32_t position;
    uint32_t bytes;
} cases[] = {
    {"nothing", 5000, 100, 0},
    {"in the middle", 5000, 100, 700},
    {"at the start", 5000, 0, 1},
    {"tail of one chunk", 2024, 500, 500},
    {"tail of three chunks", 3172, 50, 50},
    {"tail of a chunk and a byte", 1125, 50, 50},
    {"tail of a byte", 101, 50, 50},
    {"short tail", 300, 100, 20},
    {"more than a chunk", 9000, 1234, 3000},
    {"exactly what remains", 1000, 400, 600},
    {"more than what remains", 1000, 400, 5000},
    {"at the end", 1000, 1000, 10},
    {"empty file", 0, 0, 10},
};

TEST(FileCut, RemovesAndHandsOver)
{
    for (const auto &row : cases) {
        const std::string before = bytes_of(row.size);
        Edited edited(before, row.position);
        const std::string removed = before.substr(row.position, row.bytes);
        std::string buffer(row.bytes + 1, '#');
        EXPECT_EQ(file_cut(edited.file, buffer.data(), row.bytes), static_cast<int32_t>(removed.size())) << row.name;
        EXPECT_TRUE(buffer.compare(0, removed.size(), removed) == 0) << row.name;
        EXPECT_EQ(buffer[row.bytes], '#') << row.name;
        std::string after = before;
        after.erase(row.position, row.bytes);
        EXPECT_TRUE(edited.text() == after) << row.name;
        EXPECT_EQ(edited.position(), row.position) << row.name;
    }
}

TEST(FilePaste, InsertsAndMovesTheTail)
{
    for (const auto &row : cases) {
        const std::string before = bytes_of(row.size);
        const std::string inserted = bytes_of(row.bytes, 77);
        Edited edited(before, row.position);
        EXPECT_EQ(file_paste(edited.file, inserted.data(), row.bytes), static_cast<int32_t>(row.bytes)) << row.name;
        std::string after = before;
        after.insert(row.position, inserted);
        EXPECT_TRUE(edited.text() == after) << row.name;
        EXPECT_EQ(edited.position(), row.position + row.bytes) << row.name;
    }
}

TEST(FileCut, WholeChunksNeedNoRemainder)
{
    Edited edited(bytes_of(3172), 50); // three chunks behind what is cut
    std::string buffer(50, '\0');
    FileFaults calls;
    EXPECT_EQ(file_cut(edited.file, buffer.data(), 50), 50);
    EXPECT_EQ(calls.reads, 4u);
    EXPECT_EQ(calls.writes, 3u);
}

TEST(FilePaste, WholeChunksNeedNoRemainder)
{
    Edited edited(bytes_of(3172), 100);
    FileFaults calls;
    EXPECT_EQ(file_paste(edited.file, "abc", 3), 3);
    EXPECT_EQ(calls.reads, 3u);
    EXPECT_EQ(calls.writes, 4u);
}

TEST(FileCut, ChunksAreRead1024BytesAtATime)
{
    Edited edited(bytes_of(5000), 0);
    std::string buffer(10, '\0');
    FileFaults calls;
    ASSERT_EQ(file_cut(edited.file, buffer.data(), 10), 10);
    for (const tests::FileAccess &access : calls.accesses) EXPECT_LE(access.bytes, 1024u);
}

TEST(FileCut, Hazard_A11_BehindTheEndThereIsNothingToMove)
{
    Edited edited("abc", 10);
    char buffer[4] = "###";
    FileFaults calls;
    EXPECT_EQ(file_cut(edited.file, buffer, 3), 0);
    EXPECT_EQ(calls.writes, 0u);
    EXPECT_STREQ(buffer, "###");
    EXPECT_EQ(edited.text(), std::string("abc\0\0\0\0\0\0\0", 10)); // the file ends at the position
    EXPECT_EQ(edited.position(), 10u);
}

TEST(FilePaste, Hazard_A11_BehindTheEndTheGapIsZero)
{
    Edited edited("abc", 6);
    FileFaults calls;
    EXPECT_EQ(file_paste(edited.file, "XY", 2), 2);
    EXPECT_EQ(calls.reads, 0u);
    EXPECT_EQ(edited.text(), std::string("abc\0\0\0XY", 8));
}

TEST(FileCut, Hazard_A11_MoreBytesThanAnyFileHas)
{
    static char first;
    static const FileCalls *own;
    own = file_calls;
    FileCalls calls;
    calls.read = [](PlatformFile file, void *buffer, uint32_t bytes) { // of the great buffer only what there is
        return own->read(file, bytes > 1024 ? &first : buffer, std::min(bytes, 1u));
    };
    Edited edited("abcdef", 2);
    file_calls = &calls;
    const int32_t result = file_cut(edited.file, &first, 0xffffffff);
    file_calls = own;
    EXPECT_EQ(result, 1);
    EXPECT_EQ(edited.text(), "ab");
}

TEST(FileCut, VoidHandleAndMissingBuffer)
{
    char buffer[4];
    forget_error();
    EXPECT_EQ(file_cut(void_file, buffer, 3), 0);
    EXPECT_EQ(file_paste(void_file, buffer, 3), 0);
    EXPECT_EQ(global_error, 0u);
    Edited edited("abc");
    EXPECT_EQ(file_cut(edited.file, nullptr, 3), -1);
    EXPECT_EQ(global_error, 103u);
    forget_error();
    EXPECT_EQ(file_paste(edited.file, nullptr, 3), -1);
    EXPECT_EQ(global_error, 103u);
    EXPECT_EQ(edited.text(), "abc");
}

struct Kind {
    const char *name;
    FileFault fault;
    uint32_t error;
};

constexpr Kind kinds[] = {
    {"seek", FileFault::seek, 301},
    {"read", FileFault::read, 302},
    {"write", FileFault::write, 303},
    {"short write", FileFault::short_write, 303},
};

// Runs `edit` with the n-th call of each kind failing, for every n; `is_sound` looks at the file that is left.
template <typename Edit, typename IsSound> void fail_each_call(Edit edit, IsSound is_sound)
{
    for (const Kind &kind : kinds) {
        uint32_t nth = 1;
        for (bool reached = true; reached; ++nth) {
            Edited edited(bytes_of(4000), 100);
            FileFaults faults(kind.fault, nth);
            const int32_t result = edit(edited.file);
            reached = faults.reached;
            if (!reached) break;
            const bool last_write_is_short = result == 25; // of 50; the caller sees the count
            if (!last_write_is_short) {
                EXPECT_EQ(result, -1) << kind.name << nth;
                EXPECT_EQ(global_error, kind.error) << kind.name << nth;
            }
            EXPECT_TRUE(is_sound(edited.text())) << kind.name << nth;
        }
        EXPECT_GE(nth, 4u) << kind.name; // the loop has seen several calls of this kind
    }
}

TEST(FileCut, EachFailingCallIsReported)
{
    std::string buffer(50, '\0');
    fail_each_call([&](FileHandle file) { return file_cut(file, buffer.data(), 50); },
                   [](const std::string &text) {
                       return text.size() >= 3950 && text.substr(0, 100) == bytes_of(4000).substr(0, 100);
                   });
}

TEST(FilePaste, EachFailingCallIsReportedAndNoByteIsLost)
{
    const std::string inserted = bytes_of(50, 77);
    fail_each_call([&](FileHandle file) { return file_paste(file, inserted.data(), 50); },
                   [](const std::string &text) {
                       return text.size() >= 4000 && text.substr(0, 100) == bytes_of(4000).substr(0, 100) &&
                              text.find(bytes_of(4000).substr(3980, 12)) != std::string::npos;
                   });
}

TEST(FileCut, ShortReadInTheMiddleIsAReadError)
{
    Edited edited(bytes_of(4000), 100);
    std::string buffer(50, '\0');
    FileFaults faults(FileFault::short_read, 2);
    EXPECT_EQ(file_cut(edited.file, buffer.data(), 50), -1);
    EXPECT_EQ(global_error, 302u);
    EXPECT_TRUE(edited.text() == bytes_of(4000));
}

TEST(FileCut, KeepsSeekErrorForEndOfCut)
{
    const struct {
        const char *name;
        uint32_t bytes;
    } rows[] = {{"in the middle", 50}, {"at the end", 5000}};
    for (const auto &row : rows) {
        Edited edited(bytes_of(4000), 100);
        std::string buffer(row.bytes, '\0');
        FileFaults faults(FileFault::set_end, 1);
        EXPECT_EQ(file_cut(edited.file, buffer.data(), row.bytes), -1) << row.name;
        EXPECT_TRUE(faults.reached) << row.name;
        EXPECT_EQ(global_error, 301u) << row.name;
        EXPECT_STREQ(global_error_info, "") << row.name;
    }
}

} // namespace
