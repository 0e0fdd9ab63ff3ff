// The section [defaults]: every key with what it takes and refuses.
#include "base/error.h"
#include "tests/config/config_support.h"

using namespace tests;

namespace
{

class DefaultRows : public ConfigTest
{
};

const char defaults[] = "[defaults]";

struct Value {
    const char *line;
    int32_t ConfigReading::*place;
    int32_t value;
};

const Value values[] = {
    {"loglevel = 3", &ConfigReading::loglevel, 3},
    {"loglevel = -1", &ConfigReading::loglevel, -1},
    {"loglevel = \"\"", &ConfigReading::loglevel, 0},
    {"board = 4", &ConfigReading::board, 4},
    {"board = 0x10", &ConfigReading::board, 16},
    {"board = 1, 2, 3", &ConfigReading::board, 1},
    {"board is 6", &ConfigReading::board, 6},
    {"nosleep = TRUE", &ConfigReading::nosleep, 0},
    {"nosleep = 1", &ConfigReading::nosleep, 0},
    {"nosleep = false", &ConfigReading::nosleep, 1},
    {"nosleep = 0", &ConfigReading::nosleep, 1},
    {"fastschedule = True", &ConfigReading::fastschedule, 0},
    {"fastschedule = 1", &ConfigReading::fastschedule, 0},
    {"fastschedule = FALSE", &ConfigReading::fastschedule, 1},
    {"fastschedule = 0", &ConfigReading::fastschedule, 1},
    {"filesystem = DISK45", &ConfigReading::filesystem, 1},
    {"filesystem = tape45", &ConfigReading::filesystem, 2},
    {"filesystem = Lif", &ConfigReading::filesystem, 3},
    {"use_file_headers = NONE", &ConfigReading::use_file_headers, 0},
    {"use_file_headers = 0", &ConfigReading::use_file_headers, 0},
    {"use_file_headers = false", &ConfigReading::use_file_headers, 0},
    {"use_file_headers = hpbasic", &ConfigReading::use_file_headers, 1},
    {"use_file_headers = HPCalc", &ConfigReading::use_file_headers, 2},
    {"use_type_names = 0", &ConfigReading::use_type_names, 0},
    {"use_type_names = 1", &ConfigReading::use_type_names, 1},
    {"use_typed_extensions = 0", &ConfigReading::use_typed_extensions, 0},
    {"use_typed_extensions = 2", &ConfigReading::use_typed_extensions, 2},
    {"use_file_conversion = 1", &ConfigReading::use_file_conversion, 1},
};

struct Refused {
    const char *key;
    const char *value;
    const char *words; // ahead of " assignment in line 2"
};

const Refused refused[] = {
    {"loglevel", "high", "bad loglevel"},
    {"board", "first", "bad board"},
    {"port", "-1", "bad port"},
    {"port", "0x3Z", "bad port"},
    {"nosleep", "yes", "bad nosleep"},
    {"nosleep", "2", "bad nosleep"},
    {"nosleep", "\"\"", "bad nosleep"},
    {"fastschedule", "on", "bad fastschedule"},
    {"filesystem", "SDF", "bad file system"},
    {"filesystem", "3", "bad file system"},
    {"use_file_headers", "TRUE", "bad use_headers"},
    {"use_file_headers", "1", "bad use_headers"},
    {"use_type_names", "TRUE", "bad use_typed_names"},
    {"use_typed_extensions", "yes", "bad use_typed_extensions"},
    {"use_file_conversion", "no", "bad use_file_conversion"},
};

}

TEST_F(DefaultRows, EveryValueInItsPlaceAlone)
{
    int32_t ConfigReading::*const places[] = {
        &ConfigReading::loglevel,
        &ConfigReading::board,
        &ConfigReading::nosleep,
        &ConfigReading::fastschedule,
        &ConfigReading::filesystem,
        &ConfigReading::use_file_headers,
        &ConfigReading::use_type_names,
        &ConfigReading::use_typed_extensions,
        &ConfigReading::use_file_conversion,
    };
    for (const Value &row : values) {
        const ConfigReading reading(in_section(defaults, row.line));
        EXPECT_EQ(reading.result, 0) << row.line << reading.error;
        for (const auto place : places)
            EXPECT_EQ(reading.*place, place == row.place ? row.value : untouched) << row.line;
        EXPECT_EQ(reading.port, static_cast<uint32_t>(untouched)) << row.line;
    }
}

TEST_F(DefaultRows, Port)
{
    EXPECT_EQ(ConfigReading(in_section(defaults, "port = 0x2E1")).port, 0x2E1u);
    EXPECT_EQ(ConfigReading(in_section(defaults, "port = 2e1")).port, 0x2E1u);
    EXPECT_EQ(ConfigReading(in_section(defaults, "port = 737")).port, 737u);
    EXPECT_EQ(ConfigReading(in_section(defaults, "port = FFFFFFFFFF")).port, 0xFFFFFFFFu);
}

TEST_F(DefaultRows, System)
{
    EXPECT_STREQ(ConfigReading(in_section(defaults, "system = 98x6")).system, "98X6");
    EXPECT_STREQ(ConfigReading(in_section(defaults, "system = \"a b\"")).system, "A B");
    EXPECT_STREQ(ConfigReading(in_section(defaults, "system =")).system, "");
    EXPECT_STREQ(ConfigReading(in_section(defaults, "board = 1")).system, "") << "the caller's own goes in any case";
}

TEST_F(DefaultRows, Hazard_M9_LongSystemIsCut)
{
    EXPECT_STREQ(ConfigReading(in_section(defaults, "system = " + std::string(300, 's'))).system, "SSSSSSSSSSSSSSS");
}

TEST_F(DefaultRows, Hazard_M12_NegativeBoardIsHandedOnAsItIs)
{
    const ConfigReading reading(in_section(defaults, "board = -1"));
    EXPECT_EQ(reading.result, 0);
    EXPECT_EQ(reading.board, -1);
}

TEST_F(DefaultRows, ValuesThatAreRefused)
{
    for (const Refused &row : refused) {
        const std::string words = std::string(row.words) + " assignment in line 2";
        expect_config_error(in_section(defaults, std::string(row.key) + " = " + row.value), 2, words);
    }
}

TEST_F(DefaultRows, ValuesThatAreMissing)
{
    const char *before = "";
    for (const Refused &row : refused) {
        if (strcmp(before, row.key) == 0) continue;
        before = row.key;
        const std::string words = std::string(row.words) + " assignment in line 2";
        expect_config_error(in_section(defaults, std::string(row.key) + " ="), 2, words);
    }
}

TEST_F(DefaultRows, LinesWithoutAssignment)
{
    for (const char *line : {"board", "board 3", "unknown", "unknown 3", "=", "board, 3"})
        expect_config_error(in_section(defaults, line), 2, "bad assignment in line 2");
}

TEST_F(DefaultRows, UnknownKeysAreIgnored)
{
    const ConfigReading reading(in_section(defaults, "Board = 3\nwho = knows\nwhat is it\nunknown =\n= = ="));
    EXPECT_EQ(reading.result, 0) << reading.error;
    EXPECT_EQ(reading.board, untouched) << "case counts";
}

TEST_F(DefaultRows, LastOfTwoStays)
{
    EXPECT_EQ(ConfigReading(in_section(defaults, "board = 1\nboard = 2")).board, 2);
}
