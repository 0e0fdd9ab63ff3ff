// What files are called on a volume, and of what type they become.
#include <string>

#include <gtest/gtest.h>

#include "tests/console/copies.h"
#include "tests/console/folder.h"
#include "tests/console/program.h"
#include "tests/support/volume_builder.h"

using tests::Bytes;
using tests::error_line;
using tests::expect_good;
using tests::expect_usage_error;
using tests::LifVolume;
using tests::listed;
using tests::Names;
using tests::one_file;
using tests::Outcome;
using tests::put;
using tests::run;
using tests::Sources;
using tests::TemporaryFile;

TEST(PutNames, NameAndTypeComeFromTheNameOfTheFile)
{
    struct Case {
        const char *file;
        const char *listed;
        const char *warning; // part of it, null for none
    };
    const Case cases[] = {
        {"NOTES", "NOTES.ASCII", nullptr},
        {"notes", "notes.ASCII", nullptr},
        {"DATA1.BDAT", "DATA1.BDAT", nullptr},
        {"DATA1.&512.BDAT", "DATA1.&512.BDAT", nullptr},
        {"PROG.CODE", "PROG.CODE", nullptr},
        {"PROG.#e052", "PROG.TXT75", nullptr},
        {"picture.jpeg", "picture.ASCII", "Invalid file type on file picture.jpeg (using default)"},
        {"MORETHANTENLETTERS", "MORETHANTE.ASCII", nullptr},
        {"LONGERNAMES.TEXT", "LONGERNAM.TEXT", "too long for Pascal types (truncated)"},
        {"A B C", "ABC.ASCII", nullptr},
        {"SAY\"X\"", "SAY_X_.ASCII", nullptr},
        {"'quoted'", "'quoted'.ASCII", nullptr},
        {"[A,B]", "[A,B].ASCII", nullptr},
        {"%n%s", "%n%s.ASCII", nullptr},
        {"-v", "-v.ASCII", nullptr},
    };
    for (const Case &row : cases) {
        if (!tests::runs_natively() && std::string(row.file).find('"') != std::string::npos) continue;
        const TemporaryFile volume(tests::lif_image(LifVolume{}));
        const Sources sources;
        const Outcome outcome = put(volume, {sources.add(row.file)});
        EXPECT_EQ(outcome.code, 0) << row.file << outcome.errors;
        EXPECT_EQ(listed(volume), row.listed);
        if (row.warning == nullptr) {
            EXPECT_EQ(outcome.errors, "") << row.file;
        } else {
            EXPECT_NE(outcome.errors.find(row.warning), std::string::npos) << outcome.errors;
            EXPECT_EQ(outcome.errors.find('\n'), outcome.errors.size() - 1) << "said once: " << outcome.errors;
        }
    }
}

TEST(PutNames, NameWithLettersBeyondAsciiIsNoNameLess)
{
    if (!tests::runs_natively()) GTEST_SKIP() << "names of files are the other system's here";
    const TemporaryFile volume(tests::lif_image(LifVolume{}));
    const Sources sources;
    for (const char *name : {"gr\u00F6\u00DFe.BIN", "GR\xD6\xDF\x45.BIN"}) {
        const std::string source = sources.add(name, Bytes(256, 'u'));
        expect_good(put(volume, {source}));
        const Bytes before = volume.bytes();
        const Outcome again = put(volume, {sources.add("NEW.BIN"), source});
        EXPECT_EQ(again.code, 1);
        EXPECT_EQ(again.errors.rfind("[tarvo] Error: " + source + ": Target already exists (file \"", 0), 0U)
            << again.errors;
        EXPECT_EQ(volume.bytes(), before);
    }
    const rapidjson::Document document = tests::json_of(run({"ls", "--json", volume.path()}));
    EXPECT_EQ(document["entries"].Size(), 2U);
    EXPECT_EQ(run({"get", volume.path(), "gr*", "-o", "-"}).output, std::string(256, 'u'));
}

TEST(PutNames, FileWhoseNameBeginsWithAHyphenStandsBehindTwo)
{
    const TemporaryFile volume(tests::lif_image(LifVolume{}));
    const Sources sources;
    sources.add("-o.BIN");
    const Outcome outcome =
        tests::run_in_shell({"put", volume.path(), "--", "-o.BIN"}, "cd '" + sources.folder.path() + "' && %");
    expect_good(outcome);
    EXPECT_EQ(listed(volume), "-o.BIN");
    EXPECT_EQ(tests::run_in_shell({"put", volume.path(), "-o.BIN"}, "cd '" + sources.folder.path() + "' && %").code,
              64);
}

TEST(PutNames, AsGivesTheNameOnTheVolume)
{
    const TemporaryFile volume(tests::lif_image(LifVolume{}));
    const Sources sources;
    const std::string source = sources.add("whatever.x");
    expect_good(put(volume, {source, "--as", "ONE"}));
    expect_good(put(volume, {source, "--as=TWO.BDAT"}));
    expect_good(put(volume, {source, "--as", "THREE.&512.BDAT"}));
    expect_good(put(volume, {source, "--as", "-4"}));
    EXPECT_EQ(listed(volume), "ONE.ASCII TWO.BDAT THREE.&512.BDAT -4.ASCII");
    expect_usage_error({source, source, "--as", "X"}, "--as is the name of one file");
    for (const char *name : {"A/B", "A\\B", "A:B", "/"}) {
        expect_usage_error({source, "--as", name}, "--as takes a name without / \\ and :");
    }
    EXPECT_EQ(put(volume, {source, "--as", ""}).code, 64);
}

