// The catalogue and the summary as JSON.
#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/console/program.h"
#include "tests/support/volume_builder.h"

using rapidjson::Document;
using rapidjson::Value;
using tests::json_of;
using tests::json_text;
using tests::LifVolume;
using tests::Outcome;
using tests::run;
using tests::TemporaryFile;

namespace
{

const std::vector<std::string> entry_fields = {
    "name",          "visible", "type",    "type_text", "system",    "location", "size",  "records",
    "record_length", "date",    "deleted", "directory", "protected", "hidden",   "level", "name_hex"};

std::vector<std::string> field_names(const Value &object)
{
    std::vector<std::string> names;
    for (const auto &member : object.GetObject()) names.emplace_back(member.name.GetString());
    return names;
}

// The entries of a listing, each as JSON text.
std::vector<std::string> entries_of(const std::vector<std::string> &words)
{
    const Outcome outcome = run(words);
    EXPECT_EQ(outcome.code, 0) << outcome.errors;
    const Document document = json_of(outcome);
    std::vector<std::string> entries;
    for (const Value &entry : document["entries"].GetArray()) entries.push_back(json_text(entry));
    return entries;
}

// The field of the only file of a volume.
std::string field_of(const LifVolume &contents, const char *field)
{
    const TemporaryFile volume(tests::lif_image(contents));
    const Outcome outcome = run({"ls", "--json", volume.path()});
    EXPECT_EQ(outcome.code, 0) << outcome.errors;
    const Document document = json_of(outcome);
    EXPECT_EQ(document["entries"].Size(), 1U) << outcome.output;
    return json_text(document["entries"][0][field]);
}

LifVolume one_file(const std::string &name)
{
    LifVolume contents;
    contents.entries = {{.name = name}};
    return contents;
}

std::string date_of(const tests::BcdDate &date)
{
    LifVolume contents = one_file("F");
    contents.entries[0].date = date;
    return field_of(contents, "date");
}

}

TEST(LsJson, IsOneObjectWithTheVolumeAndItsFiles)
{
    const TemporaryFile volume(tests::lif_image(tests::demo_volume()));
    const Outcome outcome = run({"ls", "--json", volume.path()});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.output.find('\n'), outcome.output.size() - 1) << "one line";
    const Document document = json_of(outcome);
    EXPECT_EQ(field_names(document), (std::vector<std::string>{"medium", "format", "label", "entries"}));
    EXPECT_STREQ(document["medium"].GetString(), volume.path());
    EXPECT_STREQ(document["format"].GetString(), "LIF");
    EXPECT_STREQ(document["label"].GetString(), "DEMO  ");
    ASSERT_EQ(document["entries"].Size(), 6U);
    for (const Value &entry : document["entries"].GetArray()) EXPECT_EQ(field_names(entry), entry_fields);
}

TEST(LsJson, TellsEachFile)
{
    const TemporaryFile volume(tests::lif_image(tests::demo_volume()));
    const std::vector<std::string> expected = {
        R"({"name":"README","visible":"README.ASCII","type":1,"type_text":"ASCII","system":"98X6","location":4,"size":256,)"
        R"("records":1,"record_length":256,"date":"1985-06-21T14:05:12","deleted":false,"directory":false,)"
        R"("protected":false,"hidden":false,"level":1,"name_hex":"524541444D45"})",
        R"({"name":"RESULTS","visible":"RESULTS.&512.BDAT","type":59745,"type_text":"BDAT","system":"98X6","location":5,)"
        R"("size":1792,"records":3,"record_length":512,"date":"1986-11-03T08:30:00","deleted":false,"directory":false,)"
        R"("protected":false,"hidden":false,"level":1,"name_hex":"524553554C5453"})",
        R"({"name":"OLD","visible":"OLD.PURGE","type":0,"type_text":"PURGE","system":"98X6","location":12,"size":512,)"
        R"("records":2,"record_length":256,"date":"1985-01-02T03:04:05","deleted":true,"directory":false,)"
        R"("protected":false,"hidden":false,"level":1,"name_hex":"4F4C44"})",
        R"({"name":"NOTEST____","visible":"NOTES.TEXT","type":59966,"type_text":"TEXT","system":"PSCL","location":14,)"
        R"("size":2048,"records":8,"record_length":256,"date":"2002-02-28T23:59:59","deleted":false,"directory":false,)"
        R"("protected":false,"hidden":false,"level":1,"name_hex":"4E4F544553545F5F5F5F"})",
        R"({"name":"SORTC_____","visible":"SORT.CODE","type":59954,"type_text":"CODE","system":"PSCL","location":22,)"
        R"("size":768,"records":3,"record_length":256,"date":"1999-12-31T12:00:00","deleted":false,"directory":false,)"
        R"("protected":false,"hidden":false,"level":1,"name_hex":"534F5254435F5F5F5F5F"})",
        R"({"name":"SECRET","visible":"SECRET.BDAT","type":59745,"type_text":"BDAT","system":"98X6","location":25,"size":512,)"
        R"("records":1,"record_length":256,"date":"1987-07-07T07:07:07","deleted":false,"directory":false,)"
        R"("protected":true,"hidden":false,"level":1,"name_hex":"534543524554"})",
        R"({"name":"NODATE","visible":"NODATE.BAS8x","type":57376,"type_text":"BAS8x","system":"SE80","location":27,)"
        R"("size":256,"records":1,"record_length":256,"date":null,"deleted":false,"directory":false,)"
        R"("protected":false,"hidden":false,"level":1,"name_hex":"4E4F44415445"})",
    };
    const std::vector<std::string> entries = entries_of({"ls", "--json", "--purged", volume.path()});
    ASSERT_EQ(entries.size(), expected.size());
    for (size_t i = 0; i < expected.size(); ++i) EXPECT_EQ(entries[i], expected[i]);
}

