// Files with known content as texts of the host: each kind on a LIF volume, laid out by hand, and the files of real
// machines, which are not part of the project; TARVO_SAMPLES names the folder that has them.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/volume/content/outward_support.h"
#include "tests/volume/extract_support.h"

using namespace tests;

namespace
{

struct TextOutcome {
    Extraction extraction;
    std::string text;
    ProgressCalls calls;
};

TextOutcome as_text(OneFile &file)
{
    ProgressLog progress;
    TextOutcome outcome;
    outcome.extraction =
        extract_to(file, file.path("text"), EXTRACT_CONVERT | EXTRACT_OVERWRITE, ProgressLog::callback);
    outcome.text = text_in(file.path("text"));
    outcome.calls = progress.calls;
    extract_to(file, file.path("again"), EXTRACT_CONVERT | EXTRACT_OVERWRITE);
    EXPECT_EQ(text_in(file.path("again")), outcome.text) << "without progress";
    return outcome;
}

// A page of 1,024 bytes, filled with zeros.
Bytes page(std::string_view text)
{
    return filled_to(bytes_of(text), 1024);
}

std::string sample(const char *name)
{
    const char *folder = std::getenv("TARVO_SAMPLES");
    return folder == nullptr ? std::string() : (std::filesystem::path(folder) / name).string();
}

bool missing(const std::string &path)
{
    std::error_code ignored;
    return path.empty() || !std::filesystem::exists(path, ignored);
}

std::vector<std::string> lines_of(const std::string &text, const std::string &end)
{
    std::vector<std::string> lines;
    size_t at = 0;
    for (size_t next = text.find(end); next != std::string::npos; next = text.find(end, at)) {
        lines.push_back(text.substr(at, next - at));
        at = next + end.size();
    }
    if (at < text.size()) lines.push_back(text.substr(at));
    return lines;
}

std::string extracted(MediaDescriptor *md, const char *name, const Scratch &host, uint16_t flags)
{
    const std::string path = host.path(name);
    EXPECT_EQ(image_extract_file(md, entry_named(md, name), nullptr, path.c_str(), nullptr, flags, nullptr), 256)
        << error_text();
    return text_in(path);
}

}

// ---- LIF ASCII

TEST(ExtractContents, LifAscii)
{
    const Bytes content = {0, 11,  'F', 'I', 'R', 'S', 'T', ' ', 'L', 'I', 'N', 'E',  '.',  ' ', 0, 0,   0,
                           4, 'w', 'o', 'r', 'd', 0,   3,   'a', ' ', 'b', ' ', 0xFF, 0xFF, 0,   2, 'x', 'x'};
    OneFile file(content, 1);
    const TextOutcome outcome = as_text(file);
    EXPECT_EQ(outcome.text, "FIRST LINE.\r\nword\r\na b\r\n");
    EXPECT_EQ(outcome.extraction.result, 256);
    EXPECT_TRUE(outcome.extraction.whole);
}

TEST(ExtractContents, LifAsciiEndsAtItsMarkAtOnce)
{
    const Bytes first = joined({{0, 254}, Bytes(254, 'x')});
    const Bytes last = filled_to({0, 2, 'a', 'b', 0xFF, 0xFF, 0, 2, 'c', 'd'}, 256);
    OneFile file(joined({first, last, first, first}), 1);
    const TextOutcome outcome = as_text(file);
    EXPECT_EQ(outcome.text, std::string(254, 'x') + "\r\nab\r\n");
    EXPECT_EQ(outcome.extraction.result, 256);
    EXPECT_TRUE(outcome.extraction.whole);
    EXPECT_FALSE(outcome.extraction.stopped);
    EXPECT_EQ(outcome.calls, (ProgressCalls{{256, 0, 25}})) << "none for the record that holds the mark";
}

// ---- Pascal TEXT

