// The file as a whole: lines, sections, faults and their marks, line ends, and what stands when a line is bad.
#include <random>

#include "base/error.h"
#include "tests/config/config_support.h"
#include "tests/support/capture.h"

using namespace tests;
using namespace std::string_literals;

namespace
{

class ConfigFile : public ConfigTest
{
};

const std::string every_section = "; a file with everything\n"
                                  "[defaults]\n"
                                  "board = 2\t; the third\n"
                                  "\n"
                                  "[fsinfo]\r\n"
                                  "MYDISC = \"my disc, large\", Z, 1,2,3,4,5,6,7,8,9,10\r\n"
                                  "[driveinfo]\n"
                                  "MYDRIVE = \"my drive\", SS80, 0x222, 0,0, 0x91220, 2, 77,2,16,256,1,1\n"
                                  "[liftypes]\n"
                                  "0xE123 = MINE,,SE80\n"
                                  "[defaults]\n"
                                  "port = 2E1\n";

void expect_builtin_media()
{
    for (size_t i = 0; default_media_table[i].name != nullptr; i++) {
        EXPECT_STREQ(custom_media_table[i].name, default_media_table[i].name);
        EXPECT_EQ(custom_media_table[i].heads, default_media_table[i].heads);
        EXPECT_EQ(custom_media_table[i].interleave, default_media_table[i].interleave);
    }
}

}

TEST_F(ConfigFile, EmptyFileGivesTheBuiltinTables)
{
    const ConfigReading reading("");
    EXPECT_EQ(reading.result, 0);
    EXPECT_EQ(reading.error, "");
    EXPECT_EQ(reading.printed, "");
    EXPECT_EQ(reading.fault.line, 0);
    EXPECT_EQ(media_count(), 28u);
    EXPECT_EQ(drive_count(), 47u);
    EXPECT_EQ(type_count(), 63u);
    expect_builtin_media();
    EXPECT_STREQ(reading.system, "") << "the caller's default doesn't survive";
    EXPECT_EQ(reading.loglevel, untouched);
    EXPECT_EQ(reading.use_file_conversion, untouched);
}

TEST_F(ConfigFile, TablesInForceAreForTheCallerToChange)
{
    EXPECT_EQ(ConfigReading(every_section).result, 0);
    EXPECT_EQ(media_table, &default_media_table[0]);
    EXPECT_EQ(drive_table, &default_drive_table[0]);
    EXPECT_EQ(liftype_table, &default_liftype_table[0]);
    use_custom_tables();
    EXPECT_EQ(media_table, &custom_media_table[0]);
    EXPECT_EQ(drive_table, &custom_drive_table[0]);
    EXPECT_EQ(liftype_table, &custom_liftype_table[0]);
    use_builtin_tables();
    EXPECT_EQ(liftype_table, &default_liftype_table[0]);
    EXPECT_EQ(media_count() + drive_count() + type_count(), 0u);
}

TEST_F(ConfigFile, EverySection)
{
    const ConfigReading reading(every_section);
    EXPECT_EQ(reading.result, 0) << reading.error;
    EXPECT_EQ(reading.board, 2);
    EXPECT_EQ(reading.port, 0x2E1u);
    ASSERT_NE(custom_media("MYDISC"), nullptr);
    EXPECT_STREQ(custom_media("MYDISC")->description, "my disc, large");
    ASSERT_NE(custom_drive("MYDRIVE"), nullptr);
    ASSERT_NE(custom_type(0xE123), nullptr);
    EXPECT_EQ(media_count(), 29u);
    EXPECT_EQ(drive_count(), 48u);
    EXPECT_EQ(type_count(), 64u);
}

TEST_F(ConfigFile, LinesAheadOfTheFirstSectionAreIgnored)
{
    EXPECT_EQ(ConfigReading("board = 3\nnonsense\n[Defaults]\n[unknown]\n").result, 0);
    const ConfigReading reading("board = 3\n[defaults]\nport = 5\n");
    EXPECT_EQ(reading.board, untouched);
    EXPECT_EQ(reading.port, 5u);
}

TEST_F(ConfigFile, SectionNamesInAnotherCaseAreLinesOfTheSection)
{
    expect_config_error("[defaults]\n[FSINFO]\n", 2, "bad assignment in line 2");
    expect_config_error("[liftypes]\n[unknown]\n", 2, "bad liftype assignment in line 2");
    EXPECT_EQ(ConfigReading("[defaults] = rest, of, the, line\nboard=4\n").board, 4) << "only the first word counts";
}

