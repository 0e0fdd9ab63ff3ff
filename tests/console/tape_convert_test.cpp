// tape convert: each conversion, what is refused, and what fails.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/console/copies.h"
#include "tests/console/program.h"
#include "tests/tape/tape_image.h"

using namespace tests;

namespace
{

struct ConvertCase {
    const char *name;
    Bytes from;
    const char *extension;
    std::vector<std::string> options;
    Bytes to;
};

Bytes repeated(char byte, size_t count)
{
    return Bytes(count, static_cast<uint8_t>(byte));
}

std::string text_of(char byte, size_t count)
{
    return std::string(count, byte);
}

const ConvertCase convert_cases[] = {
    {"plain to simh",
     joined({repeated('a', 256), repeated('b', 10)}),
     ".hpi",
     {"--to", "simh"},
     joined({tape_record(text_of('a', 256)), tape_record(text_of('b', 10)), end_of_medium()})},
    {"plain to simh by 4",
     bytes_of("ABCDEF"),
     ".hpi",
     {"--to", "simh", "--block", "4"},
     joined({tape_record("ABCD"), tape_record("EF"), end_of_medium()})},
    {"plain to fixed",
     repeated('a', 1030),
     ".hpi",
     {"--to", "fixed"},
     joined({record_slot(text_of('a', 1024), 1024), record_slot("aaaaaa", 1024), end_of_medium()})},
    {"plain of zeros",
     Bytes(8),
     ".hpi",
     {"--to", "simh", "--block", "8"},
     joined({tape_record(std::string(8, '\0')), end_of_medium()})},
    {"simh to plain",
     joined({tape_record("ABC"), tape_mark(), tape_record("DE"), end_of_medium()}),
     ".tap",
     {"--to", "hpi", "--block", "4"},
     joined({bytes_of("ABCDE"), Bytes(3)})},
    {"simh to plain by 256", tape_record("ABC"), ".bin", {"--to", "hpi"}, joined({bytes_of("ABC"), Bytes(253)})},
    {"simh to fixed",
     joined({tape_record("ABC"), tape_mark(), tape_record("DEFGHIJKLM"), end_of_medium()}),
     ".tap",
     {"--to", "fixed", "--block", "8"},
     joined({record_slot(std::string("ABC\0", 4), 8), mark_slot(8), record_slot("DEFGHIJK", 8), record_slot("LM", 8),
             end_slot(8)})},
    {"simh to fixed, packed",
     joined({tape_record("ABC"), tape_record("DEFGHIJ"), end_of_medium()}),
     ".tap",
     {"--to", "fixed", "--block", "8", "--pack"},
     joined({record_slot("ABCDEFGH", 8), record_slot("IJ", 8), end_slot(8)})},
    {"fixed to plain",
     joined({record_slot("ABCD", 8), mark_slot(8), record_slot("EFGHIJKL", 8), end_slot(8)}),
     ".tap",
     {"--to", "hpi", "--block", "8"},
     joined({bytes_of("ABCD"), Bytes(4), Bytes(8), bytes_of("EFGHIJKL")})},
    {"fixed to plain, size worked out",
     joined({record_slot("ABCD", 8), record_slot("EFGHIJKL", 8), end_slot(8)}),
     ".tap",
     {"--to", "hpi"},
     joined({bytes_of("ABCD"), Bytes(4), bytes_of("EFGHIJKL")})},
};

Outcome convert(const std::string &from, const std::string &to, const std::vector<std::string> &options)
{
    std::vector<std::string> words = {"tape", "convert", from, to};
    words.insert(words.end(), options.begin(), options.end());
    return run(words);
}

}

TEST(TapeConvert, EachConversion)
{
    for (const ConvertCase &row : convert_cases) {
        SCOPED_TRACE(row.name);
        const TemporaryFile from(row.from, row.extension);
        const TemporaryFile to(".out");
        const Outcome outcome = convert(from.path(), to.path(), row.options);
        EXPECT_EQ(outcome.code, 0);
        EXPECT_EQ(outcome.output, "");
        EXPECT_EQ(outcome.errors, "");
        EXPECT_EQ(to.bytes(), row.to);
        EXPECT_EQ(from.bytes(), row.from);
    }
}