TEST(ExtractContents, PascalTextOfTwoPages)
{
    const Bytes head(1024, 0x4E); // whatever the editor keeps there
    const std::string long_line(1000, 'l');
    OneFile file(joined({head, page("\x10\x24program\r\x10 begin\r\x10\x20\r" + std::string("end.\r")),
                         page(long_line + "\r"), page("\x10\x22last\r")}),
                 0xEA3E);
    const TextOutcome outcome = as_text(file);
    EXPECT_EQ(outcome.text, "    program\r\nbegin\r\n\r\nend.\r\n" + long_line + "\r\n  last\r\n");
    EXPECT_EQ(outcome.extraction.result, 256);
    EXPECT_TRUE(outcome.extraction.whole);
    ASSERT_EQ(outcome.calls.size(), 16u);
    EXPECT_EQ(outcome.calls[0], (ProgressCall{256, 0, 6})) << "the head counts, though nobody reads it";
    EXPECT_EQ(outcome.calls[3], (ProgressCall{1024, 3, 25}));
    EXPECT_EQ(outcome.calls[15], (ProgressCall{4096, 15, 100}));
}

TEST(ExtractContents, PascalTextOfNothingButItsHeadIsEmpty)
{
    for (uint32_t records = 1; records <= 4; ++records) {
        OneFile file(Bytes(records * 256, 'x'), 0xEA3E);
        const TextOutcome outcome = as_text(file);
        EXPECT_EQ(outcome.text, "") << records;
        EXPECT_EQ(outcome.extraction.result, 0) << records;
        EXPECT_EQ(outcome.calls.size(), records);
        EXPECT_EQ(outcome.calls.back(), (ProgressCall{records * 256, records - 1, 100}));
    }
    OneFile file(joined({Bytes(1024, 'x'), {'y'}}), 0xEA3E);
    const TextOutcome outcome = as_text(file);
    EXPECT_EQ(outcome.text, "y" + std::string(255, '\0')) << "behind a character zeros are text";
    EXPECT_EQ(outcome.extraction.result, 256);
}

TEST(ExtractContents, TheHeadOfAPascalTextIsNotRead)
{
    OneFile file(joined({Bytes(1024, 'x'), page("a\r")}), 0xEA3E);
    file.volume.file.replace(front_of(file.volume.file.bytes(), 4 * 256)); // header, directory
    ProgressLog progress(2);
    const Extraction extraction = extract_to(file, file.path("out"), EXTRACT_CONVERT, ProgressLog::callback);
    EXPECT_EQ(extraction.result, 0) << "stopped before any record was read";
    EXPECT_TRUE(extraction.stopped);
    EXPECT_EQ(progress.calls.size(), 3u);
}

// ---- HP 75 TEXT

TEST(ExtractContents, Hp75Text)
{
    const Bytes content = joined({
        {0, 0, 0x3F, 0x00, 0xBE, 'T', 0x11, 0x22, 0x33, 0x44, 'L', 'E', 'T', 'T', 'E', 'R', ' ', ' '},
        Bytes(10),
        {0x10, 0x00, 9, 'R', 'E', 'M', ' ', 'F', 'I', 'R', 'S', 'T'},
        {0x05, 0x01, 0},
        {0x98, 0x99, 3, 'E', 'N', 'D'},
        {0x99, 0xA9, 0x02, 0x8A, 0x0E},
    });
    OneFile file(filled_to(content, 600, 0xFF), 0xE052);
    const TextOutcome outcome = as_text(file);
    EXPECT_EQ(outcome.text, "  10 REM FIRST\r\n 105 \r\n9998 END\r\n");
    EXPECT_EQ(outcome.extraction.result, 256);
    EXPECT_TRUE(outcome.extraction.whole);
    EXPECT_EQ(outcome.calls, ProgressCalls());
}

TEST(ExtractContents, WhatIsNoHp75TextEndsWithoutAnError)
{
    OneFile file(counting(600), 0xE052);
    forget_error();
    const LogCapture log(0);
    const TextOutcome outcome = as_text(file);
    EXPECT_EQ(outcome.text, "");
    EXPECT_EQ(outcome.extraction.result, 256);
    EXPECT_FALSE(outcome.extraction.whole) << "none of its bytes is on the host";
    EXPECT_FALSE(outcome.extraction.stopped);
    EXPECT_NE(global_error, 214u);
    EXPECT_EQ(log.text(), "Error: Not a valid HP 75 TEXT file\nError: Not a valid HP 75 TEXT file\n")
        << "once for each copy";
}

