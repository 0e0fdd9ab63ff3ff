// The configuration file: where the program looks for it, what it takes over, how a fault is shown, and the verb
// config.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "base/convert.h"
#include "base/error.h"
#include "config/config_inner.h"
#include "config/custom_inner.h"
#include "tests/console/folder.h"
#include "tests/console/program.h"
#include "tests/support/volume_builder.h"

using tests::error_line;
using tests::Outcome;
using tests::run;
using tests::run_in_shell;

namespace
{

using Words = std::vector<std::string>;

const std::string new_names = "[liftypes]\n1 = MINE\n0xE0F0 = NEW\n";
const std::string other_names = "[liftypes]\n1 = OTHER\n";
const std::string bad_quote = "[defaults]\n\tboard\t= 1\"2\n";

// A folder with a volume of one file, ONE, of type 1.
struct Place {
    Place()
    {
        tests::LifVolume one;
        one.entries = {{.name = "ONE", .type = 1}};
        volume = folder.add("one.lif", tests::lif_image(one));
    }

    Outcome inside(const Words &arguments) const
    {
        return run_in_shell(arguments, "cd '" + folder.path() + "' && %");
    }
    Outcome list(const Words &more = {}) const
    {
        Words arguments = {"ls", "--json", volume};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return inside(arguments);
    }

    tests::TemporaryFolder folder;
    std::string volume;
};

// Runs a copy of the program that stands in a folder; the present one is another.
Outcome run_copy(const tests::TemporaryFolder &folder, const Place &place, const Words &arguments)
{
    const std::string function = "copy_and_run() { case $1 in *.exe) w= ;; *wine*) w=$1; shift ;; *) w= ;; esac; "
                                 "p='" +
                                 folder.path() + "/'${1##*/}; cp \"$1\" \"$p\" && shift && cd '" + place.folder.path() +
                                 "' && $w \"$p\" \"$@\"; }; copy_and_run %";
    return run_in_shell(arguments, function);
}

std::string type_of(const Outcome &outcome)
{
    return tests::json_of(outcome)["entries"][0]["type_text"].GetString();
}

// The line of a fault, and what stands below it.
std::string shown(const std::string &line, const std::string &mark = "")
{
    const std::string indent = "[tarvo]        ";
    return indent + line + "\n" + (mark.empty() ? "" : indent + mark + "\n");
}

std::string words_of(const std::string &fault)
{
    return "Error in config file (" + fault + ")";
}

}

TEST(ConfigOption, NamesTheFile)
{
    const Place place;
    const std::string ini = place.folder.add("my.ini", new_names);
    EXPECT_EQ(type_of(place.list()), "ASCII");
    const Outcome outcome = place.list({"--config", ini});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(type_of(outcome), "MINE");
    EXPECT_NE(place.inside({"ls", "--config=my.ini", place.volume}).output.find(" MINE "), std::string::npos);
}

TEST(ConfigOption, PresentFolderIsLookedAtFirst)
{
    const Place place;
    place.folder.add("tarvo.ini", new_names);
    EXPECT_EQ(type_of(place.list()), "MINE");
    EXPECT_EQ(type_of(run({"ls", "--json", place.volume})), "ASCII") << "from another folder";
}

TEST(ConfigOption, FileBesideTheProgramIsTaken)
{
    const Place place;
    const tests::TemporaryFolder programs;
    programs.add("tarvo.ini", new_names);
    EXPECT_EQ(type_of(run_copy(programs, place, {"ls", "--json", place.volume})), "MINE");
}

TEST(ConfigOption, FileBesideTheProgramIsTakenWhereTheShellFindsTheProgram)
{
    if (!tests::runs_natively()) GTEST_SKIP() << "the search path is another one there";
    const Place place;
    const tests::TemporaryFolder programs;
    programs.add("tarvo.ini", new_names);
    const std::string function = "copy_and_run() { p='" + programs.path() +
                                 "'; cp \"$1\" \"$p/tarvo\" && shift && cd '" + place.folder.path() +
                                 "' && PATH=$p:$PATH && tarvo \"$@\"; }; copy_and_run %";
    EXPECT_EQ(type_of(run_in_shell({"ls", "--json", place.volume}, function)), "MINE");
}