TEST(TapeConvert, VolumeComesBackAsItWas)
{
    const Bytes image = lif_image(demo_volume());
    const TemporaryFile plain(image);
    for (const char *layout : {"simh", "fixed"}) {
        const TemporaryFile tape(".tap");
        const TemporaryFile back(".lif");
        expect_good(convert(plain.path(), tape.path(), {"--to", layout}));
        EXPECT_EQ(run({"tape", "test", tape.path()}).code, 0);
        expect_good(convert(tape.path(), back.path(), {"--to", "hpi"}));
        EXPECT_EQ(back.bytes(), image) << layout;
    }
}

TEST(TapeConvert, WhatHasNoConverterIsNotSupported)
{
    struct Row {
        Bytes from;
        const char *extension;
        const char *layout;
        const char *words;
    };
    const Row rows[] = {
        {joined({record_slot("ABCD", 8), record_slot("EF", 8), end_slot(8)}), ".tap", "simh",
         "tape image of the fixed layout to simh"},
        {joined({record_slot("ABCD", 8), record_slot("EF", 8), end_slot(8)}), ".tap", "fixed",
         "tape image of the fixed layout to fixed"},
        {tape_record("AB"), ".tap", "simh", "tape image of the variable layout to simh"},
        {repeated('x', 100), ".hpi", "hpi", "plain image to hpi"},
    };
    for (const Row &row : rows) {
        const TemporaryFile from(row.from, row.extension);
        const TemporaryFile to(".out");
        const Outcome outcome = convert(from.path(), to.path(), {"--to", row.layout});
        EXPECT_EQ(outcome.code, 1);
        EXPECT_EQ(outcome.errors, error_line("Not supported (" + std::string(row.words) + ")"));
        EXPECT_FALSE(to.exists());
    }
}

TEST(TapeConvert, TapeWithFaultsEndsWith3)
{
    for (const char *extension : {".tap", ".TAPE", ".simh"}) {
        const TemporaryFile from(joined({tape_record("AB"), little_word(0x1000000)}), extension);
        const TemporaryFile to(".out");
        const Outcome outcome = convert(from.path(), to.path(), {"--to", "hpi"});
        EXPECT_EQ(outcome.code, 3);
        EXPECT_EQ(outcome.errors, error_line(std::string(from.path()) + ": no SIMH magtape image: "
                                                                        "word that is no length at position 10"));
        EXPECT_FALSE(to.exists());
    }
}

TEST(TapeConvert, FaultThatOnlyShowsGoingBackEndsWith3)
{
    const Bytes odd_gap = {0xFF, 0xFF, 0xFE, 0xFF, 3, 0};
    const TemporaryFile from(joined({tape_record("AB"), odd_gap, tape_record("CD")}), ".tap");
    const TemporaryFile to(".out");
    const Outcome outcome = convert(from.path(), to.path(), {"--to", "hpi"});
    EXPECT_EQ(outcome.code, 3);
    EXPECT_EQ(outcome.errors, error_line(std::string(from.path()) + ": no SIMH magtape image: "
                                                                    "its records can't be found going back"));
    EXPECT_FALSE(to.exists());
}

// Part of a word behind the last record; and a slot whose record has lost its last word, which the test takes.
TEST(TapeConvert, EndsAsTheTestDoes)
{
    struct Row {
        const char *name;
        Bytes image;
        int code;
    };
    const Row rows[] = {
        {"part of a word", {1, 0, 0, 0, 0xAA, 0, 1, 0, 0, 0, 0, 0}, 3},
        {"slot without its last word", joined({record_slot("ABCD", 4), gap_words(1), little_word(4), Bytes(4)}), 0},
        {"record without its last word", joined({little_word(2), bytes_of("AB")}), 3},
        {"nothing but gap", gap_words(2), 0},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(row.name);
        const TemporaryFile from(row.image, ".tap");
        const TemporaryFile to(".out");
        EXPECT_EQ(run({"tape", "test", from.path()}).code, row.code);
        EXPECT_EQ(convert(from.path(), to.path(), {"--to", "hpi"}).code, row.code);
        EXPECT_EQ(to.exists(), row.code == 0);
    }
}

// The slots are in order, but what is in one has two lengths.
TEST(TapeConvert, SlotWithAFaultEndsWith3)
{
    Bytes image = joined({record_slot("ABCD", 8), record_slot("EFGH", 8), end_slot(8)});
    const size_t last_word = 24 + 4 + 4 + 4; // of the second record
    ASSERT_EQ(image[last_word], 4);
    image[last_word] = 3;
    const TemporaryFile from(image, ".tap");
    const TemporaryFile to(".out");
    const Outcome outcome = convert(from.path(), to.path(), {"--to", "hpi", "--block", "8"});
    EXPECT_EQ(outcome.code, 3);
    EXPECT_EQ(outcome.errors, error_line(std::string(from.path()) + ": no SIMH magtape image: "
                                                                    "record with two lengths at position 28"));
    EXPECT_EQ(run({"tape", "test", from.path(), "--block", "8"}).code, 3);
    EXPECT_FALSE(to.exists());
}

