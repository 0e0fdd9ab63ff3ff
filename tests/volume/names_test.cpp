// The short names of volumes and the visible names of a host.
#include "volume/names.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/support/medium.h"

using namespace tests;

namespace
{

struct Checked {
    int32_t result;
    std::string message;
};

Checked check(uint32_t format, const char *name, const char *extension = nullptr)
{
    char message[NAME_MESSAGE_SIZE] = "left over";
    const int32_t result = check_valid_filename(format, name, extension, message);
    return {result, message};
}

void expect_check(uint32_t format, const char *name, int32_t result, const char *message)
{
    const Checked c = check(format, name);
    EXPECT_EQ(c.result, result) << name;
    EXPECT_EQ(c.message, message) << name;
}

MediaDescriptor medium_of(uint32_t format, uint32_t typed = 1)
{
    MediaDescriptor md = usual_options();
    md.format = format;
    md.use_typed_extensions = typed;
    return md;
}

FileInfo of_type(const std::string &name, uint16_t type, const std::string &text)
{
    FileInfo info = named(name, text);
    info.type = type;
    return info;
}

std::string decoded(const FileInfo &info, uint32_t format = FORMAT_LIF)
{
    char name[VISIBLE_NAME_SIZE] = "";
    decode_filename(&info, format, name);
    return name;
}

std::string encoded(const char *name, uint16_t type, const std::string &text, uint32_t format = FORMAT_LIF)
{
    FileInfo info = of_type("", type, text);
    encode_filename(&info, format, name);
    return info.name;
}

std::string composed(const FileInfo &info, uint32_t format = FORMAT_LIF, uint32_t typed = 1)
{
    const MediaDescriptor md = medium_of(format, typed);
    char name[VISIBLE_NAME_SIZE] = "";
    compose_filename(&md, &info, name);
    return name;
}

FileInfo taken_apart(const std::string &path, uint32_t format = FORMAT_LIF, uint32_t typed = 1, int32_t strip = 0)
{
    const MediaDescriptor md = medium_of(format, typed);
    FileInfo info{};
    info.type = 0x7777; // no type that any text stands for
    process_filepath(&md, &info, path.c_str(), nullptr, strip);
    return info;
}

void expect_parts(const std::string &path, const char *name, uint16_t type, uint32_t record_len)
{
    const FileInfo info = taken_apart(path);
    EXPECT_STREQ(info.name, name) << path;
    EXPECT_EQ(info.type, type) << path;
    EXPECT_EQ(info.record_len, record_len) << path;
}

constexpr uint16_t untouched = 0x7777;

}

TEST(NameCheck, NullIsAnError)
{
    forget_error();
    EXPECT_EQ(check(FORMAT_LIF, nullptr).result, -1);
    EXPECT_EQ(error_text(), "Invalid parameter (Null pointer)");
}

TEST(NameCheck, EmptyIsRefused)
{
    for (const uint32_t format : {1u, 2u, 3u, 4u}) expect_check(format, "", -1, "empty filename");
}

TEST(NameCheck, OtherFormatsAreRefused)
{
    for (const uint32_t format : {0u, 5u, 6u, 0xFFFFFFFFu}) {
        forget_error();
        expect_check(format, "NAME", -1, "unsupported format");
        EXPECT_EQ(global_error, 203u);
    }
}

TEST(NameCheck, System45)
{
    for (const uint32_t format : {uint32_t{FORMAT_DISK45}, uint32_t{FORMAT_TAPE45}}) {
        expect_check(format, "ABCDEF", 0, "");
        expect_check(format, "1$", 0, "");
        expect_check(format, "ABCDEFG", 0, "filename too long (truncated)");
        expect_check(format, "A B", 0, "filename contains blanks (ignored)");
        expect_check(format, "A B C D E F", 0, "filename contains blanks (ignored)");
        expect_check(format, "A BCDEFG", 0, "filename contains blanks (ignored)");
        expect_check(format, "A:B", -1, "filename contains invalid character(s)");
        expect_check(format, "A\"B", -1, "filename contains invalid character(s)");
        expect_check(format, "A\xFF", -1, "filename contains invalid character(s)");
        expect_check(format, "A BCDE:", -1, "filename contains invalid character(s)");
        expect_check(format, "ABCDEF:", 0, "filename too long (truncated)");
    }
}