TEST_F(ConfigFile, EveryReadingBeginsAnew)
{
    EXPECT_EQ(ConfigReading(every_section).result, 0);
    EXPECT_EQ(ConfigReading("[fsinfo]\nOTHER = d, X, 1,2,3,4,5,6,7,8,9\n").result, 0);
    EXPECT_EQ(custom_media("MYDISC"), nullptr);
    EXPECT_EQ(custom_drive("MYDRIVE"), nullptr);
    EXPECT_EQ(custom_type(0xE123), nullptr);
    ASSERT_NE(custom_media("OTHER"), nullptr);
    EXPECT_EQ(custom_media("OTHER")->interleave, 0u) << "nothing of the row that was there";
}

TEST_F(ConfigFile, WhatStoodAheadOfABadLineIsStored)
{
    const ConfigReading reading("[defaults]\nboard = 3\nport = bad!\nnosleep = 1\n");
    EXPECT_EQ(reading.result, -1);
    EXPECT_EQ(reading.error, "Error in config file (bad port assignment in line 3)");
    EXPECT_STREQ(reading.fault.text, "port = bad!");
    EXPECT_EQ(reading.board, 3);
    EXPECT_EQ(reading.port, static_cast<uint32_t>(untouched));
    EXPECT_EQ(reading.nosleep, untouched);
    EXPECT_EQ(type_count(), 63u) << "tables are filled up to there";
    EXPECT_EQ(liftype_table, &default_liftype_table[0]) << "and not in force";
}

TEST_F(ConfigFile, FaultIsPrintedUnderItsMark)
{
    const ConfigReading reading("[defaults]\n\tboard\t= 1\"2\r\n");
    EXPECT_EQ(reading.result, -1);
    EXPECT_EQ(global_error, 108u);
    EXPECT_EQ(reading.error, "Error in config file (misplaced quote in line 2)");
    EXPECT_EQ(reading.printed, "[Tarvo]: Error in config file (misplaced quote in line 2)\n"
                               "\t     \t   v\n"
                               "\tboard\t= 1\"2\n");
    EXPECT_EQ(reading.fault.line, 2);
    EXPECT_EQ(reading.fault.offset, 10);
    EXPECT_STREQ(reading.fault.text, "\tboard\t= 1\"2");
}

TEST_F(ConfigFile, MarkOfAQuoteThatIsNotClosedStandsAtTheEnd)
{
    const ConfigReading reading("[fsinfo]\nX = \"abc\n");
    EXPECT_EQ(reading.printed, "[Tarvo]: Error in config file (unmatched quote in line 2)\n"
                               "        v\nX = \"abc\n");
    const ConfigReading last("[fsinfo]\nX = \"abc");
    EXPECT_EQ(last.result, -1);
    EXPECT_EQ(last.printed, reading.printed) << "also in a last line without a line feed";
}

TEST_F(ConfigFile, FaultsOfALineAreTheOnlyOnes)
{
    EXPECT_EQ(ConfigReading("x\"\n").result, -1) << "also ahead of the first section";
    const ConfigReading reading("[defaults]\n; \" and = , in a comment \"\nboard = 1 ; \"\n");
    EXPECT_EQ(reading.result, 0) << reading.error;
    EXPECT_EQ(reading.board, 1);
}

TEST_F(ConfigFile, TooManyEntries)
{
    std::string line = "X";
    for (int i = 0; i < 256; i++) line += " y";
    const ConfigReading reading(in_section("[liftypes]", line));
    EXPECT_EQ(reading.result, -1);
    EXPECT_EQ(reading.error, "Error in config file (too many entries in line 2)");
    EXPECT_EQ(reading.fault.offset, 512);
}

TEST_F(ConfigFile, LongLines)
{
    const std::string text(1000, 'd');
    EXPECT_EQ(ConfigReading("[fsinfo]\nX = " + text + ",Z,1,2,3\n").error,
              "Error in config file (bad parm count in line 2)")
        << "1,014 characters are one line";
    const std::string long_word(700, 'x');
    const ConfigReading reading("[defaults]\n" + long_word + " = " + long_word + "\nboard = 0x\"\n");
    EXPECT_EQ(reading.error, "Error in config file (bad assignment in line 3)") << "the rest counts as a line";
    const ConfigReading full("[defaults]\n" + std::string(500, 'x') + "=" + std::string(521, 'y') + "\n");
    EXPECT_EQ(full.error, "Error in config file (line too long in line %)");
}

