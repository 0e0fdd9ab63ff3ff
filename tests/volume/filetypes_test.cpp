// Type words and their texts, against the tables written down a second time.
#include "volume/filetypes.h"

#include <gtest/gtest.h>

#include <iterator>
#include <string>
#include <vector>

#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/support/medium.h"
#include "volume/names.h"

using namespace tests;

namespace
{

struct Row {
    uint32_t word;
    const char *name;
    const char *system = "";
};

constexpr Row system45_systems[] = {{0x00, "9825"}, {0x20, "9845A"}, {0x40, "9831"},
                                    {0x60, "250"},  {0x80, "9835"},  {0xC0, "9845"}};

constexpr Row system45_types[] = {
    {0x0000, "BKUP"}, {0x0200, "CHAR"}, {0x0400, "DATA"}, {0x0800, "PROG"}, {0x0C00, "KEYS"}, {0x0E00, "COMM"},
    {0x1000, "BDAT"}, {0x1200, "SYST"}, {0x1400, "ALL"},  {0x1600, "DROM"}, {0x1800, "BPRG"}, {0x1A00, "FORM"},
    {0x1C00, "OPRM"}, {0x1C00, "DSET"}, {0x1C80, "ROOT"}, {0x1D00, "DSET"}, {0x1D80, "WORK"}, {0x1E00, "ASMB"},
    {0x1E00, "ROOT"}, {0x1E80, "FORM"}, {0x1F00, "TEXT"}, {0x1F80, "TYP1"}};

constexpr Row system250_types[] = {{0x0000, "BKUP"}, {0x0200, "CHAR"}, {0x0400, "DATA"}, {0x0800, "PROG"},
                                   {0x0C00, "KEYS"}, {0x0E00, "COMM"}, {0x1200, "SYST"}, {0x1600, "DROM"},
                                   {0x1800, "BPRG"}, {0x1A00, "FORM"}, {0x1C00, "DSET"}, {0x1E00, "ROOT"}};

constexpr Row lif_systems[] = {{0xDC, "64K"},  {0xE0, "SE80"}, {0xE4, "TERM"}, {0xE8, "9845"}, {0xE9, "98X6"},
                               {0xEA, "PSCL"}, {0xEC, "250"},  {0xF0, "1000"}, {0xF4, "3000"}, {0xF8, "S300"}};

constexpr Row lif_types[] = {{0x0000, "PURGE"},
                             {0x0001, "ASCII"},
                             {0x0003, "DIR"},
                             {0xFFFF, "EOD"},
                             {0x00FF, "D-LEX"},
                             {0xE008, "BIN8x"},
                             {0xE010, "DTA8x"},
                             {0xE020, "BAS8x"},
                             {0xE040, "ALL41"},
                             {0xE050, "KEY41"},
                             {0xE052, "TXT75"},
                             {0xE053, "APP75"},
                             {0xE058, "DAT75"},
                             {0xE060, "STA41"},
                             {0xE070, "X-M41"},
                             {0xE080, "PGM41"},
                             {0xE088, "BAS75"},
                             {0xE089, "LEX75"},
                             {0xE08A, "WKS75"},
                             {0xE0D0, "SDATA"},
                             {0xE0D5, "TEXT_S"},
                             {0xE0F0, "DAT71"},
                             {0xE0F1, "DAT71_S"},
                             {0xE204, "BIN71"},
                             {0xE205, "BIN71_S"},
                             {0xE206, "BIN71_P"},
                             {0xE207, "BIN71_SP"},
                             {0xE208, "LEX71"},
                             {0xE209, "LEX71_S"},
                             {0xE20A, "LEX71_P"},
                             {0xE20B, "LEX71_SP"},
                             {0xE20C, "KEY71"},
                             {0xE20D, "KEY71_S"},
                             {0xE214, "BAS71"},
                             {0xE215, "BAS71_S"},
                             {0xE216, "BAS71_P"},
                             {0xE217, "BAS71_SP"},
                             {0xE218, "FTH71"},
                             {0xE21C, "ROM71"},
                             {0xE848, "DATA", "9845"},
                             {0xE990, "PROG", "9845"},
                             {0xE998, "KEYS", "9845"},
                             {0xE9B0, "BPRG", "9845"},
                             {0xE9B8, "ASMB", "9845"},
                             {0xE942, "SYSTM", "98X6"},
                             {0xE946, "HP-UX"},
                             {0xE94B, "HP-UX", "98X6"},
                             {0xE950, "PROG", "98X6"},
                             {0xE961, "BDAT", "98X6"},
                             {0xE971, "BIN", "98X6"},
                             {0xE9C3, "DIR", "500"},
                             {0xE9C9, "DATA", "500"},
                             {0xE9D0, "PROG", "500"},
                             {0xE9F1, "BIN", "500"},
                             {0xEA0A, "PDATA", "PASCL"},
                             {0xEA32, "CODE", "PASCL"},
                             {0xEA3E, "TEXT", "PASCL"},
                             {0xE008, "BIN", "SER80"},
                             {0xE00A, "BIN", "SER80"},
                             {0xE010, "BDAT", "SER80"},
                             {0xE012, "BDAT", "SER80"},
                             {0xE020, "PROG", "SER80"},
                             {0xE022, "PROG", "SER80"}};

static_assert(std::size(lif_types) == 63);

template <size_t n> void expect_table(const TypeName *table, const Row (&rows)[n])
{
    for (const Row &row : rows) {
        ASSERT_NE(table->name, nullptr) << row.name;
        EXPECT_EQ(table->word, row.word) << row.name;
        EXPECT_STREQ(table->name, row.name);
        ++table;
    }
    EXPECT_EQ(table->name, nullptr);
}

std::string text_of(uint32_t format, uint16_t type, const char *name = nullptr, uint32_t use_type_names = 1)
{
    MediaDescriptor md{};
    md.format = format;
    md.use_type_names = use_type_names;
    char text[TYPE_TEXT_SIZE] = "";
    get_filetype(&md, text, type, name);
    return text;
}

struct Word {
    int32_t result = 99;
    uint16_t type = 0x5A5A;
};

Word word_of(uint32_t format, const char *text, const char *system = nullptr)
{
    Word w;
    w.result = set_filetype(format, text, system, &w.type);
    return w;
}

void expect_word(uint32_t format, const char *text, const char *system, uint16_t type)
{
    const Word w = word_of(format, text, system);
    EXPECT_EQ(w.result, 0) << text;
    EXPECT_EQ(w.type, type) << text << ' ' << (system != nullptr ? system : "");
}

void expect_no_word(uint32_t format, const char *text, const char *system, const std::string &error)
{
    forget_error();
    EXPECT_EQ(word_of(format, text, system).result, -1) << text;
    EXPECT_EQ(error_text(), error) << text;
}

class WithoutPascalMode
{
  public:
    WithoutPascalMode()
    {
        pascal_mode = 0;
    }
    ~WithoutPascalMode()
    {
        pascal_mode = 1;
    }
    WithoutPascalMode(const WithoutPascalMode &) = delete;
    WithoutPascalMode &operator=(const WithoutPascalMode &) = delete;
};

}