TEST(NameCheck, LifAndSdf)
{
    expect_check(FORMAT_LIF, "ABCDEFGHIJ", 0, "");
    expect_check(FORMAT_LIF, "ABCDEFGHIJK", 0, "filename too long (truncated)");
    expect_check(FORMAT_LIF, "abc_1", 0, "");
    expect_check(FORMAT_LIF, "1ABC", 0, "filename should start with a letter");
    expect_check(FORMAT_LIF, "_ABC", 0, "filename should start with a letter");
    expect_check(FORMAT_LIF, "1ABCDEFGHIJKLM", 0, "filename should start with a letter");
    expect_check(FORMAT_SDF, "ABCDEFGHIJKLMNOP", 0, "");
    expect_check(FORMAT_SDF, "ABCDEFGHIJKLMNOPQ", 0, "filename too long (truncated)");
}

TEST(NameCheck, KeepsNameCheckByFirstCharacter)
{
    expect_check(FORMAT_LIF, "A:\"\xFF *", 0, "");
    expect_check(FORMAT_SDF, "A/B", 0, "");
}

TEST(NameCheck, ALongExtensionIsAWarning)
{
    EXPECT_EQ(check(FORMAT_LIF, "NAME", "DATA").message, "");
    const Checked c = check(FORMAT_LIF, "NAME", "ASCII");
    EXPECT_EQ(c.result, 0);
    EXPECT_EQ(c.message, "extension too long (truncated)");
    EXPECT_EQ(check(FORMAT_DISK45, "NAME", "ASCII").message, "extension too long (truncated)");
}

TEST(NameCheck, Hazard_C7_ANameOfManyBlanksEndsAtItsTerminator)
{
    const std::string blanks(300, ' ');
    expect_check(FORMAT_DISK45, blanks.c_str(), 0, "filename contains blanks (ignored)");
}

TEST(DecodeName, NullPointersAreErrors)
{
    const FileInfo info = named("A");
    char name[VISIBLE_NAME_SIZE];
    forget_error();
    decode_filename(nullptr, FORMAT_LIF, name);
    EXPECT_EQ(global_error, 103u);
    forget_error();
    decode_filename(&info, FORMAT_LIF, nullptr);
    EXPECT_EQ(global_error, 103u);
}

TEST(DecodeName, MarkersAreCutOff)
{
    const struct {
        const char *name;
        uint16_t type;
        const char *text;
        const char *result;
    } rows[] = {{"ABCA______", 1, "ASC", "ABC"},        {"ABCS______", 0xE942, "SYSTM", "ABC"},
                {"ABCT______", 0xE94B, "HP-UX", "ABC"}, {"ABCC______", 0xEA32, "CODE", "ABC"},
                {"ABCT______", 0xEA3E, "TEXT", "ABC"},  {"ABCU______", 0xEA32, "UX", "ABC"},
                {"ABCB______", 0xEA3E, "BAD", "ABC"},   {"ABCDEFGHIC", 0xEA32, "CODE", "ABCDEFGHI"},
                {"A_BC______", 0xEA32, "CODE", "A_B"}};
    for (const auto &[name, type, text, result] : rows) EXPECT_EQ(decoded(of_type(name, type, text)), result) << name;
}

