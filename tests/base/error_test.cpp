#include "base/error.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "base/file.h"
#include "platform/platform.h"
#include "tests/base/scripted_console.h"

namespace
{

using tests::ScriptedConsole;

struct NumberedText {
    uint32_t number;
    const char *text;
};

constexpr NumberedText numbered_texts[] = {
    {100, "OK"},
    {102, "System error"},
    {103, "Invalid parameter"},
    {104, "Missing parameter"},
    {105, "Out of memory"},
    {106, "Not initialized"},
    {107, "Error in config file"},
    {108, "Error in config file"},
    {109, "Not supported"},
    {200, "Unknown file type"},
    {201, "Unknown system"},
    {202, "Unknown access type"},
    {203, "Unsupported format"},
    {204, "Bad msus specifier"},
    {205, "No target specified"},
    {206, "Can't copy/move more than one file to another"},
    {207, "File not found"},
    {208, "Can't copy/move file to itself"},
    {209, "Invalid command"},
    {210, "Target already exists"},
    {211, "No space left on device"},
    {212, "Bad filename"},
    {213, "Bad directory entry"},
    {214, "Not a convertable file or errors in data structure"},
    {215, "Unable to read media"},
    {216, "Directory full"},
    {217, "Max. directory level exceeded"},
    {218, "Directory not found"},
    {300, "Can't open file"},
    {301, "File seek failed"},
    {302, "File read error"},
    {303, "File write error - check write protection"},
    {304, "Can't delete file - check write protection"},
    {305, "Error during flush"},
    {306, "Can't create temporary file"},
    {307, "Can't create file"},
    {308, "Flushing file buffers failed"},
    {309, "Can't set EOF for file"},
    {310, "Can't move file - check protections"},
    {311, "Can't get or set file attribute"},
    {312, "Can't create directory"},
    {400, "No disc in drive"},
    {401, "Disc write protected"},
    {402, "Disc not formatted"},
    {403, "Disc has unknown format"},
    {404, "Disc is formatted with invalid interleave"},
    {405, "Disc is unreadable"},
    {406, "Disc is not initialized"},
    {407, "Timeout during controller operation"},
    {408, "Disc recalibration failed"},
    {409, "Disc seek failed"},
    {410, "Disc read failed"},
    {411, "Disc write failed"},
    {412, "Disc format failed"},
    {413, "Disc verify failed"},
    {414, "Operation not supported"},
    {415, "Bad sector size"},
    {416, "Bad sector"},
    {417, "Bad track"},
    {418, "Cylinder out of range"},
    {419, "Head out of range"},
    {420, "Sector out of range"},
    {421, "Record out of range"},
    {422, "Block out of range"},
    {423, "Driver error"},
    {424, "Controller error"},
    {425, "Open failed"},
    {426, "Not installed"},
    {427, "No floppy drive installed"},
    {428, "Index hole not found"},
    {500, "Device status error"},
    {501, "No device error"},
    {502, "Read error on device"},
    {503, "Write error on device"},
    {504, "Bus timeout"},
    {505, "Unsupported device"},
    {506, "No compatible controller found"},
    {507, "Wrong board specified"},
    {508, "System error"},
    {509, "Device diagnostics error"},
    {510, "Verify error"},
    {511, "No data found error"},
    {512, "End of file error"},
    {513, "End of volume error"},
    {514, "No disc in drive"},
    {515, "Disc blank or unsupported format"},
    {516, "End of cylinder"},
    {517, "CHS out of range"},
    {518, "Device not ready"},
    {519, "Medium is write protected"},
    {520, "Device busy"},
    {521, "Buffer underflow/overflow"},
    {600, "AMIGO DSJ error"},
    {601, "Can't get status info from device"},
    {602, "Short read"},
    {603, "Short write"},
};

std::string composed()
{
    char text[ERROR_TEXT_SIZE];
    memset(text, '#', sizeof(text));
    get_error(text);
    return text;
}

// The slot as it is when nothing was ever set.
void empty_slot()
{
    global_error = 0;
    global_error_info[0] = '\0';
}

TEST(Error, EachNumberHasItsText)
{
    for (const NumberedText &row : numbered_texts) {
        set_error(row.number, "%s", "");
        EXPECT_EQ(composed(), row.text) << row.number;
        set_error(row.number, "%s", "detail");
        EXPECT_EQ(composed(), std::string(row.text) + " (detail)") << row.number;
    }
}

TEST(Error, FloppyTextsAreExported)
{
    EXPECT_STREQ(fdc_error_strings[0], "No disc in drive");
    EXPECT_STREQ(fdc_error_strings[28], "Index hole not found");
}

TEST(Error, SetErrorKeepsNumberAndDetailAndReturnsTheNumber)
{
    EXPECT_EQ(set_error(300, "Msus \"%s\" %d %u %lu %X %c %3d|", "7,0", -5, 6u, 7ul, 0xABu, 'x', 4), 300u);
    EXPECT_EQ(global_error, 300u);
    EXPECT_STREQ(global_error_info, "Msus \"7,0\" -5 6 7 AB x   4|");
}

TEST(Error, DetailStandsInBracketsBehindTheText)
{
    set_error(300, "Msus \"%s\"", "name");
    EXPECT_EQ(composed(), "Can't open file (Msus \"name\")");
}

TEST(Error, Number101IsItsDetailAlone)
{
    set_error(101, "%s", "as it stands");
    EXPECT_EQ(composed(), "as it stands");
    set_error(101, "%s", "");
    EXPECT_EQ(composed(), "");
}

TEST(Error, NothingEverSetIsError0)
{
    empty_slot();
    EXPECT_EQ(composed(), "Error 0");
    strcpy(global_error_info, "left over");
    EXPECT_EQ(composed(), "Error 0 (left over)");
}

TEST(Error, DetailStaysUntilTheNextError)
{
    set_error(207, "%s", "FIRST");
    ASSERT_TRUE(file_is_valid(1));
    EXPECT_EQ(composed(), "File not found (FIRST)");
    EXPECT_EQ(composed(), "File not found (FIRST)");
    set_error(207, "%s", "");
    EXPECT_EQ(composed(), "File not found");
}

TEST(Error, NullFormatIsAnEmptyDetail)
{
    set_error(203, "%s", "old");
    set_error(203, nullptr);
    EXPECT_EQ(composed(), "Unsupported format");
}

TEST(Error, NewDetailMayNameTheOldOne)
{
    set_error(207, "%s", "inner");
    set_error(302, "outer: %s", global_error_info);
    EXPECT_EQ(composed(), "File read error (outer: inner)");
}

TEST(Error, NullBufferIsAnInvalidParameter)
{
    empty_slot();
    get_error(nullptr);
    EXPECT_EQ(composed(), "Invalid parameter (NULL pointer)");
}

TEST(Error, Hazard_M1_LongDetailIsCutAtTheEnd)
{
    const std::string path(5000, 'p');
    set_error(300, "\"%s\"", path.c_str());
    EXPECT_EQ(strlen(global_error_info), 1023u);
    EXPECT_EQ(std::string(global_error_info), "\"" + std::string(1022, 'p'));
    EXPECT_EQ(composed(), "Can't open file (\"" + std::string(1022, 'p') + ")");
}

TEST(Error, Hazard_M2_PercentSignsInADetailPrintAsTheyStand)
{
    set_error(500, "%s", "100%n %s%s");
    EXPECT_EQ(composed(), "Device status error (100%n %s%s)");
}

TEST(Error, Hazard_B9_LabelWithAFormatPrintsAsItStands)
{
    set_error(207, "\"%s\"", "%n%s%d");
    EXPECT_EQ(composed(), "File not found (\"%n%s%d\")");
}

TEST(Error, Hazard_M5_LongestMessageFitsTheBuffer)
{
    set_error(214, "%s", std::string(1023, 'd').c_str());
    const std::string text = composed();
    EXPECT_EQ(text, "Not a convertable file or errors in data structure (" + std::string(1023, 'd') + ")");
    EXPECT_LT(text.size(), size_t{ERROR_TEXT_SIZE});
}

TEST(Error, Hazard_M5_NumbersWithoutATextAreNamedByNumber)
{
    for (const uint32_t number : {1u, 99u, 110u, 150u, 199u, 219u, 313u, 429u, 522u, 604u, 699u, 700u, 4294967295u}) {
        set_error(number, "%s", "");
        EXPECT_EQ(composed(), "Error " + std::to_string(number));
    }
    set_error(150, "%s", "why");
    EXPECT_EQ(composed(), "Error 150 (why)");
}

TEST(Error, SystemErrorZeroIsNoError)
{
    platform_set_last_error(0);
    EXPECT_STREQ(last_error(), "no error");
}

TEST(Error, SystemsWordsComeWithoutStopAndLineEnd)
{
    platform_set_last_error(2); // no such file, on every system
    const std::string words = last_error();
    ASSERT_GT(words.size(), 5u);
    EXPECT_EQ(words.find_first_of("\r\n"), std::string::npos);
    EXPECT_NE(words.back(), '.');
    char buffer[256];
    platform_set_last_error(2);
    get_win_error(buffer, sizeof(buffer));
    EXPECT_EQ(words, buffer);
}

TEST(Error, SystemsWordsAreCutToTheBuffer)
{
    char buffer[8] = "#######";
    platform_set_last_error(2);
    const std::string words = last_error();
    platform_set_last_error(2);
    get_win_error(buffer, 5);
    EXPECT_EQ(words.substr(0, 4), buffer);
    EXPECT_EQ(buffer[5], '#');
    get_win_error(buffer, 0);
    get_win_error(nullptr, 5);
    EXPECT_EQ(words.substr(0, 4), buffer);
}

TEST(Error, PrintErrorLogsTheSystemsWords)
{
    ScriptedConsole console;
    console.log_here(0);
    platform_set_last_error(2);
    const std::string words = last_error();
    platform_set_last_error(2);
    PrintError();
    EXPECT_EQ(console.logged(), "Error: " + words + "\r\n");
}

TEST(Error, PrintedErrorGoesToLogAndStandardError)
{
    ScriptedConsole console;
    console.log_here(0);
    set_error(207, "%s", "A");
    print_error("tool");
    EXPECT_EQ(console.logged(), "Error: File not found (A)\r\n");
    EXPECT_EQ(console.complaints(), "[tool] Error: File not found (A)\n");
}

TEST(Error, PrintedErrorIsNotRepeatedWhenTheLogIsStandardOutput)
{
    ScriptedConsole console;
    console.log_here(0);
    logfile = Stdout;
    set_error(207, "%s", "A");
    print_error("tool");
    EXPECT_EQ(console.printed(), "Error: File not found (A)\r\n");
    EXPECT_EQ(console.complaints(), "");
}

TEST(Error, PrintedErrorWithoutAnyLogStillReachesStandardError)
{
    ScriptedConsole console;
    logfile = 0;
    Stdout = 0;
    set_error(207, "%s", "A");
    print_error("tool");
    EXPECT_EQ(console.complaints(), "[tool] Error: File not found (A)\n");
}

} // namespace