TEST(ConfigOption, Hazard_M16_FileInThePresentFolderHidesTheOneBesideTheProgram)
{
    const Place place;
    const tests::TemporaryFolder programs;
    programs.add("tarvo.ini", bad_quote);
    place.folder.add("tarvo.ini", other_names);
    const Outcome outcome = run_copy(programs, place, {"ls", "--json", place.volume});
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(type_of(outcome), "OTHER");
}

TEST(ConfigOption, NamedFileIsTheOnlyOne)
{
    const Place place;
    place.folder.add("tarvo.ini", bad_quote);
    const Outcome outcome = place.list({"--config", place.folder.add("my.ini", other_names)});
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(type_of(outcome), "OTHER");
}

TEST(ConfigOption, CanBeTurnedOff)
{
    const Place place;
    place.folder.add("tarvo.ini", bad_quote + other_names);
    const Outcome outcome = place.list({"--no-config"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(type_of(outcome), "ASCII");
}

TEST(ConfigOption, OnAndOffIsAWrongCommandLine)
{
    const Place place;
    const Outcome outcome = place.list({"--no-config", "--config", "my.ini"});
    EXPECT_EQ(outcome.code, 64);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors,
              error_line("--config and --no-config exclude each other") + "[tarvo]        Try \"tarvo --help\".\n");
    EXPECT_EQ(place.inside({"ls", "--config", "", place.volume}).code, 64) << "nor is an empty name";
}

TEST(ConfigOption, FaultOfTheUsualFileIsAWarning)
{
    const Place place;
    place.folder.add("tarvo.ini", other_names + bad_quote);
    const Outcome outcome = place.list();
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(type_of(outcome), "ASCII") << "nothing of the file is in force";
    EXPECT_EQ(outcome.errors, "[tarvo] Warning: tarvo.ini: " + words_of("misplaced quote in line 4") + "\n" +
                                  shown("\tboard\t= 1\"2", "\t     \t   ^"));
}

TEST(ConfigOption, FaultOfANamedFileIsAFailure)
{
    const Place place;
    const std::string ini = place.folder.add("my.ini", "[defaults]\nboard = first ; of all\n");
    const tests::Bytes before = place.folder.bytes("one.lif");
    for (const Words &words :
         {Words{"ls"}, Words{"info"}, Words{"get", "-d", place.folder.path("out")}, Words{"put"}}) {
        Words arguments = words;
        arguments.insert(arguments.end(), {"--config", ini, place.volume});
        if (words[0] == "put") arguments.push_back(ini);
        const Outcome outcome = run(arguments);
        EXPECT_EQ(outcome.code, 1) << words[0];
        EXPECT_EQ(outcome.output, "") << words[0];
        EXPECT_EQ(outcome.errors,
                  error_line(ini + ": " + words_of("bad board assignment in line 2")) + shown("board = first ; of all"))
            << words[0];
    }
    EXPECT_EQ(place.folder.bytes("one.lif"), before);
    EXPECT_EQ(place.folder.names(), (Words{"my.ini", "one.lif"}));
}

TEST(ConfigOption, NamedFileThatIsNotThereIsAFailure)
{
    const Place place;
    const Outcome outcome = place.list({"--config", "none.ini"});
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.output, "");
    EXPECT_EQ(outcome.errors.rfind("[tarvo] Error: none.ini: Can't open file (", 0), 0U) << outcome.errors;
    EXPECT_EQ(place.list({"--config", place.folder.path()}).code, 1) << "a folder";
}

TEST(ConfigOption, LogLevelOfTheCommandLineGoesBefore)
{
    const Place place;
    place.folder.add("tarvo.ini", "[defaults]\nloglevel = 3\n");
    EXPECT_NE(place.list().errors.find("Trace: image_open("), std::string::npos);
    EXPECT_EQ(place.list({"--log", "1"}).errors, "");
    place.folder.add("tarvo.ini", "[defaults]\nloglevel = 0\n");
    EXPECT_NE(place.list({"--log", "3"}).errors.find("Trace: image_close("), std::string::npos);
}