TEST(LsJson, PatternsSelectAsInTheText)
{
    const TemporaryFile volume(tests::lif_image(tests::demo_volume()));
    EXPECT_EQ(entries_of({"ls", "--json", volume.path(), "*.BDAT"}).size(), 2U);
    const Outcome outcome = run({"ls", "--json", volume.path(), "NOTHING"});
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.errors, tests::error_line("File not found"));
    EXPECT_EQ(json_of(outcome)["entries"].Size(), 0U);
}

TEST(LsJson, VolumeWithoutFilesHasNoEntries)
{
    const TemporaryFile volume(tests::lif_image(LifVolume{}));
    EXPECT_TRUE(entries_of({"ls", "--json", volume.path()}).empty());
}

TEST(LsJson, TypeTextOfSixAndMoreRunsOnIntoTheSystem)
{
    LifVolume contents = one_file("LONGTYPE");
    contents.entries[0].type = 0xE205;
    EXPECT_EQ(field_of(contents, "type_text"), "\"BIN71_98X6\"");
    EXPECT_EQ(field_of(contents, "system"), "\"98X6\"");
    EXPECT_EQ(field_of(contents, "visible"), "\"LONGTYPE.BIN71_98X6\"");
}

TEST(LsJson, NamesComeOutOfRoman8)
{
    EXPECT_EQ(field_of(one_file("A\xD8\xCE\xCF\xDE\xAF\xFC\xFF"), "name"), "\"AÄöüß₤■\uFFFD\"");
    EXPECT_EQ(field_of(one_file("A\xD8\xCE\xCF\xDE\xAF\xFC\xFF"), "visible"), "\"AÄöüß₤■\uFFFD.ASCII\"");
    EXPECT_EQ(field_of(one_file("A\xD8\xCE\xCF\xDE\xAF\xFC\xFF"), "name_hex"), "\"41D8CECFDEAFFCFF\"");
}

