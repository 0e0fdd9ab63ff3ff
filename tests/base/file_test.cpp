// Opening, positions, reading and writing, records.
#include "base/file.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <string>

#include "base/error.h"
#include "base/file_inner.h"
#include "tests/platform/scratch.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"

namespace
{

using tests::content;
using tests::error_text;
using tests::FileFault;
using tests::FileFaults;
using tests::forget_error;
using tests::Scratch;

constexpr FileHandle void_file = ~FileHandle{0};

class FileLayer : public testing::Test
{
  protected:
    FileLayer()
    {
        forget_error();
    }
    ~FileLayer() override
    {
        file_close(file);
    }

    void open(std::string_view text, const char *flags = "rb+")
    {
        path = scratch.file("f", text);
        ASSERT_EQ(file_open(&file, path.c_str(), flags, 0), 1);
    }

    const Scratch scratch;
    std::string path;
    FileHandle file = void_file;
    std::array<char, 1024> buffer = {};
};

TEST_F(FileLayer, OpensAsTheFlagsSay)
{
    const struct {
        const char *flags;
        bool needs_the_file;
        const char *kept; // of an existing file holding "old"
        int32_t read;     // result of reading 1 byte
        int32_t written;  // of writing 1 byte
        const char *after;
    } rows[] = {
        {"r", true, "old", 1, -1, "old"},  {"rb", true, "old", 1, -1, "old"},  {"rb+", true, "old", 1, 1, "oXd"},
        {"w", false, "", -1, 1, "X"},      {"wb+", false, "", 0, 1, "X"},      {"rw", false, "", -1, 1, "X"},
        {"wr+", false, "", 0, 1, "X"},     {"+", false, "old", 1, 1, "oXd"},   {"ab+", false, "old", 0, 1, "oldX"},
        {"ra", true, "old", 0, -1, "old"}, {"r+a", true, "old", 0, 1, "oldX"}, {"x+y", false, "old", 1, 1, "oXd"},
    };
    for (const auto &row : rows) {
        const std::string old = scratch.file("old", "old");
        const std::string missing = scratch.path(std::string("new") + row.flags);
        ASSERT_EQ(file_open(&file, old.c_str(), row.flags, 0), 1) << row.flags;
        EXPECT_EQ(content(old), row.kept) << row.flags;
        EXPECT_EQ(file_read(file, buffer.data(), 1), row.read) << row.flags;
        EXPECT_EQ(file_write(file, "X", 1), row.written) << row.flags;
        file_close(file);
        EXPECT_EQ(content(old), row.after) << row.flags;
        EXPECT_EQ(file_open(&file, missing.c_str(), row.flags, 0), row.needs_the_file ? 0 : 1) << row.flags;
        EXPECT_EQ(tests::exists(missing), !row.needs_the_file) << row.flags;
        file_close(file);
        file = void_file;
    }
}

TEST_F(FileLayer, OpeningFailsWithTheSystemsWords)
{
    file = 12345;
    EXPECT_EQ(file_open(&file, scratch.path("none").c_str(), "rb", 0), 0);
    EXPECT_EQ(file, void_file);
    EXPECT_EQ(global_error, 300u);
    platform_set_last_error(2); // no such file, on both systems
    char words[256];
    get_win_error(words, sizeof(words));
    EXPECT_EQ(error_text(), std::string("Can't open file (") + words + ")");
    EXPECT_EQ(file_open(&file, scratch.folder().c_str(), "rb", 0), 0);
    EXPECT_EQ(file_open(&file, "", "wb", 0), 0);
}

TEST_F(FileLayer, Hazard_M1_OpeningAnEndlessNameFailsWithAShortDetail)
{
    const std::string name(70000, 'x');
    EXPECT_EQ(file_open(&file, name.c_str(), "rb", 0), 0);
    EXPECT_EQ(global_error, 300u);
    EXPECT_GT(strlen(global_error_info), 0u);
    EXPECT_LT(strlen(global_error_info), 256u);
}

TEST_F(FileLayer, FailedSeekToTheEndClosesAgain)
{
    static int closed;
    static const FileCalls *own;
    closed = 0;
    own = file_calls;
    FileCalls calls;
    calls.seek = [](PlatformFile, int64_t, SeekFrom) -> int64_t {
        platform_set_last_error(5);
        return -1;
    };
    calls.close = [](PlatformFile handle) {
        ++closed;
        platform_close(handle);
        platform_set_last_error(2);
    };
    file_calls = &calls;
    const int32_t result = file_open(&file, scratch.file("f", "abc").c_str(), "rb+a", 0);
    file_calls = own;
    EXPECT_EQ(result, 0);
    EXPECT_EQ(file, void_file);
    EXPECT_EQ(closed, 1);
    platform_set_last_error(5);
    EXPECT_EQ(global_error, 300u);
    EXPECT_STREQ(global_error_info, last_error());
}

TEST_F(FileLayer, WritethroughGoesWithWAlone)
{
    static std::string asked;
    const FileCalls *own = file_calls;
    FileCalls calls;
    calls.open = [](PlatformFile *ret_file, const char *name, bool reading, bool writing, OpenMode mode, bool through) {
        asked += through ? '1' : '0';
        return platform_open(ret_file, name, reading, writing, mode, through);
    };
    asked.clear();
    file_calls = &calls;
    for (const char *flags : {"wb", "wb+", "rb+", "+"}) {
        EXPECT_EQ(file_open(&file, scratch.path("f").c_str(), flags, 1), 1) << flags;
        file_close(file);
        EXPECT_EQ(file_open(&file, scratch.path("f").c_str(), flags, 0), 1) << flags;
        file_close(file);
    }
    file = void_file;
    file_calls = own;
    EXPECT_EQ(asked, "10100000");
}

TEST_F(FileLayer, MissingPointersAreError103)
{
    open("abc");
    const auto missing = [](int32_t result) {
        const uint32_t number = global_error;
        forget_error();
        return std::pair(result, number);
    };
    FileHandle other = void_file;
    EXPECT_EQ(missing(file_open(nullptr, "f", "rb", 0)), std::pair(0, 103u));
    EXPECT_EQ(missing(file_open(&other, nullptr, "rb", 0)), std::pair(0, 103u));
    EXPECT_EQ(missing(file_open(&other, "f", nullptr, 0)), std::pair(0, 103u));
    EXPECT_EQ(missing(file_read(file, nullptr, 1)), std::pair(0, 103u));
    EXPECT_EQ(missing(file_read(void_file, nullptr, 1)), std::pair(0, 103u));
    EXPECT_EQ(missing(file_write(file, nullptr, 1)), std::pair(-1, 103u));
    EXPECT_EQ(missing(file_write(void_file, nullptr, 1)), std::pair(-1, 103u));
    EXPECT_EQ(missing(file_getposition(file, nullptr)), std::pair(-1, 103u));
    EXPECT_EQ(missing(file_readrecord(file, 0, 0, nullptr)), std::pair(-1, 103u));
    EXPECT_EQ(missing(file_writerecord(file, 0, 0, nullptr)), std::pair(-1, 103u));
    EXPECT_EQ(content(path), "abc");
    EXPECT_EQ(file_write(file, nullptr, 0), -1);
    EXPECT_EQ(error_text(), "Invalid parameter (NULL pointer)");
}

TEST_F(FileLayer, VoidHandleDoesNothing)
{
    uint32_t position = 99;
    EXPECT_EQ(file_is_valid(void_file), 0);
    EXPECT_EQ(file_seek(void_file, 5), 0);
    EXPECT_EQ(file_prepare(void_file, 5), -1);
    EXPECT_EQ(file_read(void_file, buffer.data(), 5), 0);
    EXPECT_EQ(file_write(void_file, "abc", 3), 0);
    EXPECT_EQ(file_getposition(void_file, &position), 0);
    EXPECT_EQ(position, 0u);
    EXPECT_EQ(file_sync(void_file), 0);
    EXPECT_EQ(file_readrecord(void_file, 1, 0, buffer.data()), 0);
    EXPECT_EQ(file_writerecord(void_file, 1, 0, buffer.data()), 0);
    EXPECT_EQ(file_getsize(void_file), 0xffffffffu);
    file_close(void_file);
    EXPECT_EQ(global_error, 0u);
}

TEST_F(FileLayer, WellKnownHandles)
{
    EXPECT_EQ(file_void(), void_file);
    EXPECT_EQ(FileVoid, void_file);
    EXPECT_EQ(file_stdin(), Stdin);
    EXPECT_EQ(file_stdout(), Stdout);
    EXPECT_EQ(file_stderr(), Stderr);
    EXPECT_EQ(Stdout, platform_standard_file(StandardFile::output));
    EXPECT_EQ(file_is_valid(Stdout), 1);
    EXPECT_EQ(file_is_valid(0), 1);
}

TEST_F(FileLayer, StandardHandlesStayOpen)
{
    const struct {
        const char *name;
        FileHandle *known;
    } rows[] = {{"Stdin", &Stdin}, {"Stdout", &Stdout}, {"Stderr", &Stderr}};
    for (const auto &row : rows) {
        open("abc");
        const FileHandle own = *row.known;
        *row.known = file;
        file_close(file);
        *row.known = own;
        EXPECT_EQ(file_write(file, "X", 1), 1) << row.name;
        file_close(file);
        EXPECT_EQ(file_write(file, "X", 1), -1) << row.name;
        file = void_file;
    }
}

TEST_F(FileLayer, SeeksToAPositionAndToTheEnd)
{
    open("0123456789");
    uint32_t position = 0;
    EXPECT_EQ(file_seek(file, 4), 1);
    EXPECT_EQ(file_getposition(file, &position), 0);
    EXPECT_EQ(position, 4u);
    EXPECT_EQ(file_seek(file, 0xffffffff), 1);
    EXPECT_EQ(file_getposition(file, &position), 0);
    EXPECT_EQ(position, 10u);
    EXPECT_EQ(file_seek(file, 0xfffffffe), 1);
    EXPECT_EQ(file_getposition(file, &position), 0);
    EXPECT_EQ(position, 0xfffffffeu);
}

TEST_F(FileLayer, PreparesASizeAndGoesToTheStart)
{
    open("0123456789");
    file_seek(file, 7);
    EXPECT_EQ(file_prepare(file, 4), 1);
    EXPECT_EQ(file_read(file, buffer.data(), 10), 4);
    EXPECT_EQ(file_prepare(file, 6), 1);
    EXPECT_EQ(content(path), std::string("0123\0\0", 6));
    EXPECT_EQ(file_prepare(file, 0), 1);
    EXPECT_EQ(content(path), "");
    EXPECT_EQ(file_prepare(file, 0xffffffff), 1);
    EXPECT_EQ(file_getsize(file), 0xffffffffu);
}

TEST_F(FileLayer, ReadsAndWritesAtThePosition)
{
    open("0123456789");
    EXPECT_EQ(file_read(file, buffer.data(), 3), 3);
    EXPECT_EQ(file_write(file, "abc", 3), 3);
    EXPECT_EQ(file_read(file, buffer.data() + 3, 100), 4);
    EXPECT_EQ(file_read(file, buffer.data(), 100), 0);
    EXPECT_EQ(std::string(buffer.data(), 7), "0126789");
    EXPECT_EQ(file_write(file, "", 0), 0);
    EXPECT_EQ(file_sync(file), 0);
    EXPECT_EQ(content(path), "012abc6789");
    EXPECT_EQ(global_error, 0u);
}

TEST_F(FileLayer, SizeIsItsLow32Bits)
{
    open("abc");
    EXPECT_EQ(file_getsize(file), 3u);
    std::filesystem::resize_file(path, 0x140000005);
    uint64_t bytes = 0;
    EXPECT_EQ(file_getsize(file), 0x40000005u);
    EXPECT_TRUE(file_size_in_bytes(file, &bytes));
    EXPECT_EQ(bytes, 0x140000005u);
    EXPECT_FALSE(file_size_in_bytes(void_file, &bytes));
    EXPECT_FALSE(file_size_in_bytes(0, &bytes));
    EXPECT_EQ(global_error, 0u);
}

TEST_F(FileLayer, EachFailingCallHasItsError)
{
    open("0123456789");
    const auto failing = [&](FileFault fault, uint32_t nth, auto call) {
        FileFaults faults(fault, nth);
        forget_error();
        const int64_t result = call();
        EXPECT_TRUE(faults.reached);
        EXPECT_STREQ(global_error_info, "");
        return std::pair(result, global_error);
    };
    using Outcome = std::pair<int64_t, uint32_t>;
    uint32_t position = 0;
    const auto record = [&] { return file_readrecord(file, 0, 4, buffer.data()); };
    const auto put = [&] { return file_writerecord(file, 0, 4, "abcd"); };
    EXPECT_EQ(failing(FileFault::seek, 1, [&] { return file_seek(file, 3); }), Outcome(0, 301));
    EXPECT_EQ(failing(FileFault::seek, 1, [&] { return file_seek(file, ~0u); }), Outcome(0, 301));
    EXPECT_EQ(failing(FileFault::seek, 1, [&] { return file_prepare(file, 3); }), Outcome(0, 301));
    EXPECT_EQ(failing(FileFault::set_end, 1, [&] { return file_prepare(file, 3); }), Outcome(0, 309));
    EXPECT_EQ(failing(FileFault::seek, 2, [&] { return file_prepare(file, 10); }), Outcome(0, 301));
    EXPECT_EQ(failing(FileFault::seek, 1, [&] { return file_getposition(file, &position); }), Outcome(-1, 301));
    EXPECT_EQ(failing(FileFault::read, 1, [&] { return file_read(file, buffer.data(), 3); }), Outcome(-1, 302));
    EXPECT_EQ(failing(FileFault::write, 1, [&] { return file_write(file, "abc", 3); }), Outcome(-1, 303));
    EXPECT_EQ(failing(FileFault::seek, 1, record), Outcome(-1, 301));
    EXPECT_EQ(failing(FileFault::read, 1, record), Outcome(-1, 302));
    EXPECT_EQ(failing(FileFault::seek, 1, put), Outcome(-1, 301));
    EXPECT_EQ(failing(FileFault::write, 1, put), Outcome(-1, 303));
    EXPECT_EQ(failing(FileFault::size, 1, [&] { return file_getsize(file); }), Outcome(0xffffffff, 0));
}

TEST_F(FileLayer, FailedFlushIsError308)
{
    const FileCalls *own = file_calls;
    FileCalls calls;
    calls.sync = [](PlatformFile) { return false; };
    file_calls = &calls;
    open("abc");
    EXPECT_EQ(file_sync(file), -1);
    file_calls = own;
    EXPECT_EQ(global_error, 308u);
    EXPECT_STREQ(global_error_info, "");
}

TEST_F(FileLayer, ShortWriteTellsItsCount)
{
    open("");
    FileFaults faults(FileFault::short_write, 1);
    EXPECT_EQ(file_write(file, "abcdef", 6), 3);
    EXPECT_EQ(global_error, 0u);
    EXPECT_EQ(content(path), "abc");
}

TEST_F(FileLayer, WritesAtAPositionWhereverItStands)
{
    open("0123456789");
    ASSERT_EQ(file_seek(file, 8), 1);
    EXPECT_EQ(file_write_at(file, 2, "abc", 3), 3);
    EXPECT_EQ(file_write_at(file, 12, "zz", 2), 2);
    EXPECT_EQ(content(path), std::string("01abc56789\0\0zz", 14));
    EXPECT_EQ(global_error, 0u);
}

TEST_F(FileLayer, WritingAtAPositionCountsForThoseWhoKeepBytes)
{
    open("0123456789");
    const uint64_t before = file_generation;
    EXPECT_EQ(file_write_at(file, 0, "a", 1), 1);
    EXPECT_EQ(file_generation, before + 1);
}

TEST_F(FileLayer, FailedWriteAtAPositionIsError303)
{
    open("0123456789");
    const FileFaults faults(FileFault::write, 1);
    EXPECT_EQ(file_write_at(file, 2, "abc", 3), -1);
    EXPECT_EQ(error_text(), "File write error - check write protection");
    EXPECT_EQ(content(path), "0123456789");
}

TEST_F(FileLayer, FactsComeWithTheOpenFile)
{
    path = scratch.file("f", "0123456789");
    FileFacts facts;
    ASSERT_TRUE(file_open_with_facts(&file, path.c_str(), &facts));
    EXPECT_TRUE(facts.plain);
    EXPECT_EQ(facts.bytes, 10u);
    FileFacts again;
    ASSERT_TRUE(file_calls->facts(file, &again));
    EXPECT_EQ(again.identity, facts.identity);
    EXPECT_EQ(again.written, facts.written);
    EXPECT_EQ(file_read(file, buffer.data(), 4), 4);
    EXPECT_EQ(std::string(buffer.data(), 4), "0123");
}

TEST_F(FileLayer, NoFactsOfWhatIsNotThere)
{
    FileFacts facts;
    EXPECT_FALSE(file_open_with_facts(&file, scratch.path("none").c_str(), &facts));
    EXPECT_EQ(file, void_file);
    EXPECT_EQ(global_error, 300u);
    EXPECT_FALSE(file_open_with_facts(&file, scratch.path(".").c_str(), &facts)); // a directory
    EXPECT_EQ(global_error, 300u);
}

TEST_F(FileLayer, RequestBeyondWhatTheResultCanSayIsCut)
{
    static uint32_t asked;
    const FileCalls *own = file_calls;
    FileCalls calls;
    calls.read = [](PlatformFile, void *, uint32_t bytes) -> int64_t { return asked = bytes; };
    calls.write = [](PlatformFile, const void *, uint32_t bytes) -> int64_t { return asked = bytes; };
    file_calls = &calls;
    const int32_t read = file_read(0, buffer.data(), 0xffffffff);
    const int32_t written = file_write(0, buffer.data(), 0x80000000);
    file_calls = own;
    EXPECT_EQ(read, INT32_MAX);
    EXPECT_EQ(written, INT32_MAX);
    EXPECT_EQ(asked, uint32_t{INT32_MAX});
}

TEST_F(FileLayer, RecordsHave256BytesUnlessSaid)
{
    std::string text;
    for (char letter = 'a'; letter < 'e'; ++letter) text += std::string(256, letter);
    open(text);
    for (const int32_t size : {0, -1, INT32_MIN, 256}) {
        EXPECT_EQ(file_readrecord(file, 2, size, buffer.data()), 256) << size;
        EXPECT_EQ(std::string(buffer.data(), 256), std::string(256, 'c')) << size;
    }
    EXPECT_EQ(file_readrecord(file, 10, 100, buffer.data()), 24); // up to the end, no error
    EXPECT_EQ(file_readrecord(file, 11, 100, buffer.data()), 0);
    EXPECT_EQ(global_error, 0u);
    const std::string record(256, 'X');
    EXPECT_EQ(file_writerecord(file, 1, 0, record.data()), 0);
    EXPECT_EQ(file_writerecord(file, 1, 3, "YYY"), 0);
    EXPECT_EQ(content(path).substr(0, 8), "aaaYYYaa");
    EXPECT_EQ(content(path).substr(256, 256), record);
    EXPECT_EQ(content(path).size(), 1024u);
}

TEST_F(FileLayer, Hazard_A3_RecordPositionHas32Bits)
{
    open(std::string(256, 'a') + std::string(256, 'b'));
    EXPECT_EQ(file_readrecord(file, 0x1000001, 0, buffer.data()), 256);
    EXPECT_EQ(buffer[0], 'b');
    EXPECT_EQ(file_writerecord(file, 0x1000000, 0, std::string(256, 'X').data()), 0);
    EXPECT_EQ(content(path), std::string(256, 'X') + std::string(256, 'b'));
    EXPECT_EQ(file_readrecord(file, 0xffffff, 0, buffer.data()), 0); // just below 4 GiB
}

TEST_F(FileLayer, Hazard_A5_RecordAtAllOnesIsNotTheEnd)
{
    open("abcdef");
    const uint32_t record = 0x55555555; // times 3 is all ones
    EXPECT_EQ(file_writerecord(file, record, 3, "XYZ"), 0);
    uint64_t bytes = 0;
    EXPECT_TRUE(file_size_in_bytes(file, &bytes));
    EXPECT_EQ(bytes, 0x100000002u);
    EXPECT_EQ(file_readrecord(file, record, 3, buffer.data()), 3);
    EXPECT_EQ(std::string(buffer.data(), 3), "XYZ");
    EXPECT_EQ(file_readrecord(file, 0, 6, buffer.data()), 6);
    EXPECT_EQ(std::string(buffer.data(), 6), "abcdef");
}

TEST_F(FileLayer, Hazard_A10_ShortRecordWriteIsAFailure)
{
    open("");
    FileFaults faults(FileFault::short_write, 1);
    EXPECT_EQ(file_writerecord(file, 0, 0, buffer.data()), -1);
    EXPECT_TRUE(faults.reached);
    EXPECT_EQ(global_error, 303u);
}

TEST_F(FileLayer, FullDeviceIsAWriteError)
{
    const char *const device = "/dev/full";
    if (!tests::exists(device)) GTEST_SKIP() << "there is no full device";
    ASSERT_EQ(file_open(&file, device, "wb", 0), 1);
    EXPECT_EQ(file_write(file, "abc", 3), -1);
    EXPECT_EQ(error_text(), "File write error - check write protection");
    forget_error();
    EXPECT_EQ(file_writerecord(file, 0, 0, buffer.data()), -1);
    EXPECT_EQ(global_error, 303u);
}

TEST_F(FileLayer, GenerationCountsWhatChangesAFile)
{
    open(std::string(2000, 'a'));
    const auto changes = [](auto call) {
        const uint64_t before = file_generation;
        call();
        return file_generation != before;
    };
    EXPECT_TRUE(changes([&] { file_write(file, "x", 1); }));
    EXPECT_TRUE(changes([&] { file_writerecord(file, 0, 1, "x"); }));
    EXPECT_TRUE(changes([&] { file_writechar(file, 'x'); }));
    EXPECT_TRUE(changes([&] { file_printf(file, "%d", 1); }));
    EXPECT_TRUE(changes([&] { file_prepare(file, 1000); }));
    EXPECT_TRUE(changes([&] { file_cut(file, buffer.data(), 10); }));
    EXPECT_TRUE(changes([&] { file_paste(file, buffer.data(), 10); }));
    EXPECT_FALSE(changes([&] { file_seek(file, 0); }));
    EXPECT_FALSE(changes([&] { file_read(file, buffer.data(), 10); }));
    EXPECT_FALSE(changes([&] { file_readrecord(file, 0, 10, buffer.data()); }));
    EXPECT_FALSE(changes([&] { file_readline(file, buffer.data(), 10); }));
    EXPECT_FALSE(changes([&] { file_write(void_file, "x", 1); }));
    file_close(file);
    EXPECT_TRUE(changes([&] { file_open(&file, path.c_str(), "wb", 0); }));
}

TEST_F(FileLayer, CallsAreLoggedAndRecordsOnlyAtLevel5)
{
    open("0123456789");
    const auto logged = [&](int32_t level) {
        const tests::LogCapture log(level);
        file_seek(file, 4);
        file_readrecord(file, 2, 3, buffer.data());
        return log.text();
    };
    EXPECT_EQ(logged(2), "");
    const std::string handle = std::to_string(static_cast<unsigned long>(file));
    EXPECT_EQ(logged(3), "Trace: file_seek(file=" + handle + ", position=4)\n");
    EXPECT_NE(logged(5).find("file_readrecord(file=" + handle + ", record=2, record_size=3, "), std::string::npos);
}

} // namespace
