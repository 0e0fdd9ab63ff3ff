// The section [liftypes]: types added and replaced, and what a medium shows of them.
#include <cstring>

#include "base/error.h"
#include "tests/config/config_support.h"
#include "tests/support/medium.h"
#include "volume/names.h"

using namespace tests;

namespace
{

class LifTypeRows : public ConfigTest
{
};

const char types[] = "[liftypes]";

std::string rows_of(uint32_t first, uint32_t count)
{
    std::string text;
    for (uint32_t i = 0; i < count; i++) text += std::to_string(first + i) + " = T" + std::to_string(i) + "\n";
    return text;
}

constexpr uint32_t free_types = 1024 - 63;
constexpr uint32_t unused_type = 0x2000; // and those behind it

}

TEST_F(LifTypeRows, NameAndSystem)
{
    const ConfigReading reading(in_section(types, "0xE123 = MINE\n0xE124 = \"with blank\",,SE80\n57637=DECIMAL"));
    ASSERT_EQ(reading.result, 0) << reading.error;
    EXPECT_EQ(custom_liftype_table[63].type, 0xE123u);
    EXPECT_STREQ(custom_liftype_table[63].name, "MINE");
    EXPECT_STREQ(custom_liftype_table[63].system, "");
    EXPECT_STREQ(custom_liftype_table[64].name, "with blank");
    EXPECT_STREQ(custom_liftype_table[64].system, "SE80");
    EXPECT_EQ(custom_liftype_table[65].type, 0xE125u);
    EXPECT_EQ(type_count(), 66u);
}

TEST_F(LifTypeRows, SystemTakesAnEmptyFieldAheadOfIt)
{
    EXPECT_EQ(ConfigReading(in_section(types, "1 = A,SYS\n")).result, 0);
    EXPECT_STREQ(custom_type(1)->system, "") << "there is nothing where it should stand";
    EXPECT_EQ(ConfigReading(in_section(types, "1 = A,x,SYS,more\n")).result, 0);
    EXPECT_STREQ(custom_type(1)->system, "SYS");
}

TEST_F(LifTypeRows, FirstRowOfATypeIsReplaced)
{
    EXPECT_EQ(ConfigReading(in_section(types, "0xE008 = OTHER")).result, 0);
    EXPECT_EQ(type_count(), 63u);
    EXPECT_STREQ(custom_liftype_table[5].name, "OTHER");
    EXPECT_STREQ(custom_liftype_table[5].system, "");
    EXPECT_STREQ(custom_liftype_table[57].name, "BIN") << "the second row of that type stays";
    EXPECT_EQ(ConfigReading(in_section(types, "0xE848 = DATA2")).result, 0);
    EXPECT_STREQ(custom_type(0xE848)->system, "") << "the system text goes";
    EXPECT_STREQ(default_liftype_table[5].name, "BIN8x");
}

TEST_F(LifTypeRows, BadAssignments)
{
    for (const char *line : {"1", "1 A", "1 , A", "1 =", "name = A", "1.5 = A", "= = A", "--1 = A", "= 1"})
        expect_config_error(in_section(types, line), 2, "bad liftype assignment in line 2");
    EXPECT_EQ(type_count(), 63u);
}

TEST_F(LifTypeRows, KeepsAnyWordForTheAssignmentOfAType)
{
    EXPECT_EQ(ConfigReading(in_section(types, "0xE123 is MINE\n0xE124, ==, YOURS")).result, 0);
    EXPECT_STREQ(custom_type(0xE123)->name, "MINE");
    EXPECT_STREQ(custom_type(0xE124)->name, "YOURS");
}

TEST_F(LifTypeRows, NegativeTypesAreTakenAsTheyStand)
{
    EXPECT_EQ(ConfigReading(in_section(types, "-1 = LAST")).result, 0);
    EXPECT_EQ(custom_liftype_table[63].type, 0xFFFFFFFFu) << "which no file has";
}