TEST(ConfigOption, TypesMayBeNumbers)
{
    const Place place;
    place.folder.add("tarvo.ini", "[defaults]\nuse_type_names = 0\n");
    EXPECT_EQ(type_of(place.list()), "#0001");
    EXPECT_EQ(place.inside({"get", place.volume}).code, 0);
    EXPECT_EQ(place.folder.names(), (Words{"ONE.#0001", "one.lif", "tarvo.ini"}));
}

TEST(ConfigOption, HowFilesAreCopiedTheCommandLineSays)
{
    const Place place;
    place.folder.add("tarvo.ini", "[defaults]\nuse_typed_extensions = 0\nuse_file_headers = HPBASIC\n"
                                  "use_file_conversion = 1\nsystem = nonsense\n");
    EXPECT_EQ(place.inside({"get", place.volume}).code, 0);
    EXPECT_EQ(place.folder.bytes("ONE.ASCII"), tests::Bytes(256));
    EXPECT_EQ(place.inside({"put", place.volume, "ONE.ASCII", "--as", "TWO.BDAT"}).code, 0);
}

TEST(ConfigOption, NewTypesCanBePut)
{
    const Place place;
    place.folder.add("tarvo.ini", new_names);
    place.folder.add("NOTE.NEW", std::string("text"));
    EXPECT_EQ(place.inside({"put", "one.lif", "NOTE.NEW"}).code, 0);
    const rapidjson::Document listed = tests::json_of(place.list({"NOTE"}));
    EXPECT_EQ(listed["entries"][0]["type"].GetInt(), 0xE0F0);
    EXPECT_STREQ(listed["entries"][0]["visible"].GetString(), "NOTE.NEW");
}

TEST(ConfigOption, HelpNeedsNoConfiguration)
{
    const Place place;
    place.folder.add("tarvo.ini", bad_quote);
    for (const Words &words : {Words{"help"}, Words{"help", "ls"}, Words{"--version"}, Words{"completion", "bash"}}) {
        const Outcome outcome = place.inside(words);
        EXPECT_EQ(outcome.code, 0) << words[0];
        EXPECT_EQ(outcome.errors, "") << words[0];
    }
}

TEST(ConfigCheck, GoodFile)
{
    const tests::TemporaryFolder folder;
    for (const std::string &text : {std::string(), new_names, std::string("; nothing\r\n"), std::string("ignored\n")}) {
        const std::string ini = folder.add("good.ini", text);
        const Outcome outcome = run({"config", "check", ini});
        EXPECT_EQ(outcome.code, 0) << text;
        EXPECT_EQ(outcome.output, ini + ": no faults\n");
        EXPECT_EQ(outcome.errors, "") << text;
    }
}

TEST(ConfigCheck, FaultsEndWithThree)
{
    const tests::TemporaryFolder folder;
    const struct {
        std::string text;
        std::string words;
        std::string shown;
    } rows[] = {
        {bad_quote, "misplaced quote in line 2", shown("\tboard\t= 1\"2", "\t     \t   ^")},
        {"\n[fsinfo]\r\nX = \"open\r\nY\r\n", "unmatched quote in line 3", shown("X = \"open", "         ^")},
        {"[fsinfo]\nX = d, Z, 1,2,x,y,5,6,7,8,9\n", "2 bad parameter(s) in line 2",
         shown("X = d, Z, 1,2,x,y,5,6,7,8,9")},
        {"[driveinfo]\nX = d, cs80, 1\n", "bad protocol assignment in line 2", shown("X = d, cs80, 1")},
        {"[liftypes]\nX = Y", "bad liftype assignment in line 2", shown("X = Y")},
        {"[defaults]\nfilesystem = HFS\n", "bad file system assignment in line 2", shown("filesystem = HFS")},
    };
    for (const auto &row : rows) {
        const std::string ini = folder.add("bad.ini", row.text);
        const Outcome outcome = run({"config", "check", ini});
        EXPECT_EQ(outcome.code, 3) << row.text;
        EXPECT_EQ(outcome.output, "") << row.text;
        EXPECT_EQ(outcome.errors, error_line(ini + ": " + words_of(row.words)) + row.shown);
    }
}