TEST(LsJson, ControlBytesQuotesAndBackslashesAreEscaped)
{
    const TemporaryFile volume(tests::lif_image(one_file("A\x01\"\\\x1F\x7F\x80\x9F/")));
    const Outcome outcome = run({"ls", "--json", volume.path()});
    EXPECT_NE(outcome.output.find(R"("name":"A\u0001\"\\\u001F\u007F\u0080\u009F/")"), std::string::npos)
        << outcome.output;
    for (const char character : outcome.output.substr(0, outcome.output.size() - 1)) {
        EXPECT_TRUE(character >= 0x20 && character < 0x7F) << static_cast<int>(character);
    }
    const Document document = json_of(outcome);
    EXPECT_STREQ(document["entries"][0]["name"].GetString(), "A\x01\"\\\x1F\x7F\u0080\u009F/");
}

TEST(LsJson, LabelComesOutOfRoman8)
{
    LifVolume contents;
    contents.label = "\xDB\"\x81%n";
    const TemporaryFile volume(tests::lif_image(contents));
    const Document document = json_of(run({"ls", "--json", volume.path()}));
    EXPECT_STREQ(document["label"].GetString(), "Ü\"\u0081%n ");
}

TEST(LsJson, MediumIsTheHostsText)
{
    if (!tests::runs_natively()) GTEST_SKIP() << "names of files are the other system's here";
    for (const char *extension : {"_größe.lif", "_\"q\".lif", "_tab\there.lif"}) {
        const TemporaryFile volume(tests::lif_image(LifVolume{}), extension);
        EXPECT_STREQ(json_of(run({"ls", "--json", volume.path()}))["medium"].GetString(), volume.path());
    }
    const TemporaryFile latin(tests::lif_image(LifVolume{}), "_\xE4.lif");
    for (const auto &[verb, field] : {std::pair("ls", "medium"), std::pair("info", "msus")}) {
        const std::string medium = json_of(run({verb, "--json", latin.path()}))[field].GetString();
        EXPECT_EQ(medium.substr(medium.rfind('_')), "_\uFFFD.lif") << verb;
    }
}

TEST(LsJson, DatesAreReadAsTheyWereMeant)
{
    struct Case {
        const char *name;
        tests::BcdDate date;
        const char *expected;
    };
    const Case cases[] = {
        {"an ordinary one", {0x84, 0x03, 0x15, 0x09, 0x07, 0x30}, "\"1984-03-15T09:07:30\""},
        {"the first year", {0x46, 0x01, 0x01, 0x00, 0x00, 0x00}, "\"1946-01-01T00:00:00\""},
        {"the last year", {0x45, 0x12, 0x31, 0x23, 0x59, 0x59}, "\"2045-12-31T23:59:59\""},
        {"September", {0x85, 0x09, 0x30, 0x00, 0x00, 0x00}, "\"1985-09-30T00:00:00\""},
        {"October, which reads as month 15", {0x85, 0x10, 0x31, 0x01, 0x02, 0x03}, "\"1985-10-31T01:02:03\""},
        {"November", {0x85, 0x11, 0x01, 0x00, 0x00, 0x00}, "\"1985-11-01T00:00:00\""},
        {"all zeros", {}, "null"},
        {"day 0", {0x85, 0x01, 0x00, 0x00, 0x00, 0x00}, "null"},
        {"day 32", {0x85, 0x01, 0x32, 0x00, 0x00, 0x00}, "null"},
        {"month 13", {0x85, 0x13, 0x01, 0x00, 0x00, 0x00}, "null"},
        {"hour 24", {0x85, 0x01, 0x01, 0x24, 0x00, 0x00}, "null"},
        {"minute 60", {0x85, 0x01, 0x01, 0x00, 0x60, 0x00}, "null"},
        {"second 60", {0x85, 0x01, 0x01, 0x00, 0x00, 0x60}, "null"},
        {"all nines", {0x99, 0x99, 0x99, 0x99, 0x99, 0x99}, "null"},
        {"all ones", {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}, "null"},
    };
    for (const Case &row : cases) EXPECT_EQ(date_of(row.date), row.expected) << row.name;
}

TEST(LsJson, SizesBeyondTheMediumAreToldAsTheyStand)
{
    LifVolume contents = one_file("LARGE");
    contents.entries[0].length = 0x00FFFFFF;
    EXPECT_EQ(field_of(contents, "size"), "4294967040");
    EXPECT_EQ(field_of(contents, "records"), "16777215");
}

TEST(LsJson, NumbersOfAnyLengthAreWhole)
{
    for (const uint32_t number :
         {1u,     9u,     10u,     11u,     99u,      100u,      101u,      999u,       1000u,       9999u,
          10000u, 12345u, 100000u, 999999u, 1000000u, 16777215u, 99999999u, 100000000u, 1000000000u, 4294967295u}) {
        LifVolume contents = one_file("FAR");
        contents.entries[0].start = number;
        EXPECT_EQ(field_of(contents, "location"), std::to_string(number));
    }
    LifVolume contents = one_file("LONG");
    contents.entries[0].type = 0xE961;
    contents.entries[0].implementation = {0x80, 0x01, 0, 0, 0xFF, 0xFF};
    EXPECT_EQ(field_of(contents, "record_length"), "131070");
}

TEST(LsJson, EntriesOfControlBytesOnlyHaveRoom)
{
    LifVolume contents;
    contents.directory_length = 300;
    contents.records = 400;
    contents.tracks = 0;
    for (int i = 0; i < 2000; ++i) contents.entries.push_back({.name = "\x01\x02\x03\x04\x05\x06\x07\x10\x11\x12"});
    const TemporaryFile volume(tests::lif_image(contents));
    const Outcome outcome = run({"ls", "--json", volume.path()});
    const Document document = json_of(outcome);
    ASSERT_EQ(document["entries"].Size(), 2000U);
    for (const Value &entry : document["entries"].GetArray()) {
        ASSERT_STREQ(entry["name"].GetString(), "\x01\x02\x03\x04\x05\x06\x07\x10\x11\x12");
        ASSERT_STREQ(entry["name_hex"].GetString(), "01020304050607101112");
    }
}

TEST(LsJson, NameEndsAtANul)
{
    const std::string name("AB\0CD", 5);
    EXPECT_EQ(field_of(one_file(name), "name"), "\"AB\"");
    EXPECT_EQ(field_of(one_file(name), "visible"), "\"AB.ASCII\"");
    EXPECT_EQ(field_of(one_file(name), "name_hex"), "\"4142\"");
}

TEST(LsJson, LargeDirectoryIsWhole)
{
    const TemporaryFile volume(tests::lif_image(tests::lif_volume_with_files(3000)));
    const Document document = json_of(run({"ls", "--json", volume.path()}));
    ASSERT_EQ(document["entries"].Size(), 3000U);
    EXPECT_STREQ(document["entries"][0]["name"].GetString(), "F000000");
    EXPECT_STREQ(document["entries"][2999]["name"].GetString(), "F002999");
}

TEST(InfoJson, HasTheFieldsOfTheMediumInTheirOrder)
{
    const TemporaryFile volume(tests::lif_image(tests::demo_volume()));
    const Outcome outcome = run({"info", "--json", volume.path()});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.errors, "");
    const std::string expected =
        R"({"format":3,"size":15360,"msus":")" + std::string(volume.path()) +
        R"(","access":0,"magic":32768,"date":"1985-06-21T14:00:00","label":"DEMO  ","dir_id":4096,"version":1,)"
        R"("interleave":0,"cylinders":4,"heads":1,"sectors":15,"records":60,"system_tracks":1,"data_tracks":3,)"
        R"("dir_start":2,"dir_size":2,"dir_entry_size":32,"alloc_start":0,"alloc_size":0,"alloc_entry_size":0,)"
        R"("spare_dir_start":0,"spare_alloc_start":0,"file_area_start":4,"data_size":11520,"needs_check":0,)"
        R"("backup_date":null,"block_size":0,"boot_start":0,"boot_size":0,"fat_start":0,"largest_block":0,"password":"",)"
        R"("inode_count":0,"hfs_present":0,"hfs_record":0,"used_bytes":6144,"free_bytes":5376,"use_type_names":1,)"
        R"("use_typed_extensions":1,"use_file_conversion":0,"use_file_headers":0,"prefer_hfs":0,"show_purged":0})";
    EXPECT_EQ(json_text(json_of(outcome)), expected);
    EXPECT_EQ(outcome.output, expected + "\n");
}

