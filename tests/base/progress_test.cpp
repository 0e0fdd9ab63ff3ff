#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "base/error.h"
#include "base/log.h"
#include "tests/base/scripted_console.h"

namespace
{

using tests::ScriptedConsole;

TEST(ConsoleProgress, MarkTurnsInPlace)
{
    ScriptedConsole console;
    for (int i = 0; i < 16; ++i) console_progress(); // two rounds, from wherever the mark stood
    const std::string round = "|\b/\b-\b\\\b|\b/\b-\b\\\b";
    EXPECT_NE((round + round + round).find(console.printed()), std::string::npos);
    EXPECT_EQ(console.printed().size(), 32u);
}

TEST(PercentProgress, PrintsOnlyWhatHasChanged)
{
    ScriptedConsole console;
    percent_progress(11, 100);
    percent_progress(11, 100);
    percent_progress(119, 1000);
    EXPECT_EQ(console.printed(), "11%\b\b\b");
    percent_progress(12, 100);
    EXPECT_EQ(console.printed(), "11%\b\b\b12%\b\b\b");
}

TEST(PercentProgress, BackspacesAreAsManyAsCharacters)
{
    ScriptedConsole console;
    percent_progress(0, 50);
    percent_progress(1, 10);
    percent_progress(10, 10);
    EXPECT_EQ(console.printed(), "0%\b\b10%\b\b\b100%\b\b\b\b");
}

TEST(PercentProgress, LargeCountsDoNotWrap)
{
    ScriptedConsole console;
    percent_progress(0, 1);
    percent_progress(4000000000u, 4294967295u);
    EXPECT_EQ(console.printed().substr(console.printed().size() - 6), "93%\b\b\b");
}

TEST(PercentProgress, Hazard_M15_TotalOfZeroPrintsNothing)
{
    ScriptedConsole console;
    percent_progress(0, 0);
    percent_progress(7, 0);
    EXPECT_EQ(console.printed(), "");
}

TEST(StandardProgress, PrintsOneLineAndGoesOn)
{
    ScriptedConsole console;
    EXPECT_EQ(standard_progress_callback(nullptr, 1056, 42), 0);
    EXPECT_EQ(console.printed(), "Record 1056 (42%)\r");
}

struct Answer {
    const char *name;
    int32_t kind;
    const char *input;
    int32_t result;
};

class StandardConfirm : public testing::TestWithParam<Answer>
{
};

TEST_P(StandardConfirm, ResultOfTheAnswer)
{
    ScriptedConsole console(GetParam().input);
    EXPECT_EQ(standard_confirm_callback(GetParam().kind, "%s", "Go"), GetParam().result);
}

constexpr Answer answers[] = {
    {"NoticeReturn", 1, "\n", 0},
    {"NoticeText", 1, "n\n", 0},
    {"NoticeEnd", 1, "", 0},
    {"YesOfTwo", 2, "y\n", 1},
    {"UpperYesOfTwo", 2, "Y\n", 1},
    {"NoOfTwo", 2, "n\n", 2},
    {"UpperNoOfTwo", 2, "N\r\n", 2},
    {"CancelIsNoneOfTwo", 2, "c\ny\n", 1},
    {"YesOfThree", 3, "y\n", 1},
    {"NoOfThree", 3, "n\n", 2},
    {"CancelOfThree", 3, "C\n", 3},
    {"AllIsNoneOfThree", 3, "a\nc\n", 3},
    {"YesOfFour", 4, "y\n", 1},
    {"NoOfFour", 4, "n\n", 2},
    {"AllOfFour", 4, "a\n", 4},
    {"CancelOfFour", 4, "c\n", 3},
    {"LastLineWithoutItsEnd", 2, "y", 1},
    {"NulIsNoAnswer", 2, "\ny\n", 1},
};

INSTANTIATE_TEST_SUITE_P(Answers, StandardConfirm, testing::ValuesIn(answers),
                         [](const auto &row) { return std::string(row.param.name); });

TEST(StandardConfirm, EachKindHasItsPrompt)
{
    ScriptedConsole console("\ny\ny\ny\n");
    for (int32_t kind = 1; kind <= 4; ++kind) standard_confirm_callback(kind, "Copy %d files", 3);
    EXPECT_EQ(console.printed(), "Copy 3 files (press <RETURN> to continue)"
                                 "Copy 3 files (y/n)? "
                                 "Copy 3 files (y/n/[c]ancel)? "
                                 "Copy 3 files (y/n/[a]ll/[c]ancel)? ");
}

TEST(StandardConfirm, EmptyAnswerAsksAgain)
{
    ScriptedConsole console("\nx\nn\nrest");
    EXPECT_EQ(standard_confirm_callback(2, "%s", "Go"), 2);
    EXPECT_EQ(console.printed(), "Go (y/n)? Go (y/n)? Go (y/n)? ");
    EXPECT_EQ(console.input, "rest");
}

TEST(StandardConfirm, Hazard_M17_EndOfInputAnswersNoOrCancel)
{
    ScriptedConsole console;
    EXPECT_EQ(standard_confirm_callback(2, "%s", "Go"), 2);
    EXPECT_EQ(standard_confirm_callback(3, "%s", "Go"), 3);
    EXPECT_EQ(standard_confirm_callback(4, "%s", "Go"), 3);
    console.input = "what?";
    EXPECT_EQ(standard_confirm_callback(2, "%s", "Go"), 2);
}

TEST(StandardConfirm, Hazard_B9_FileNameInAQuestionPrintsAsItStands)
{
    ScriptedConsole console("y\n");
    EXPECT_EQ(standard_confirm_callback(2, "Delete %s", "%n%s"), 1);
    EXPECT_EQ(console.printed(), "Delete %n%s (y/n)? ");
}

TEST(StandardConfirm, NoFormatFailsAndAsksNothing)
{
    ScriptedConsole console("y\n");
    EXPECT_EQ(standard_confirm_callback(2, nullptr), -1);
    EXPECT_EQ(console.printed(), "");
}

TEST(StandardConfirm, OtherKindsAreInvalid)
{
    ScriptedConsole console("y\n");
    for (const int32_t kind : {-1, 0, 5, 100}) {
        global_error = 0;
        EXPECT_EQ(standard_confirm_callback(kind, "%s", "Go"), -1);
        EXPECT_EQ(global_error, 103u);
    }
    EXPECT_EQ(console.printed(), "");
}

TEST(TestMessages, MessageEndsInAColon)
{
    ScriptedConsole console;
    show_test_message("Drive %d", 3);
    EXPECT_EQ(console.printed(), "Drive 3:");
}

TEST(TestMessages, ProgressFillsAFieldOfTwenty)
{
    ScriptedConsole console;
    show_test_progress(10, "track %d", 5);
    EXPECT_EQ(console.printed(), "track 5             ");
    show_test_progress(10, "%s", "twenty-one characters");
    EXPECT_EQ(console.printed().substr(20), "twenty-one characters");
}

TEST(TestMessages, ProgressWithoutTextMovesOnly)
{
    ScriptedConsole console;
    show_test_progress(10, nullptr);
    EXPECT_EQ(console.printed(), "");
}

TEST(TestMessages, ResultPassedOrFailed)
{
    ScriptedConsole console;
    show_result(30, 1, "%d ms", 12);
    EXPECT_EQ(console.printed(), " passed  12 ms               \n");
    show_result(30, 0, "%s", "no answer");
    EXPECT_EQ(console.printed().substr(30), " failed  no answer           \n");
}

TEST(TestMessages, ResultWithoutTextIsTheFieldAlone)
{
    ScriptedConsole console;
    show_result(30, 1, nullptr);
    EXPECT_EQ(console.printed(), " passed " + std::string(20, ' '));
}

TEST(TestMessages, ColoursOfNoConsoleAreLeftAlone)
{
    ScriptedConsole console;
    init_test_message();
    show_test_message("%s", "x");
    exit_test_message();
    exit_test_message();
    EXPECT_EQ(console.printed(), "x:");
}

// A folder of its own as the present one, with a file COPYING of some lines, until the object goes.
class LicenseFolder
{
  public:
    explicit LicenseFolder(int lines)
    {
        folder_ = std::filesystem::temp_directory_path() / ("tarvo_license_" + std::to_string(platform_counter_now()));
        std::filesystem::create_directory(folder_);
        std::filesystem::current_path(folder_);
        if (lines < 0) return;
        std::ofstream file("COPYING", std::ios::binary);
        for (int i = 1; i <= lines; ++i) file << "line " << i << "\n";
    }