TEST(ConfigCheck, WithoutANameItIsTheFileThatWouldBeRead)
{
    const Place place;
    place.folder.add("tarvo.ini", bad_quote);
    EXPECT_EQ(place.inside({"config", "check"}).code, 3);
    place.folder.add("tarvo.ini", new_names);
    EXPECT_EQ(place.inside({"config", "check"}).output, "tarvo.ini: no faults\n");
    place.folder.add("my.ini", bad_quote);
    EXPECT_EQ(place.inside({"config", "check", "--config", "my.ini"}).code, 3);
    EXPECT_EQ(place.inside({"config", "check", "--config", "my.ini", "tarvo.ini"}).code, 0);
}

TEST(ConfigCheck, FileThatCannotBeRead)
{
    const tests::TemporaryFolder folder;
    for (const std::string &path : {folder.path("none.ini"), folder.path()}) {
        const Outcome outcome = run({"config", "check", path});
        EXPECT_EQ(outcome.code, 1) << path;
        EXPECT_EQ(outcome.output, "") << path;
        EXPECT_EQ(outcome.errors.rfind("[tarvo] Error: " + path + ": Can't open file (", 0), 0U) << outcome.errors;
    }
    const Outcome nowhere = run_in_shell({"config", "check"}, "cd '" + folder.path() + "' && %");
    EXPECT_EQ(nowhere.code, 1);
    EXPECT_EQ(nowhere.errors.rfind("[tarvo] Error: tarvo.ini: Can't open file (", 0), 0U) << nowhere.errors;
}

TEST(ConfigCheck, OtherActionsAreNoCommandLine)
{
    for (const Words &words : {Words{"config"}, Words{"config", "show"}, Words{"config", "check", "a", "b"}}) {
        const Outcome outcome = run(words);
        EXPECT_EQ(outcome.code, 64);
        EXPECT_EQ(tests::error_lines(outcome.errors), 1U) << outcome.errors;
    }
}

TEST(ConfigSample, HasNoFaults)
{
    const std::string ini = tests::documents() + "../samples/tarvo.ini";
    const Outcome outcome = run({"config", "check", ini});
    EXPECT_EQ(outcome.code, 0) << outcome.errors;
    EXPECT_EQ(outcome.output, ini + ": no faults\n");
}

TEST(ConfigSample, SaysSomethingInEverySection)
{
    FileHandle file = 0;
    ASSERT_EQ(file_open(&file, (tests::documents() + "../samples/tarvo.ini").c_str(), "rb", 0), 1);
    int32_t numbers[9] = {-7, -7, -7, -7, -7, -7, -7, -7, -7};
    uint32_t port = 7;
    char system[CONFIG_SYSTEM_SIZE] = "";
    ASSERT_EQ(read_config_file(file, numbers, numbers + 1, &port, numbers + 2, numbers + 3, system, numbers + 4,
                               numbers + 5, numbers + 6, numbers + 7, numbers + 8),
              0);
    file_close(file);
    for (const int32_t number : numbers) EXPECT_NE(number, -7);
    EXPECT_EQ(port, 0x2E1U);
    EXPECT_STREQ(system, "9845");
    EXPECT_STREQ(custom_media_table[28].name, "RAMDISC");
    EXPECT_EQ(custom_media_table[28].interleave, 1U);
    EXPECT_STREQ(custom_drive_table[47].name, "MYDISC");
    EXPECT_EQ(custom_drive_table[47].cylinders, 1250U);
    EXPECT_STREQ(custom_liftype_table[63].name, "NOTES");
    EXPECT_STREQ(custom_liftype_table[64].name, "MY 41");
    EXPECT_STREQ(custom_liftype_table[64].system, "SE80");
    use_builtin_tables();
}