TEST(ExtractContents, Hazard_H9_AnHp75TextShorterThanItsHead)
{
    OneFile file(filled_to({0, 0, 0, 0, 0xBE, 'T'}, 256, 0x11), 0xE052);
    for (const uint32_t size : {5u, 6u, 27u, 28u, 31u}) {
        file.info.size = size;
        const TextOutcome outcome = as_text(file);
        EXPECT_EQ(outcome.text, "") << size;
        EXPECT_EQ(outcome.extraction.result, 256) << size;
    }
}

// ---- BDAT items

TEST(ExtractContents, BdatItems)
{
    const Bytes first = filled_to({0xDF, 5,    0,    'H',  'E',  'L',  'L', 'O', 0x00, 0x00, 0x59,
                                   0x53, 0x26, 0x59, 0x41, 0x31, 0xCF, 2,   0,   'o',  'n',  0xEF},
                                  256, 'x');
    const Bytes second = filled_to({0x6F, 2, 0, 'l', 'y', 0, 0, 0, 0, 0xFF, 0x45, 0x23, 0x91, 0xFF}, 256, 'x');
    OneFile file(joined({first, second}), 0xE010);
    const TextOutcome outcome = as_text(file);
    EXPECT_EQ(outcome.text, "HELLO\r\n3.14159265359E000\r\nonly\r\n-12345\r\n");
    EXPECT_EQ(outcome.extraction.result, 256);
    EXPECT_TRUE(outcome.extraction.whole);
    EXPECT_EQ(outcome.calls, (ProgressCalls{{256, 0, 50}, {512, 1, 100}}));
}

// ---- typed DATA

TEST(ExtractContents, TypedData)
{
    const Bytes first = filled_to({0,    60, 0,    5,    'H',  'E',  'L',  'L',  'O',  0,    0,    10,   0xFF,
                                   0xFE, 2,  0x12, 0x34, 0x56, 0x00, 0x5A, 0x12, 0x34, 0x56, 0x78, 0x90, 0x12},
                                  256, 13);
    OneFile file(joined({first, {0, 44, 0, 2, 'o', 'k', 0, 62}, Bytes(300, 0xFF)}), 0xE848);
    const TextOutcome outcome = as_text(file);
    EXPECT_EQ(outcome.text, "HELLO\r\n-2\n1.23456E+01\r\n1.23456789012E+001\r\nok\r\n");
    EXPECT_EQ(outcome.extraction.result, 256);
    EXPECT_TRUE(outcome.extraction.whole);
    EXPECT_EQ(outcome.calls, (ProgressCalls{{256, 0, 33}}));
}

TEST(ExtractContents, TypedDataOfSystem45)
{
    for (const auto &[format, type] :
         {std::pair<uint32_t, uint16_t>{1, 0xA47F}, std::pair<uint32_t, uint16_t>{2, 0xFFA4}}) {
        OneFile file(filled_to({0, 60, 0, 2, 'o', 'k', 0, 62}, 256), type);
        file.md->format = format;
        const TextOutcome outcome = as_text(file);
        file.md->format = FORMAT_LIF;
        EXPECT_EQ(outcome.text, "ok\r\n") << format;
    }
}

TEST(ExtractContents, ANumberThatIsNoneRejectsTheFile)
{
    const Bytes first = filled_to({0, 60, 0, 2, 'o', 'k'}, 256, 13);
    OneFile file(joined({first, {0, 10, 0, 7, 0, 0xA0, 0, 0}, Bytes(300, 13)}), 0xE848);
    const TextOutcome outcome = as_text(file);
    EXPECT_EQ(outcome.extraction.result, -1);
    EXPECT_FALSE(outcome.extraction.whole);
    EXPECT_EQ(outcome.text, "ok\r\n7\n") << "what came before it stays";
    EXPECT_EQ(outcome.calls, (ProgressCalls{{256, 0, 33}}));
    EXPECT_EQ(error_text(), error_with_file(214, file.path("again")));
    EXPECT_EQ(extract_to(file, file.path("raw")).result, 256) << "unconverted it goes out";
}