TEST(DecodeName, OtherNamesStand)
{
    const struct {
        const char *name;
        uint16_t type;
        const char *text;
    } rows[] = {{"ABCA______", 1, "ASCII"},     {"ABCC_____", 0xEA32, "CODE"},  {"ABCX______", 0xEA32, "CODE"},
                {"ABCT______", 0xEA32, "CODE"}, {"ABCC______", 0xEA3E, "TEXT"}, {"ABCC______", 0xE950, "PROG"}};
    for (const auto &[name, type, text] : rows) EXPECT_EQ(decoded(of_type(name, type, text)), name);
    EXPECT_EQ(decoded(of_type("ABCC______", 0xEA32, "CODE"), FORMAT_SDF), "ABCC______");
    pascal_mode = 0;
    EXPECT_EQ(decoded(of_type("ABCC______", 0xEA32, "CODE")), "ABCC______");
    pascal_mode = 1;
}

TEST(DecodeName, Hazard_C4_UnderlinesAloneHaveNoMarker)
{
    EXPECT_EQ(decoded(of_type("__________", 0xEA32, "CODE")), "__________");
    EXPECT_EQ(decoded(of_type("C_________", 0xEA32, "CODE")), "");
    EXPECT_EQ(composed(of_type("C_________", 0xEA32, "CODE")), ".CODE");
}

TEST(EncodeName, AddsTheMarkerOfTheType)
{
    EXPECT_EQ(encoded("ABC", 0xEA32, "CODE"), "ABCC______");
    EXPECT_EQ(encoded("ABC", 0xEA3E, "TEXT"), "ABCT______");
    EXPECT_EQ(encoded("ABC", 0xEA0A, "UX"), "ABCU______");
    EXPECT_EQ(encoded("ABC", 0xEA0A, "BAD"), "ABCB______");
    EXPECT_EQ(encoded("ABC", 1, "ASC"), "ABCA______");
    EXPECT_EQ(encoded("ABCDEFGHI", 0xEA32, "CODE"), "ABCDEFGHIC");
}

TEST(EncodeName, OtherTypesHaveNoMarker)
{
    EXPECT_EQ(encoded("ABC", 1, "ASCII"), "ABC");
    EXPECT_EQ(encoded("ABC", 0xE950, "CODE"), "ABC");
    EXPECT_EQ(encoded("ABC", 0xEA3E, "CODE"), "ABC");
    EXPECT_EQ(encoded("ABC", 0xEA32, "CODE", FORMAT_SDF), "ABC");
    pascal_mode = 0;
    EXPECT_EQ(encoded("ABC", 0xEA32, "CODE"), "ABC");
    pascal_mode = 1;
}

TEST(EncodeName, ALongPascalNameIsCutToNine)
{
    const LogCapture log(1);
    EXPECT_EQ(encoded("LONGNAME12", 0xEA32, "CODE"), "LONGNAME1C");
    EXPECT_EQ(log.text(), "Warning: filename \"LONGNAME12\" too long for Pascal types (truncated)\n");
}

TEST(EncodeName, Hazard_C1_AHostNameOfAnyLengthFits)
{
    const std::string longest(259, 'n');
    EXPECT_EQ(encoded(longest.c_str(), 0xEA32, "CODE"), "nnnnnnnnnC");
    EXPECT_EQ(encoded(longest.c_str(), 1, "ASCII", FORMAT_SDF), std::string(16, 'n'));
    EXPECT_STREQ(taken_apart(longest, FORMAT_LIF).name, std::string(10, 'n').c_str());
    EXPECT_STREQ(taken_apart(longest, FORMAT_SDF).name, std::string(16, 'n').c_str());
    EXPECT_STREQ(taken_apart(longest, FORMAT_DISK45).name, std::string(6, 'n').c_str());
    EXPECT_STREQ(taken_apart(longest, FORMAT_TAPE45).name, std::string(6, 'n').c_str());
}

TEST(VisibleName, HasTypeAndRecordLength)
{
    FileInfo info = of_type("ABC", 1, "ASCII");
    EXPECT_EQ(composed(info), "ABC.ASCII");
    info = of_type("NAME", 0xE961, "BDAT");
    info.record_len = 256;
    EXPECT_EQ(composed(info), "NAME.&512.BDAT");
    info.record_len = 0;
    EXPECT_EQ(composed(info), "NAME.&0.BDAT");
    info.record_len = 65535;
    EXPECT_EQ(composed(info), "NAME.&131070.BDAT");
}