TEST(InfoJson, LongestPathOfCharactersToEscapeIsWhole)
{
    if (!tests::runs_natively()) GTEST_SKIP() << "names of files are the other system's here";
    const size_t begin = std::string(TemporaryFile().path()).size();
    ASSERT_LT(begin, 250U);
    const std::string quotes(std::min<size_t>(259 - begin, 240), '"');
    const TemporaryFile volume(tests::lif_image(LifVolume{}), quotes);
    for (const auto &[verb, field] : {std::pair("ls", "medium"), std::pair("info", "msus")}) {
        EXPECT_STREQ(json_of(run({verb, "--json", volume.path()}))[field].GetString(), volume.path()) << verb;
    }
}

TEST(Info, PrintsTheSummary)
{
    const TemporaryFile volume(tests::lif_image(tests::demo_volume()));
    const Outcome outcome = run({"info", volume.path()});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.output, "Image format: Logical Interchange Format (LIF) id=$1000 version=1\n"
                              "Image size: 15360 bytes\n"
                              "Volume label: \"DEMO  \"\n"
                              "Creation date & time: 21-Jun-85 14:00\n"
                              "Sectors per track: 15\n"
                              "Number of heads or surfaces: 1\n"
                              "Total number of user accessable tracks: 4\n"
                              "Total number of user accessable records: 60\n"
                              "System area starts at record #0\n"
                              "Directory starts at record #2\n"
                              "Directory size: 2 records\n"
                              "File area starts at record #4\n"
                              "Total number of system tracks: 1\n"
                              "Total number of usable data tracks: 3\n"
                              "\n");
}