TEST_F(LifTypeRows, Hazard_M7_TableIsFilledToItsLastRow)
{
    EXPECT_EQ(ConfigReading(in_section(types, rows_of(unused_type, free_types))).result, 0);
    EXPECT_EQ(type_count(), 1024u);
    EXPECT_EQ(custom_liftype_table[1023].type, unused_type + free_types - 1);
    expect_config_error(in_section(types, rows_of(unused_type, free_types + 1)), static_cast<int32_t>(free_types) + 2,
                        "max. number of custom definable LIF types (1024) exceed");
    EXPECT_EQ(type_count(), 1024u);
    EXPECT_EQ(ConfigReading(in_section(types, rows_of(unused_type, free_types) + "1 = ASC")).result, 0)
        << "those that are there can still be changed";
}

TEST_F(LifTypeRows, Hazard_M7_FullTableEndsASearch)
{
    ASSERT_EQ(ConfigReading(in_section(types, rows_of(unused_type, free_types))).result, 0);
    use_custom_tables();
    uint16_t type = 0;
    EXPECT_EQ(set_filetype(FORMAT_LIF, "NOTYPE", "", &type), -1);
    EXPECT_EQ(global_error, 200u);
    EXPECT_EQ(set_filetype(FORMAT_LIF, ("T" + std::to_string(free_types - 1)).c_str(), "", &type), 0);
    EXPECT_EQ(type, unused_type + free_types - 1);
}

TEST_F(LifTypeRows, Hazard_M8_RowsBehindTheBuiltinOnesAreEmpty)
{
    ASSERT_EQ(ConfigReading(in_section(types, rows_of(unused_type, free_types))).result, 0);
    ASSERT_EQ(ConfigReading("").result, 0);
    const LifType empty = {};
    for (size_t i = 63; i <= MOST_CUSTOM_LIFTYPES; i++)
        ASSERT_EQ(memcmp(&custom_liftype_table[i], &empty, sizeof empty), 0) << i;
}

TEST_F(LifTypeRows, Hazard_M9_LongTextsAreCut)
{
    const std::string long_text(40, 'n');
    EXPECT_EQ(ConfigReading(in_section(types, "1 = " + long_text + ",," + long_text)).result, 0);
    EXPECT_EQ(custom_type(1)->name, std::string(15, 'n'));
    EXPECT_EQ(custom_type(1)->system, std::string(15, 'n'));
    EXPECT_EQ(custom_liftype_table[2].type, 3u);
}

TEST_F(LifTypeRows, MediumShowsTheNewNames)
{
    ASSERT_EQ(ConfigReading(in_section(types, "0xE0F0 = MINE\n1 = ASC")).result, 0);
    use_custom_tables();
    LifVolume volume;
    volume.entries = {{.name = "ONE", .type = 0xE0F0}, {.name = "TWO", .type = 1}, {.name = "THREE", .type = 0xE0F1}};
    const OpenVolume open(volume);
    ASSERT_NE(open.md, nullptr);
    EXPECT_EQ(type_text(*entry_named(open.md, "ONE")).rfind("MINE", 0), 0u);
    EXPECT_EQ(type_text(*entry_named(open.md, "TWO")).rfind("ASC", 0), 0u);
    EXPECT_EQ(type_text(*entry_named(open.md, "THREE")).rfind("DAT71", 0), 0u);
}

TEST_F(LifTypeRows, Hazard_C3_LongTypeNameStaysInItsFields)
{
    ASSERT_EQ(ConfigReading(in_section(types, "0xE0F0 = ABCDEFGHIJKLMNO")).result, 0);
    use_custom_tables();
    LifVolume volume;
    volume.entries = {{.name = "LONG", .type = 0xE0F0, .start = 5, .length = 3}};
    const OpenVolume open(volume, OPEN_READ_VOLUME);
    ASSERT_NE(open.md, nullptr);
    const FileInfo *info = entry_named(open.md, "LONG");
    ASSERT_NE(info, nullptr);
    EXPECT_EQ(info->type, 0xE0F0);
    EXPECT_EQ(info->location, 5u);
    EXPECT_EQ(info->size, 3u * 256);
    EXPECT_EQ(info->attributes, 0);
    char visible[VISIBLE_NAME_SIZE];
    compose_filename(open.md, info, visible);
    EXPECT_STREQ(visible, "LONG.ABCDEFSE80");
}
