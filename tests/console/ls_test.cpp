// The catalogue as text: its lines, patterns, purged files, and volumes that aren't whole.
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/console/program.h"
#include "tests/support/volume_builder.h"

using tests::error_line;
using tests::LifVolume;
using tests::Outcome;
using tests::run;
using tests::TemporaryFile;

namespace
{

const std::string not_found = error_line("File not found");

std::string head(const TemporaryFile &volume, const std::string &label)
{
    return std::string(volume.path()) + "\nVOLUME LABEL: " + label +
           "\nFILE NAME PRO TYPE  REC/FILE BYTE/REC   ADDRESS     DATE     TIME\n\n";
}

// The first words of the lines behind the head, which ends with an empty line.
std::string listed_names(const Outcome &outcome)
{
    const size_t head_end = outcome.output.find("\n\n");
    EXPECT_NE(head_end, std::string::npos) << outcome.output << outcome.errors;
    if (head_end == std::string::npos) return "";
    std::istringstream lines(outcome.output.substr(head_end + 2));
    std::string names;
    for (std::string line; std::getline(lines, line);)
        names += (names.empty() ? "" : " ") + line.substr(0, line.find(' '));
    return names;
}

LifVolume volume_of(const std::vector<std::string> &names)
{
    LifVolume volume;
    for (const std::string &name : names) volume.entries.push_back({.name = name});
    return volume;
}

}

TEST(Ls, PrintsTheCatalogue)
{
    const TemporaryFile volume(tests::lif_image(tests::demo_volume()));
    const Outcome outcome = run({"ls", volume.path()});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.errors, "");
    EXPECT_EQ(outcome.output, head(volume, "DEMO  ") +
                                  "README        ASCII        1      256         4    21-Jun-85 14:05\n"
                                  "RESULTS       BDAT         3      512         6     3-Nov-86  8:30\n"
                                  "NOTES         TEXT         8      256        14    28-Feb-02 23:59\n"
                                  "SORT          CODE         3      256        22    31-Dec-99 12:00\n"
                                  "SECRET     *  BDAT         1      256        26     7-Jul-87  7:07\n"
                                  "NODATE        BAS8x        1      256        27                   \n");
}

TEST(Ls, ShowsPurgedFilesWhenAskedTo)
{
    const TemporaryFile volume(tests::lif_image(tests::demo_volume()));
    const Outcome outcome = run({"ls", "--purged", volume.path(), "OLD"});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.output,
              head(volume, "DEMO  ") + "OLD           PURGE        2      256        12     2-Jan-85  3:04\n");
    EXPECT_EQ(listed_names(run({"ls", "--purged", volume.path()})), "README RESULTS OLD NOTES SORT SECRET NODATE");
    const Outcome without = run({"ls", volume.path(), "OLD"});
    EXPECT_EQ(without.code, 1);
    EXPECT_EQ(without.errors, not_found);
}

TEST(Ls, PatternsSelectByNameAndType)
{
    const TemporaryFile volume(tests::lif_image(tests::demo_volume()));
    struct Case {
        std::vector<std::string> patterns;
        std::string names;
    };
    const Case cases[] = {
        {{"NOTES"}, "NOTES"},
        {{"NOTES.TEXT"}, "NOTES"},
        {{"NOTES*"}, "NOTES"},
        {{"NOTES.*"}, "NOTES"},
        {{"RESULTS.BDAT"}, "RESULTS"},
        {{"*.BDAT"}, "RESULTS SECRET"},
        {{"*S"}, "RESULTS NOTES"},
        {{"*E"}, "README SORT NODATE"},
        {{"*EC*"}, "SECRET"},
        {{"*T.T*"}, ""},
        {{"*S.T*"}, "NOTES"},
        {{"*"}, "README RESULTS NOTES SORT SECRET NODATE"},
        {{"**"}, "README RESULTS NOTES SORT SECRET NODATE"},
        {{"SORT", "README.ASCII"}, "README SORT"},
        {{"NOTHING", "SORT"}, "SORT"},
    };
    for (const Case &row : cases) {
        std::vector<std::string> words = {"ls", volume.path()};
        words.insert(words.end(), row.patterns.begin(), row.patterns.end());
        const Outcome outcome = run(words);
        EXPECT_EQ(listed_names(outcome), row.names) << row.patterns[0];
        EXPECT_EQ(outcome.code, row.names.empty() ? 1 : 0) << row.patterns[0];
    }
}

TEST(Ls, PatternThatMatchesNothingIsAnErrorBehindTheHead)
{
    const TemporaryFile volume(tests::lif_image(tests::demo_volume()));
    for (const char *pattern : {"NOTHING", "notes", "NOTEST____", "RESULTS.&512.BDAT", "NOTE?", "N*S", ".TEXT", ""}) {
        const Outcome outcome = run({"ls", volume.path(), pattern});
        EXPECT_EQ(outcome.code, 1) << pattern;
        EXPECT_EQ(outcome.output, head(volume, "DEMO  ")) << pattern;
        EXPECT_EQ(outcome.errors, not_found) << pattern;
    }
}