TEST(VisibleName, WithoutTypedExtensionsIsTheNameAlone)
{
    FileInfo info = of_type("ABC", 1, "ASCII");
    info.record_len = 64;
    EXPECT_EQ(composed(info, FORMAT_LIF, 0), "ABC");
    EXPECT_EQ(composed(of_type("ABCC______", 0xEA32, "CODE"), FORMAT_LIF, 0), "ABC");
}

TEST(VisibleName, ADirectoryHasNoExtension)
{
    FileInfo info = of_type("SUB", 3, "DIR");
    info.is_directory = 1;
    info.record_len = 12;
    EXPECT_EQ(composed(info, FORMAT_SDF), "SUB");
}

TEST(VisibleName, KeepsTypeTextRunningOnIntoSystemText)
{
    LifVolume volume;
    volume.entries = {{.name = "ABC", .type = 0xE205}, {.name = "DEF", .type = 0xE0D5}};
    const OpenVolume open(volume);
    ASSERT_TRUE(open.md != nullptr);
    EXPECT_EQ(composed(*open.md->root), "ABC.BIN71_98X6");
    EXPECT_EQ(composed(*open.md->root->next), "DEF.TEXT_SSE80");
}

TEST(VisibleName, Hazard_C3_FullFieldsEndWhereTheyEnd)
{
    FileInfo info = named("ABC");
    std::memset(info.type_string, 'T', sizeof info.type_string);
    std::memset(info.system_string, 'S', sizeof info.system_string);
    info.attributes = 'X';
    EXPECT_LE(composed(info).size(), std::strlen("ABC.TTTTTTSSSSSS"));
    EXPECT_EQ(composed(info).substr(0, 10), "ABC.TTTTTT");
}

TEST(VisibleName, Hazard_C8_TheLongestFits)
{
    FileInfo info = named("ABCDEFGHIJKLMNOP");
    info.record_len = 0xFFFFFFFF;
    std::memcpy(info.type_string, "TYPE_6", 6);
    std::memcpy(info.system_string, "SYS_5", 6);
    EXPECT_EQ(composed(info, FORMAT_SDF), "ABCDEFGHIJKLMNOP.&4294967294.TYPE_6SYS_5");
}

TEST(VisibleName, PascalNamesGoBothWays)
{
    EXPECT_EQ(composed(of_type("ABCC______", 0xEA32, "CODE")), "ABC.CODE");
    const FileInfo info = taken_apart("ABC.CODE");
    EXPECT_STREQ(info.name, "ABCC______");
    EXPECT_EQ(info.type, 0xEA32u);
}

TEST(HostName, NullIsIgnored)
{
    const MediaDescriptor md = medium_of(FORMAT_LIF);
    FileInfo info = named("OLD");
    process_filepath(&md, &info, nullptr, nullptr, 0);
    EXPECT_STREQ(info.name, "OLD");
}

TEST(HostName, IsTakenApart)
{
    expect_parts("NAME.ASCII", "NAME", 0x0001, 128);
    expect_parts("NAME.&512.BDAT", "NAME", 0xE961, 256);
    expect_parts("FILE.&256.DATA", "FILE", 0xE848, 128);
    expect_parts("B.&2.DATA", "B", 0xE848, 1);
    expect_parts("A.B.PROG", "A.B", 0xE950, 128);
    expect_parts("NAME.#E123", "NAME", 0xE123, 128);
    expect_parts("FILE.&65534.DATA", "FILE", 0xE848, 32767);
    EXPECT_EQ(type_text(taken_apart("FILE.&256.DATA")), "DATA");
}

TEST(HostName, MayHaveARecordLengthAlone)
{
    expect_parts("NAME.&512", "NAME", untouched, 256);
}