// ---- a handle

TEST(ExtractToHandle, BytesGoBehindWhatIsThereAndTheFileStaysOpen)
{
    OneFile file(counting(300));
    FileHandle handle = 0;
    ASSERT_EQ(file_open(&handle, file.path("out").c_str(), "wb", 0), 1);
    ASSERT_EQ(file_write(handle, "ahead", 5), 5);
    ProgressLog progress;
    const Extraction extraction =
        extract_to_handle(file.md, &file.info, handle, "name", EXTRACT_TXT, ProgressLog::callback);
    EXPECT_EQ(extraction.result, 256);
    EXPECT_TRUE(extraction.whole);
    EXPECT_EQ(progress.calls, (ProgressCalls{{256, 0, 50}, {512, 1, 100}}));
    EXPECT_EQ(file_write(handle, "behind", 6), 6);
    TimeRecord time{};
    EXPECT_EQ(file_get_time(handle, &time), 0);
    EXPECT_GT(time.tm_year, 120) << "not the date of the entry";
    file_close(handle);
    EXPECT_EQ(read_file(file.path("out")), joined({bytes_of("ahead"), records_of(counting(300)), bytes_of("behind")}));
}

TEST(ExtractToHandle, HeadersAndConversionsAsWithAName)
{
    OneFile file(lif_ascii({"a line"}), 1);
    file.md->use_file_headers = 2;
    for (const uint16_t flags : {uint16_t{0}, uint16_t{EXTRACT_CONVERT}, uint16_t{EXTRACT_CONVERT | EXTRACT_TXT}}) {
        FileHandle handle = 0;
        ASSERT_EQ(file_open(&handle, file.path("out").c_str(), "wb", 0), 1);
        EXPECT_EQ(extract_to_handle(file.md, &file.info, handle, "name", flags, nullptr).result, 256);
        file_close(handle);
        if (flags == 0) {
            EXPECT_EQ(read_file(file.path("out")).size(), 32u + 256u);
        } else {
            EXPECT_EQ(text_in(file.path("out")), "a line\r\n");
        }
        EXPECT_FALSE(exists(file.path("out.txt")));
    }
}

TEST(ExtractToHandle, MessagesHaveTheGivenName)
{
    OneFile file({0, 0xA0, 0, 0}, 0xE848);
    FileHandle handle = 0;
    ASSERT_EQ(file_open(&handle, file.path("out").c_str(), "wb", 0), 1);
    EXPECT_EQ(extract_to_handle(file.md, &file.info, handle, "standard output", EXTRACT_CONVERT, nullptr).result, -1);
    EXPECT_EQ(error_text(), error_with_file(214, "standard output"));
    {
        const HostDisk disk(0);
        EXPECT_EQ(extract_to_handle(file.md, &file.info, handle, "standard output", 0, nullptr).result, -1);
    }
    EXPECT_EQ(error_text(), error_with_file(303, "standard output"));
    file_close(handle);
}

// ---- volumes of real machines

TEST(ExtractSamples, Hp85ProgramsStoredAsDataComeOutAsTexts)
{
    const std::string path = sample("hp85.lif");
    if (missing(path)) GTEST_SKIP() << "hp85.lif is not in the folder that TARVO_SAMPLES names";
    const Medium medium(path, OPEN_READ_VOLUME | OPEN_READ_ONLY);
    ASSERT_TRUE(medium) << error_text();
    const Scratch host;
    const struct {
        const char *name;
        size_t bytes, lines; // every line brings a carriage return of its own; the last one is empty
        const char *first, *last;
    } rows[] = {{"CIRCLE", 151, 10, "10 GCLEAR\r", "80 END\r"},
                {"DRIVES", 333, 16, "10 S=7 @ ! VARIABLE S IS SLECT CODE\r", "130 END\r"},
                {"GPIB-TA", 1548, 57, "10 CLEAR\r", "560 RETURN\r"},
                {"HELLO", 331, 10, "10 DISP \"THIS IS A TEST OF A BIG FILE\"\r", "100 DISP \"WE ARE DONE...\"\r"},
                {"RWTEST", 544, 21, "5 DISP \"4 UNIT R/W/PURGE TEST\"\r", "190 END\r"},
                {"TREK85A", 26375, 922, "1 !\r", "9900 END\r"}};
    for (const auto &row : rows) {
        const std::string text = extracted(medium.md, row.name, host, EXTRACT_CONVERT);
        EXPECT_EQ(text.size(), row.bytes) << row.name;
        const std::vector<std::string> lines = lines_of(text, "\r\n");
        ASSERT_EQ(lines.size(), row.lines) << row.name;
        EXPECT_EQ(lines.front(), row.first);
        EXPECT_EQ(lines[lines.size() - 2], row.last) << row.name;
        EXPECT_EQ(lines.back(), "") << row.name;
    }
}