TEST(TypeTables, System45)
{
    expect_table(Sys45_system, system45_systems);
    expect_table(Sys45_filetype, system45_types);
    expect_table(Sys250_filetype, system250_types);
}

TEST(TypeTables, LifSystems)
{
    expect_table(LIF_system, lif_systems);
}

TEST(TypeTables, LifTypesInTheirOrder)
{
    const LifType *type = default_liftype_table;
    for (const Row &row : lif_types) {
        EXPECT_EQ(type->type, row.word) << row.name;
        EXPECT_STREQ(type->name, row.name);
        EXPECT_STREQ(type->system, row.system) << row.name;
        ++type;
    }
    EXPECT_STREQ(type->name, "");
}

TEST(TypeTables, TheDefaultIsInForce)
{
    EXPECT_EQ(liftype_table, &default_liftype_table[0]);
    EXPECT_EQ(pascal_mode, 1);
}

TEST(TypeText, LifTypesByTheirFirstRow)
{
    for (const Row &row : lif_types) {
        const Row *first = lif_types;
        while (first->word != row.word) ++first;
        EXPECT_EQ(text_of(FORMAT_LIF, static_cast<uint16_t>(row.word)), first->name);
        EXPECT_EQ(text_of(FORMAT_SDF, static_cast<uint16_t>(row.word)), first->name);
    }
    EXPECT_EQ(text_of(FORMAT_LIF, 0xE010), "DTA8x");
    EXPECT_EQ(text_of(FORMAT_LIF, 0xE00A), "BIN");
}