TEST_F(ConfigFile, LastLineWithoutLineFeed)
{
    EXPECT_EQ(ConfigReading("[defaults]\nboard = 12").board, 12);
    EXPECT_EQ(ConfigReading("[defaults]").result, 0);
    const ConfigReading bad("[defaults]\nboard = x");
    EXPECT_EQ(bad.error, "Error in config file (bad board assignment in line 2)");
}

TEST_F(ConfigFile, Hazard_M10_LastLineRunsOnInWhatLongerLinesLeft)
{
    // Behind the NUL of the last line stands the rest of the longer one, up to its line feed.
    const ConfigReading reading("[liftypes]\n; a comment that is long ,,LEFT\n1 = A");
    EXPECT_EQ(reading.result, 0) << reading.error;
    ASSERT_NE(custom_type(1), nullptr);
    EXPECT_STREQ(custom_type(1)->name, "A");
    EXPECT_STREQ(custom_type(1)->system, "that") << "1 | = | A | omment | that";
    EXPECT_STREQ(ConfigReading("[defaults]\nsystem = A").system, "A");
}

TEST_F(ConfigFile, Hazard_M10_FirstLineRunsOnInNothing)
{
    EXPECT_EQ(ConfigReading("[defaults]").result, 0);
    const ConfigReading open_quote("\"never closed");
    EXPECT_EQ(open_quote.error, "Error in config file (unmatched quote in line 1)") << "at the end of the buffer";
    EXPECT_EQ(ConfigReading(std::string(1023, ' ')).result, 0);
    EXPECT_EQ(ConfigReading(std::string(5000, '\0')).result, 0);
}

TEST_F(ConfigFile, NulInsideALineIsABlank)
{
    EXPECT_EQ(ConfigReading("[defaults]\nboard\0=\0"s + "5\n").board, 5);
}

TEST_F(ConfigFile, MissingPointers)
{
    int32_t number = 0;
    uint32_t port = 0;
    char system[CONFIG_SYSTEM_SIZE] = "9845";
    for (int missing = 0; missing < 11; missing++) {
        auto given = [missing, &number](int which) { return which == missing ? nullptr : &number; };
        forget_error();
        EXPECT_EQ(read_config_file(file_void(), given(0), given(1), missing == 2 ? nullptr : &port, given(3), given(4),
                                   missing == 5 ? nullptr : system, given(6), given(7), given(8), given(9), given(10)),
                  -1);
        EXPECT_EQ(error_text(), "Invalid parameter (NULL pointer)");
        EXPECT_STREQ(system, "9845");
    }
}

TEST_F(ConfigFile, NameIsLogged)
{
    const LogCapture log(3);
    EXPECT_EQ(ConfigReading("").result, 0);
    EXPECT_TRUE(contains(log.text(), "read_config_file(file=")) << log.text();
}

TEST_F(ConfigFile, RandomBytesEndInZeroOrInAnError)
{
    const std::string words[] = {"[fsinfo]\n", "[driveinfo]\n", "[liftypes]\n", "[defaults]\n", " = ",  ",",    "\n",
                                 "\"",         "board",         "system",       "9895",         "0xE1", "CS80", "A"};
    std::mt19937 random(2);
    auto below = [&random](size_t limit) { return static_cast<uint32_t>(random() % limit); };
    uint32_t bad = 0;
    for (int round = 0; round < 400; round++) {
        std::string text;
        for (uint32_t parts = below(400); parts > 0; parts--) {
            if (below(3) == 0) text += static_cast<char>(below(256));
            if (below(2) == 0) text += words[below(std::size(words))];
        }
        const ConfigReading reading(text);
        if (reading.result != 0) {
            EXPECT_EQ(reading.result, -1);
            EXPECT_NE(reading.error, "") << "round " << round;
            EXPECT_GT(reading.fault.line, 0) << "round " << round;
            bad++;
        }
        EXPECT_LE(media_count(), 256u);
        EXPECT_LE(drive_count(), 256u);
        EXPECT_LE(type_count(), 1024u);
    }
    EXPECT_GT(bad, 50u);
}