TEST(ExtractSamples, AllFilesOfHp85AreTheBytesOfTheImage)
{
    const std::string path = sample("hp85.lif");
    if (missing(path)) GTEST_SKIP() << "hp85.lif is not in the folder that TARVO_SAMPLES names";
    const Bytes image = read_file(path);
    const Medium medium(path, OPEN_READ_VOLUME | OPEN_READ_ONLY);
    ASSERT_TRUE(medium) << error_text();
    const Scratch host;
    size_t files = 0;
    for (const FileInfo *info = medium->root; info != nullptr; info = info->next, ++files) {
        const std::string bytes = extracted(medium.md, info->name, host, 0);
        const std::string wanted(image.begin() + info->location * 256,
                                 image.begin() + info->location * 256 + info->size);
        EXPECT_EQ(bytes, wanted) << info->name;
    }
    EXPECT_EQ(files, 10u);
    EXPECT_EQ(read_file(path), image);
}

TEST(ExtractSamples, LifAsciiFilesAreTheTextsThatWentIntoThem)
{
    const std::string path = sample("text.lif");
    if (missing(path)) GTEST_SKIP() << "text.lif is not in the folder that TARVO_SAMPLES names";
    const Medium medium(path, OPEN_READ_VOLUME | OPEN_READ_ONLY);
    ASSERT_TRUE(medium) << error_text();
    const Scratch host;
    for (const char *name : {"NOTES", "LONG"}) {
        std::string wanted;
        for (const std::string &line : lines_of(text_in(sample("text") + "/" + name + ".txt"), "\n"))
            if (!line.empty()) wanted += line + "\r\n"; // an empty line comes back as nothing
        ASSERT_GT(wanted.size(), 300u);
        EXPECT_EQ(extracted(medium.md, name, host, EXTRACT_CONVERT), wanted) << name;
    }
}

TEST(ExtractSamples, Hp75TextUpToALineHeadThatABlocksEndCuts)
{
    const std::string path = sample("text.lif");
    if (missing(path)) GTEST_SKIP() << "text.lif is not in the folder that TARVO_SAMPLES names";
    const Medium medium(path, OPEN_READ_VOLUME | OPEN_READ_ONLY);
    ASSERT_TRUE(medium) << error_text();
    const Scratch host;
    const std::string text = extracted(medium.md, "PROG75", host, EXTRACT_CONVERT);
    // The head of line 165 ends its block; what follows is read as lines of its own until it falls into step again.
    const std::vector<std::string> source = lines_of(text_in(sample("text") + "/PROG75.txt"), "\n");
    const std::vector<std::string> lines = lines_of(text, "\r\n");
    ASSERT_GT(source.size(), 16u);
    ASSERT_GT(lines.size(), 16u);
    for (size_t i = 0; i < 16; ++i) {
        const size_t blank = source[i].find(' ');
        EXPECT_EQ(lines[i], std::string(4 - blank, ' ') + source[i]) << i;
    }
    EXPECT_EQ(lines[16].substr(0, 10), "4944 P 13p");
    EXPECT_EQ(lines[lines.size() - 2], " 395 DISP 59");
    EXPECT_EQ(lines.back(), "9998 END");
    EXPECT_EQ(text.size(), 822u);
}