TEST(TapeConvert, NothingIsReplacedWithoutForce)
{
    const TemporaryFile from(bytes_of("ABCD"), ".hpi");
    const TemporaryFile to(Bytes(5000, 'o'), ".tap");
    const Outcome refused = convert(from.path(), to.path(), {"--to", "simh"});
    EXPECT_EQ(refused.code, 1);
    EXPECT_EQ(refused.errors, error_line("Target already exists (file \"" + std::string(to.path()) + "\")"));
    EXPECT_EQ(to.bytes(), Bytes(5000, 'o'));
    expect_good(convert(from.path(), to.path(), {"--to", "simh", "--force"}));
    EXPECT_EQ(to.bytes(), joined({tape_record("ABCD"), end_of_medium()}));
}

TEST(TapeConvert, SourceStaysThere)
{
    const Bytes tape = tape_record("AB");
    const TemporaryFile from(tape, ".tap");
    const std::string path = from.path();
    const Outcome outcome = convert(path, path, {"--to", "hpi", "--force"});
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.errors, error_line("Can't copy/move file to itself (file \"" + path + "\")"));
    EXPECT_EQ(from.bytes(), tape);
}

TEST(TapeConvert, BadSourcesLeaveTheTargetAlone)
{
    const TemporaryFile none(".hpi");
    const TemporaryFile to(bytes_of("old"), ".tap");
    EXPECT_EQ(convert(none.path(), to.path(), {"--to", "simh", "--force"}).code, 1);
    const TemporaryFile bad(bytes_of("no tape"), ".tap");
    EXPECT_EQ(convert(bad.path(), to.path(), {"--to", "hpi", "--force"}).code, 3);
    EXPECT_EQ(to.bytes(), bytes_of("old"));
}

TEST(TapeConvert, TargetThatCannotBeMadeIsAnError)
{
    const TemporaryFile from(bytes_of("ABCD"), ".hpi");
    const TemporaryFolder folder;
    const Outcome outcome = convert(from.path(), folder.path("none/TO.tap"), {"--to", "simh"});
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(error_lines(outcome.errors), 1U) << outcome.errors;
    EXPECT_NE(outcome.errors.find("Can't create file (file \""), std::string::npos) << outcome.errors;
}

TEST(TapeConvert, FullDeviceIsAnErrorAndLeavesNothing)
{
    if (!runs_natively()) GTEST_SKIP() << "limits are for native programs";
    const TemporaryFile from(Bytes(3000000, 'x'), ".hpi");
    const TemporaryFile to(".tap");
    // The shell's limit, in units of 1 KB, is a device that is full.
    for (const char *layout : {"simh", "fixed"}) {
        const Outcome outcome = run_in_shell({"tape", "convert", from.path(), to.path(), "--to", layout},
                                             "trap '' XFSZ; ulimit -f 1000; %");
        EXPECT_EQ(outcome.code, 1);
        EXPECT_EQ(error_lines(outcome.errors), 1U) << outcome.errors;
        EXPECT_NE(outcome.errors.find("File write error"), std::string::npos) << outcome.errors;
        EXPECT_FALSE(to.exists());
    }
}

TEST(TapeConvert, OptionsThatDoNotGoTogetherEndWith64)
{
    const TemporaryFile from(bytes_of("ABCD"), ".hpi");
    const TemporaryFile to(".tap");
    const std::vector<std::string> wrong[] = {
        {"--to", "simh", "--pack"},
        {"--to", "hpi", "--pack"},
        {"--to", "fixed", "--block", "6"},
        {"--to", "tar"},
        {"--to", "simh", "--block", "0"},
        {"--to", "simh", "--block", "16777216"},
        {},
        {"--to", "simh", "--block", "-256"},
    };
    for (const std::vector<std::string> &options : wrong) {
        const Outcome outcome = convert(from.path(), to.path(), options);
        EXPECT_EQ(outcome.code, 64);
        EXPECT_EQ(error_lines(outcome.errors), 1U) << outcome.errors;
        EXPECT_FALSE(to.exists());
    }
}