TEST(Ls, PatternsAreTakenAsTheyStand)
{
    const std::vector<std::string> names = {"[A,B]", "{}", "%%", "-X", "A=B", "A,B", "~", "'Q\""};
    const TemporaryFile volume(tests::lif_image(volume_of(names)));
    for (const std::string &name : names) {
        const Outcome outcome = run({"ls", "--", volume.path(), name});
        EXPECT_EQ(outcome.code, 0) << name << outcome.errors;
        EXPECT_EQ(listed_names(outcome), name);
    }
}

TEST(Ls, VolumeWithoutFilesListsNothing)
{
    const TemporaryFile empty(tests::lif_image(LifVolume{}));
    for (const std::vector<std::string> &words :
         {std::vector<std::string>{"ls", empty.path()}, {"ls", empty.path(), "A*"}, {"ls", "--purged", empty.path()}}) {
        const Outcome outcome = run(words);
        EXPECT_EQ(outcome.code, 0) << words.size();
        EXPECT_EQ(outcome.errors, "");
        EXPECT_EQ(outcome.output, head(empty, "TESTVL"));
    }
}

TEST(Ls, VolumeOfPurgedFilesIsNoErrorWithoutAPattern)
{
    LifVolume contents = volume_of({"OLD"});
    contents.entries[0].type = 0;
    const TemporaryFile volume(tests::lif_image(contents));
    EXPECT_EQ(run({"ls", volume.path()}).code, 0);
    const Outcome outcome = run({"ls", volume.path(), "*"});
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.errors, not_found);
}

TEST(Ls, CorruptEntryIsLeftOutAndTheRestListed)
{
    LifVolume contents = volume_of({"FIRST", "BAD", "LAST"});
    contents.entries[1].start = 0;
    const TemporaryFile volume(tests::lif_image(contents));
    const Outcome outcome = run({"ls", volume.path()});
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(listed_names(outcome), "FIRST LAST");
    EXPECT_NE(outcome.errors.find("Warning: Corrupt directory data (file \"BAD\" has location zero)"),
              std::string::npos)
        << outcome.errors;
    EXPECT_EQ(tests::error_lines(outcome.errors), 0U);
    EXPECT_EQ(run({"ls", "--log", "0", volume.path()}).errors, "");
    EXPECT_EQ(run({"ls", "--log", "0", volume.path()}).code, 2);
    EXPECT_EQ(run({"ls", "--json", volume.path()}).code, 2);
    EXPECT_EQ(run({"info", volume.path()}).code, 2);
    EXPECT_EQ(run({"info", "--json", volume.path()}).code, 2);
}

TEST(Ls, MissingFileOnACorruptVolumeIsAFailure)
{
    LifVolume contents = volume_of({"FIRST", "BAD"});
    contents.entries[1].start = 0;
    const TemporaryFile volume(tests::lif_image(contents));
    EXPECT_EQ(run({"ls", volume.path(), "FIRST"}).code, 2);
    const Outcome outcome = run({"ls", "--log", "0", volume.path(), "BAD"});
    EXPECT_EQ(outcome.code, 1);
    EXPECT_EQ(outcome.errors, not_found);
}

TEST(Ls, DirectoryCutOffByTheEndOfTheImageIsListedAsFarAsItGoes)
{
    LifVolume contents;
    for (int i = 0; i < 16; ++i) contents.entries.push_back({.name = "F" + std::to_string(i)});
    contents.end_mark = false;
    contents.records = 3; // of the directory only the first record
    const TemporaryFile volume(tests::lif_image(contents));
    const Outcome outcome = run({"ls", volume.path()});
    EXPECT_EQ(outcome.code, 2);
    EXPECT_EQ(listed_names(outcome), "F0 F1 F2 F3 F4 F5 F6 F7");
}

TEST(Ls, LargeDirectoryIsListedToItsLastFile)
{
    const TemporaryFile volume(tests::lif_image(tests::lif_volume_with_files(2500)));
    const Outcome outcome = run({"ls", volume.path()});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.output.size(), head(volume, "FILES ").size() + 2500 * (66 + 1));
    EXPECT_EQ(listed_names(run({"ls", volume.path(), "F002499"})), "F002499");
}

TEST(Ls, Hazard_B9_LabelAndNamesGoOutAsTheyStand)
{
    LifVolume contents = volume_of({"A\xD8%n\x01", "B"});
    contents.label = "%s\xE4%n";
    const TemporaryFile volume(tests::lif_image(contents));
    const Outcome outcome = run({"ls", volume.path()});
    EXPECT_EQ(outcome.code, 0);
    EXPECT_EQ(outcome.output.rfind(head(volume, "%s\xE4%n "), 0), 0U) << outcome.output;
    EXPECT_NE(outcome.output.find("\nA\xD8%n\x01 "), std::string::npos) << outcome.output;
}

TEST(Ls, ListsADiscOfAnHp85)
{
    const std::string volume = tests::sample("hp85.lif");
    if (volume.empty()) GTEST_SKIP() << "TARVO_SAMPLES doesn't name the folder of sample volumes";
    const Outcome outcome = run({"ls", volume});
    EXPECT_EQ(outcome.code, 0) << outcome.errors;
    EXPECT_NE(outcome.output.find("\nVOLUME LABEL: AMIGO0\n"), std::string::npos);
    EXPECT_NE((" " + listed_names(outcome) + " ").find(" GETSAVE "), std::string::npos) << outcome.output;
}