TEST(PutNames, TypeAndRecordArePutIntoTheName)
{
    struct Case {
        const char *name;
        const char *file;
        Names options;
        const char *listed;
    };
    const Case cases[] = {
        {"a type for a name without one", "DATA", {"--type", "BDAT"}, "DATA.BDAT"},
        {"instead of the one it has", "DATA.BIN", {"--type", "BDAT"}, "DATA.BDAT"},
        {"instead of what is none", "data.dat", {"--type", "BDAT"}, "data.BDAT"},
        {"a name that only looks like a type", ".BIN", {"--type", "ASCII"}, ".BIN.ASCII"},
        {"by its number", "DATA", {"--type", "#e961"}, "DATA.BDAT"},
        {"by a short number", "DATA", {"--type", "#1"}, "DATA.ASCII"},
        {"with a name too long for an ending", "DATA", {"--type", "BIN71_SP"}, "DATA.BIN71_98X6"},
        {"of six letters", "DATA", {"--type", "TEXT_S"}, "DATA.TEXT_SSE80"},
        {"with a marker in the name", "PROG", {"--type", "TEXT"}, "PROG.TEXT"},
        {"a length for a type that has one", "D.BDAT", {"--record", "512"}, "D.&512.BDAT"},
        {"instead of the one it has", "D.&128.BDAT", {"--record=64"}, "D.&64.BDAT"},
        {"the least", "D.BDAT", {"--record", "2"}, "D.&2.BDAT"},
        {"the most", "D.BDAT", {"--record", "65534"}, "D.&65534.BDAT"},
        {"the usual", "D.&512.BDAT", {"--record", "256"}, "D.BDAT"},
        {"type and length", "D", {"--type", "BDAT", "--record", "512"}, "D.&512.BDAT"},
        {"the length stays with another type", "D.&512.BIN", {"--type", "BDAT"}, "D.&512.BDAT"},
        {"a long name", "LONGERTHANTEN.x", {"--type", "BDAT", "--record", "1024"}, "LONGERTHAN.&1024.BDAT"},
        {"the type of one of several computers", "P.PROG", {"--system", "9845"}, "P.PROG"},
    };
    for (const Case &row : cases) {
        const TemporaryFile volume(tests::lif_image(LifVolume{}));
        const Sources sources;
        Names words = row.options;
        words.push_back(sources.add(row.file));
        const Outcome outcome = put(volume, words);
        EXPECT_EQ(outcome.code, 0) << row.name << outcome.errors;
        EXPECT_EQ(outcome.errors, "") << row.name;
        EXPECT_EQ(listed(volume), row.listed) << row.name;
    }
}

TEST(PutNames, SystemChoosesAmongTypesOfOneName)
{
    struct Case {
        const char *system; // null: none is given
        uint16_t type;
    };
    const Sources sources;
    const std::string source = sources.add("DATA", Bytes(256, 'd'));
    for (const Case &row : {Case{nullptr, 0xE961}, Case{"98X6", 0xE961}, Case{"SE80", 0xE010}}) {
        const TemporaryFile volume(tests::lif_image(LifVolume{}));
        Names words = {source, "--type", "BDAT"};
        if (row.system != nullptr) words.insert(words.end(), {"--system", row.system});
        expect_good(put(volume, words));
        const rapidjson::Document document = tests::json_of(run({"ls", "--json", volume.path()}));
        EXPECT_EQ(document["entries"][0]["type"].GetUint(), row.type) << (row.system == nullptr ? "" : row.system);
    }
}

TEST(PutNames, OptionsThatCannotBeAreRefusedBeforeAnything)
{
    const Sources sources;
    const std::string source = sources.add("F");
    expect_usage_error({source, "--record", "511"}, "--record: 511 is odd");
    for (const char *record : {"0", "1", "-2", "65535", "65536", "x", "4294967298", ""}) {
        const TemporaryFile volume(tests::lif_image(one_file()));
        const Outcome outcome = put(volume, {source, "--record", record});
        EXPECT_EQ(outcome.code, 64) << record;
        EXPECT_EQ(tests::error_lines(outcome.errors), 1U) << outcome.errors;
        EXPECT_EQ(volume.bytes(), tests::lif_image(one_file()));
    }
    for (const char *type : {"NONSENSE", "ascii", "A.B", "#12345", "#", "TEXT "}) {
        expect_usage_error({source, "--type", type}, std::string("--type: there is no type \"") + type + "\"");
    }
    for (const char *system : {"VAX", "9845 ", "98x6"}) {
        expect_usage_error({source, "--system", system},
                           std::string("--system: there is no system \"") + system + "\"");
    }
    const TemporaryFile missing;
    EXPECT_EQ(put(missing, {source, "--type", "NONSENSE"}).code, 64) << "ahead of the medium";
}

TEST(PutNames, TypeOfAnotherFileSystemIsRefusedBeforeAnything)
{
    const TemporaryFile volume(tests::lif_image(one_file()));
    const Sources sources;
    const Outcome outcome = put(volume, {sources.add("F"), sources.add("G"), "--type", "CHAR"});
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.errors, error_line("Unknown file type (\"CHAR\")"));
    EXPECT_EQ(volume.bytes(), tests::lif_image(one_file()));
}

TEST(PutNames, LengthOfRecordsForATypeWithoutThemIsAWarning)
{
    const TemporaryFile volume(tests::lif_image(LifVolume{}));
    const Sources sources;
    const std::string source = sources.add("F");
    const Outcome outcome = put(volume, {source, "--record", "512"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.errors, "[tarvo] Warning: " + source + ": its type has no length of records\n");
    EXPECT_EQ(listed(volume), "F.ASCII");
}