TEST(TypeText, UnknownWordsAreHexadecimalInLowerCase)
{
    EXPECT_EQ(text_of(FORMAT_LIF, 0xE123), "#e123");
    EXPECT_EQ(text_of(FORMAT_LIF, 0x0002), "#0002");
    EXPECT_EQ(text_of(FORMAT_SDF, 0xABCD), "#abcd");
    EXPECT_EQ(text_of(FORMAT_DISK45, 0xC600), "#c600");
    EXPECT_EQ(text_of(FORMAT_DISK45, 0x7D80), "#7d80");
}

TEST(TypeText, WithoutTypeNamesEveryWordIsHexadecimal)
{
    EXPECT_EQ(text_of(FORMAT_LIF, 0x0001, nullptr, 0), "#0001");
    EXPECT_EQ(text_of(FORMAT_DISK45, 0xC800, nullptr, 0), "#c800");
    EXPECT_EQ(text_of(FORMAT_LIF, 0xEA32, "ABCC______", 0), "#ea32");
}

TEST(TypeText, FormatsWithoutTypesAreHexadecimal)
{
    for (const uint32_t format : {0u, 5u, 6u, 0xFFFFFFFFu}) EXPECT_EQ(text_of(format, 0x0001), "#0001") << format;
}

TEST(TypeText, System45DiscTypes)
{
    EXPECT_EQ(text_of(FORMAT_DISK45, 0xC400), "DATA");
    EXPECT_EQ(text_of(FORMAT_DISK45, 0xC87F), "PROG"); // the low bits belong to the location
    EXPECT_EQ(text_of(FORMAT_DISK45, 0x2400), "DATA");
    EXPECT_EQ(text_of(FORMAT_DISK45, 0xDB80), "FORM"); // below $1C00 bits 7 and 8 don't count
    EXPECT_EQ(text_of(FORMAT_DISK45, 0xDC00), "OPRM");
    EXPECT_EQ(text_of(FORMAT_DISK45, 0xDC80), "ROOT");
    EXPECT_EQ(text_of(FORMAT_DISK45, 0xDD00), "DSET");
    EXPECT_EQ(text_of(FORMAT_DISK45, 0xDE00), "ASMB");
    EXPECT_EQ(text_of(FORMAT_DISK45, 0xDFFF), "TYP1");
}

TEST(TypeText, System250DiscTypes)
{
    EXPECT_EQ(text_of(FORMAT_DISK45, 0x7C00), "DSET");
    EXPECT_EQ(text_of(FORMAT_DISK45, 0x7E00), "ROOT");
    EXPECT_EQ(text_of(FORMAT_DISK45, 0x6800), "PROG");
    EXPECT_EQ(text_of(FORMAT_DISK45, 0x7000), "#7000"); // BDAT elsewhere
}

TEST(TypeText, System45TapeTypes)
{
    EXPECT_EQ(text_of(FORMAT_TAPE45, 0xC8), "PROG");
    EXPECT_EQ(text_of(FORMAT_TAPE45, 0x24), "DATA");
    EXPECT_EQ(text_of(FORMAT_TAPE45, 0x7C), "OPRM"); // the table of the 250 is for discs
    EXPECT_EQ(text_of(FORMAT_TAPE45, 0xDF), "ASMB"); // bit 8 of the key is never looked at
}