    ~LicenseFolder()
    {
        std::filesystem::current_path(old_folder_);
        std::filesystem::remove_all(folder_);
    }

    LicenseFolder(const LicenseFolder &) = delete;
    LicenseFolder &operator=(const LicenseFolder &) = delete;

  private:
    static int64_t platform_counter_now()
    {
        int64_t count = 0;
        platform_counter(&count);
        return count;
    }

    std::filesystem::path old_folder_ = std::filesystem::current_path();
    std::filesystem::path folder_;
};

std::string lines_from_to(int first, int last)
{
    std::string text;
    for (int i = first; i <= last; ++i) text += "line " + std::to_string(i) + "\n";
    return text;
}

constexpr char prompt[] = "(press <RETURN> to continue)";

TEST(License, ShortOneNamesProjectAndLicence)
{
    ScriptedConsole console;
    show_short_license();
    EXPECT_NE(console.printed().find("Tarvo"), std::string::npos);
    EXPECT_NE(console.printed().find("Copyright"), std::string::npos);
    EXPECT_NE(console.printed().find("MIT"), std::string::npos);
    EXPECT_EQ(console.printed().back(), '\n');
}

TEST(License, PagesHaveTwentyFourLines)
{
    const LicenseFolder folder(50);
    ScriptedConsole console("\n\nrest");
    show_full_license();
    EXPECT_EQ(console.printed(),
              lines_from_to(1, 24) + prompt + lines_from_to(25, 48) + prompt + lines_from_to(49, 50));
    EXPECT_EQ(console.input, "rest");
}

TEST(License, OnePageAsksNothing)
{
    const LicenseFolder folder(24);
    ScriptedConsole console("rest");
    show_full_license();
    EXPECT_EQ(console.printed(), lines_from_to(1, 24));
    EXPECT_EQ(console.input, "rest");
}

TEST(License, Hazard_M17_EndOfInputEndsThePages)
{
    const LicenseFolder folder(50);
    ScriptedConsole console;
    show_full_license();
    EXPECT_EQ(console.printed(), lines_from_to(1, 24) + prompt + "\n");
}

TEST(License, WithoutTheFileTheShortOneStandsIn)
{
    const LicenseFolder folder(-1);
    ScriptedConsole console;
    show_short_license();
    const std::string short_one = console.printed();
    show_full_license();
    EXPECT_EQ(console.printed(), short_one + short_one + "The file COPYING was not found.\n");
}

TEST(License, FileBesideTheProgramComesFirst)
{
    char path[FILE_PATH_SIZE];
    ASSERT_EQ(file_get_execution_path(nullptr, path), 0);
    const std::filesystem::path beside = std::filesystem::path(path) / "COPYING";
    if (std::filesystem::exists(beside)) GTEST_SKIP() << "there is a COPYING beside the test program already";
    std::ofstream(beside, std::ios::binary) << "beside\n";
    const LicenseFolder folder(3);
    ScriptedConsole console;
    show_full_license();
    std::filesystem::remove(beside);
    EXPECT_EQ(console.printed(), "beside\n");
}

} // namespace