TEST(HostName, ARecordLengthThatCannotBeStaysInTheName)
{
    const LogCapture log(1);
    expect_parts("FILE.&0.DATA", "FILE.&0", 0xE848, 128);
    expect_parts("FILE.&1.DATA", "FILE.&1", 0xE848, 128);
    EXPECT_TRUE(contains(log.text(), "Warning: Invalid block size on file ")) << log.text();
    EXPECT_TRUE(contains(log.text(), " (using default)\n")) << log.text();
}

TEST(HostName, Hazard_C6_ARecordLengthThatOverflowsStaysInTheName)
{
    expect_parts("F.&131072.DATA", "F.&131072", 0xE848, 128);
    expect_parts("F.&99999999999999999999.DATA", "F.&9999999", 0xE848, 128);
}

TEST(HostName, AnUnknownTypeIsLoggedAndLeavesTheTypeAlone)
{
    const LogCapture log(1);
    expect_parts("NAME.FOO", "NAME", untouched, 128);
    EXPECT_TRUE(contains(log.text(), "Warning: Invalid file type on file ")) << log.text();
    EXPECT_TRUE(contains(log.text(), " (using default)\n")) << log.text();
}

TEST(HostName, ADotFarFromTheEndIsPartOfTheName)
{
    expect_parts("AB.1234567", "AB.1234567", untouched, 128);
    expect_parts("ABC.123456", "ABC", untouched, 128);
}

TEST(HostName, Hazard_C5_ShortNames)
{
    expect_parts("A", "A", untouched, 128);
    expect_parts(".", "", untouched, 128);
    expect_parts(".ASCII", "", 0x0001, 128);
    expect_parts("A.", "A", untouched, 128);
    expect_parts(".&", ".&", untouched, 128);
    expect_parts("", "", untouched, 128);
    expect_parts("&2.DATA", "&2", 0xE848, 128);
}

TEST(HostName, WithoutTypedExtensionsStaysWhole)
{
    const FileInfo info = taken_apart("AB.ASCII", FORMAT_LIF, 0);
    EXPECT_STREQ(info.name, "AB.ASCII");
    EXPECT_EQ(info.type, untouched);
}

TEST(HostName, MayLoseItsDirectory)
{
    for (const char *path :
         {"C:\\DIR\\NAME.ASCII", "dir/sub/NAME.ASCII", "C:NAME.ASCII", "a/b\\c:NAME.ASCII", "NAME.ASCII"}) {
        const FileInfo info = taken_apart(path, FORMAT_LIF, 1, 1);
        EXPECT_STREQ(info.name, "NAME") << path;
        EXPECT_EQ(info.type, 1u) << path;
    }
    EXPECT_STREQ(taken_apart("A/B.ASCII", FORMAT_LIF, 1, 0).name, "A/B");
}

TEST(HostName, TheSystemTextChoosesAmongTypes)
{
    const MediaDescriptor md = medium_of(FORMAT_LIF);
    FileInfo info{};
    process_filepath(&md, &info, "NAME.PROG", "SE80", 0);
    EXPECT_EQ(info.type, 0xE020u);
    process_filepath(&md, &info, "NAME.PROG", "", 0);
    EXPECT_EQ(info.type, 0xE950u);
}

TEST(HostName, IsCutToWhatTheFormatHolds)
{
    EXPECT_STREQ(taken_apart("ABCDEFGH.DATA", FORMAT_DISK45).name, "ABCDEF");
    EXPECT_EQ(taken_apart("ABCDEFGH.DATA", FORMAT_DISK45).type, 0x2400u);
    EXPECT_STREQ(taken_apart("ABCDEFGHIJKL.ASCII", FORMAT_LIF).name, "ABCDEFGHIJ");
    EXPECT_STREQ(taken_apart("ABCDEFGHIJKL.ASCII", FORMAT_SDF).name, "ABCDEFGHIJKL");
}