TEST(TypeText, PascalMarkers)
{
    const struct {
        uint16_t type;
        const char *name;
        const char *text;
    } rows[] = {{1, "ABCA______", "ASC"},       {0xE942, "ABCDEFGHIS", "SYSTM"}, {0xE94B, "ABCT______", "HP-UX"},
                {0xEA32, "ABCC______", "CODE"}, {0xEA3E, "ABCT______", "TEXT"},  {0xEA32, "ABCU______", "UX"},
                {0xEA3E, "ABCU______", "UX"},   {0xEA32, "ABCB______", "BAD"},   {0xEA3E, "ABCDEFGHIB", "BAD"}};
    for (const auto &[type, name, text] : rows) {
        EXPECT_EQ(text_of(FORMAT_LIF, type, name), text) << name;
        EXPECT_EQ(text_of(FORMAT_SDF, type, name), text) << name;
    }
}

TEST(TypeText, WithoutAMarkerTheTableCounts)
{
    EXPECT_EQ(text_of(FORMAT_LIF, 1, "ABCA_____"), "ASCII"); // nine characters
    EXPECT_EQ(text_of(FORMAT_LIF, 1, "ABCB______"), "ASCII");
    EXPECT_EQ(text_of(FORMAT_LIF, 1, nullptr), "ASCII");
    EXPECT_EQ(text_of(FORMAT_LIF, 0xEA0A, "ABCU______"), "PDATA");
    const WithoutPascalMode off;
    EXPECT_EQ(text_of(FORMAT_LIF, 1, "ABCA______"), "ASCII");
    EXPECT_EQ(text_of(FORMAT_LIF, 0xEA32, "ABCU______"), "CODE");
}

TEST(TypeText, Hazard_C4_ANameOfUnderlinesHasNoMarker)
{
    EXPECT_EQ(text_of(FORMAT_LIF, 0xEA32, "__________"), "CODE");
    EXPECT_EQ(text_of(FORMAT_LIF, 1, "__________"), "ASCII");
    EXPECT_EQ(text_of(FORMAT_LIF, 1, "A_________"), "ASC");
}

TEST(TypeWord, NullPointersAreErrors)
{
    uint16_t type = 0;
    forget_error();
    EXPECT_EQ(set_filetype(FORMAT_LIF, nullptr, nullptr, &type), -1);
    EXPECT_EQ(error_text(), "Invalid parameter (Null pointer)");
    forget_error();
    EXPECT_EQ(set_filetype(FORMAT_LIF, "ASCII", nullptr, nullptr), -1);
    EXPECT_EQ(error_text(), "Invalid parameter (Null pointer)");
}

TEST(TypeWord, LifTypes)
{
    const struct {
        const char *text, *system;
        uint16_t type;
    } rows[] = {{"PURGE", nullptr, 0x0000},    {"ASCII", nullptr, 0x0001}, {"DIR", nullptr, 0x0003},
                {"EOD", nullptr, 0xFFFF},      {"D-LEX", nullptr, 0x00FF}, {"PROG", nullptr, 0xE950},
                {"PROG", "", 0xE950},          {"BDAT", nullptr, 0xE961},  {"BIN", nullptr, 0xE971},
                {"HP-UX", nullptr, 0xE946},    {"SYSTM", nullptr, 0xE942}, {"DATA", nullptr, 0xE848},
                {"KEYS", nullptr, 0xE998},     {"PDATA", nullptr, 0xEA0A}, {"BAS8x", nullptr, 0xE020},
                {"BIN71_SP", nullptr, 0xE207}, {"PROG", "SE80", 0xE020},   {"PROG", "9845", 0xE990},
                {"DATA", "9845", 0xE848},      {"BDAT", "SE80", 0xE010},   {"BIN", "SE80", 0xE008},
                {"BIN", "3000", 0xE971},       {"ASCII", "SE80", 0x0001},  {"PDATA", "PSCL", 0xEA0A}};
    for (const auto &[text, system, type] : rows) {
        expect_word(FORMAT_LIF, text, system, type);
        expect_word(FORMAT_SDF, text, system, type);
    }
}

TEST(TypeWord, PascalTypes)
{
    expect_word(FORMAT_LIF, "CODE", nullptr, 0xEA32);
    expect_word(FORMAT_LIF, "TEXT", nullptr, 0xEA3E);
    expect_word(FORMAT_LIF, "UX", nullptr, 0xEA0A);
    expect_word(FORMAT_LIF, "BAD", nullptr, 0xEA0A);
    expect_word(FORMAT_LIF, "ASC", nullptr, 0x0001);
    const WithoutPascalMode off;
    expect_word(FORMAT_LIF, "CODE", nullptr, 0xEA32);
    expect_no_word(FORMAT_LIF, "UX", nullptr, "Unknown file type (\"UX\")");
    expect_no_word(FORMAT_LIF, "ASC", nullptr, "Unknown file type (\"ASC\")");
}

TEST(TypeWord, System45DiscTypes)
{
    const struct {
        const char *text, *system;
        uint16_t type;
    } rows[] = {{"BKUP", nullptr, 0x2000}, {"CHAR", nullptr, 0x2200}, {"DATA", nullptr, 0x2400},
                {"PROG", nullptr, 0xC800}, {"DATA", "9835", 0x2400},  {"PROG", "9835", 0x8800},
                {"PROG", "250", 0x6800},   {"PROG", "9831", 0x4800},  {"PROG", "9845A", 0x2800},
                {"DSET", nullptr, 0xDC00}, {"ROOT", nullptr, 0xDC80}, {"FORM", nullptr, 0xDA00},
                {"TYP1", "9845", 0xDF80}};
    for (const auto &[text, system, type] : rows) expect_word(FORMAT_DISK45, text, system, type);
}

TEST(TypeWord, System45TapeTypes)
{
    const struct {
        const char *text, *system;
        uint16_t type;
    } rows[] = {{"BKUP", nullptr, 0x20}, {"CHAR", nullptr, 0x22}, {"DATA", nullptr, 0x24}, {"PROG", nullptr, 0xC8},
                {"DATA", "9835", 0x24},  {"PROG", "9835", 0x88},  {"KEYS", "250", 0x6C},   {"ASMB", nullptr, 0xDE}};
    for (const auto &[text, system, type] : rows) expect_word(FORMAT_TAPE45, text, system, type);
}

TEST(TypeWord, UnknownTypes)
{
    for (const uint32_t format : {0u, 1u, 2u, 3u, 4u, 5u}) {
        expect_no_word(format, "NONE", nullptr, "Unknown file type (\"NONE\")");
        expect_no_word(format, "", nullptr, "Unknown file type (\"\")");
    }
    expect_no_word(FORMAT_LIF, "ascii", nullptr, "Unknown file type (\"ascii\")");
    expect_no_word(FORMAT_UNKNOWN, "ASCII", nullptr, "Unknown file type (\"ASCII\")");
}

TEST(TypeWord, UnknownSystems)
{
    expect_no_word(FORMAT_LIF, "PROG", "9825", "Unknown system (\"9825\")");
    expect_no_word(FORMAT_LIF, "ASCII", "XX", "Unknown system (\"XX\")");
    expect_no_word(FORMAT_DISK45, "PROG", "98X6", "Unknown system (\"98X6\")");
    expect_no_word(FORMAT_TAPE45, "PROG", "NONE", "Unknown system (\"NONE\")");
}

TEST(TypeWord, TheSystemWithTheWordZeroIsNone)
{
    expect_no_word(FORMAT_DISK45, "PROG", "9825", "Unknown system (\"9825\")");
}

TEST(TypeWord, HexadecimalTextIsAType)
{
    for (const uint32_t format : {0u, 1u, 2u, 3u, 4u, 5u}) {
        expect_word(format, "#E123", nullptr, 0xE123);
        expect_word(format, "#e123", nullptr, 0xE123);
        expect_word(format, "#1", nullptr, 0x0001);
        expect_no_word(format, "#E1234", nullptr, "Unknown file type (\"#E1234\")");
    }
}

TEST(TypeWord, Hazard_C14_ANumberSignAloneIsNoType)
{
    expect_no_word(FORMAT_LIF, "#", nullptr, "Unknown file type (\"#\")");
}
