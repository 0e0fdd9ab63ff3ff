// What the plug-in asks of the engine for a copy: the flags, and the name of a file that went out for the host's own
// use.
#include <gtest/gtest.h>

#include "platform/platform.h"
#include "plugin/plugin.h"
#include "plugin/state.h"
#include "tests/plugin/copy_host.h"
#include "tests/support/capture.h"
#include "volume/extract.h"
#include "volume/insert.h"

using namespace tests;

namespace
{

const std::string plain_name = "plain.txt";

// The flags of an engine's function as its log line shows them; empty when it wasn't called.
std::string flags_in(const std::string &log, const std::string &function)
{
    const size_t line = log.find(function + "(");
    if (line == std::string::npos) return "";
    const size_t begin = log.find("flags=", line) + 6;
    return log.substr(begin, log.find_first_of(",)", begin) - begin);
}

std::string get_flags(const std::string &local, int32_t copy_flags)
{
    const LogCapture log(3);
    get_file("README.ASCII", local, copy_flags);
    return flags_in(log.text(), "image_extract_file");
}

std::string put_flags(const std::string &local, int32_t copy_flags)
{
    const LogCapture log(3);
    put_file(local, copy_flags);
    return flags_in(log.text(), "image_add_file");
}

// The line of a function; its numbers that stand for addresses of records on the stack are left out.
std::string line_of(const std::string &log, const std::string &function)
{
    const size_t begin = log.find(function + "(");
    if (begin == std::string::npos) return "";
    std::string line = log.substr(begin, log.find('\n', begin) - begin);
    const size_t number = line.find("new_file=");
    if (number != std::string::npos) line.erase(number, line.find(',', number) - number);
    return line;
}

}

TEST(PluginTransfer, WithoutConversionOnlyOverwritingIsHandedOn)
{
    const CopyHost copies;
    const std::string temporary = temporary_path("plain.txt");
    EXPECT_EQ(get_flags(plain_name, 0), "0");
    EXPECT_EQ(get_flags(plain_name, COPY_OVERWRITE), "1");
    EXPECT_EQ(put_flags(plain_name, 0), "0");
    EXPECT_EQ(put_flags(plain_name, COPY_OVERWRITE | COPY_MOVE), "1");
    EXPECT_EQ(get_flags(temporary, COPY_MOVE), "0");
    EXPECT_STREQ(plugin.temporary_name, "");
}

TEST(PluginTransfer, ConversionWritesTextsUnlessTheHostLooksAtTheFileItself)
{
    const CopyHost copies;
    const std::string temporary = temporary_path("plain.txt");
    plugin.medium->use_file_conversion = 1;
    EXPECT_EQ(get_flags(plain_name, 0), "A");
    EXPECT_EQ(get_flags(plain_name, COPY_OVERWRITE), "B");
    EXPECT_STREQ(plugin.temporary_name, "");
    EXPECT_EQ(get_flags(temporary, 0), "2");
    EXPECT_EQ(plugin.temporary_name, temporary);
}

TEST(PluginTransfer, FileThatWentOutForTheHostComesBackTheSameWay)
{
    const CopyHost copies;
    const std::string temporary = temporary_path("plain.txt");
    plugin.medium->use_file_conversion = 1;
    EXPECT_EQ(put_flags(temporary, 0), "A") << "it never went out";
    get_flags(temporary, 0);
    EXPECT_EQ(put_flags(plain_name, 0), "A");
    EXPECT_EQ(put_flags(temporary, COPY_OVERWRITE), "7");
    EXPECT_STREQ(plugin.temporary_name, "");
    EXPECT_EQ(put_flags(temporary, COPY_OVERWRITE), "B");
}

TEST(PluginTransfer, ResumingNeverReachesTheEngine)
{
    const CopyHost copies;
    EXPECT_EQ(get_flags(plain_name, COPY_RESUME), "");
    EXPECT_EQ(put_flags(plain_name, COPY_RESUME | COPY_OVERWRITE), "");
    EXPECT_EQ(get_file("README.ASCII", plain_name, COPY_RESUME | COPY_MOVE), FILE_NOT_SUPPORTED);
    EXPECT_EQ(get_file("MISSING.ASCII", plain_name, COPY_RESUME), FILE_NOT_SUPPORTED);
    EXPECT_EQ(put_file("missing", COPY_RESUME), FILE_NOT_SUPPORTED);
    EXPECT_TRUE(copies.host.percentages.empty());
}

TEST(PluginTransfer, WithoutAMediumNothingIsCopied)
{
    const WorkFolder folder;
    const PluginHost host;
    write_text("NEW.PROG", "new");
    for (const int32_t flags : {0, COPY_OVERWRITE | COPY_MOVE}) {
        platform_set_last_error(0);
        EXPECT_EQ(get_file("README.ASCII", plain_name, flags), FILE_READ_FAILED);
        EXPECT_EQ(platform_last_error(), error_aborted);
        platform_set_last_error(0);
        EXPECT_EQ(put_file("NEW.PROG", flags), FILE_READ_FAILED);
        EXPECT_EQ(platform_last_error(), error_aborted);
    }
    EXPECT_TRUE(exists("NEW.PROG"));
    EXPECT_TRUE(host.messages.empty());
    EXPECT_TRUE(host.percentages.empty());
}

// Whichever of its functions the plug-in calls, the log shows the exported one.
TEST(PluginTransfer, LogShowsTheEnginesOwnLines)
{
    const CopyHost copies;
    const FileInfo *info = find_by_visible_name(plugin.medium->root, "LAST.ASCII");
    std::string lines[2];
    {
        const LogCapture log(3);
        get_file("LAST.ASCII", "out", 0);
        put_file("missing", 0);
        lines[0] = line_of(log.text(), "image_extract_file") + line_of(log.text(), "image_add_file");
    }
    {
        const LogCapture log(3);
        FileInfo new_file = {};
        image_extract_file(plugin.medium, info, nullptr, "out", nullptr, 0, my_progress);
        image_add_file(plugin.medium, &new_file, "missing", 0, my_progress);
        lines[1] = line_of(log.text(), "image_extract_file") + line_of(log.text(), "image_add_file");
    }
    EXPECT_EQ(lines[0], lines[1]);
    EXPECT_NE(lines[0], "");
}

TEST(PluginTransfer, Hazard_J9_ALocalNameLongerThanAPathIsNotRemembered)
{
    const CopyHost copies;
    plugin.medium->use_file_conversion = 1;
    const std::string local = temporary_path("plain.txt") + std::string(300, 'x');
    get_file("README.ASCII", local, 0);
    EXPECT_STREQ(plugin.temporary_name, "");
}

TEST(PluginTransfer, Hazard_J10_ALocalNameLongerThanAPathIsCopiedAllTheSame)
{
#ifdef _WIN32
    GTEST_SKIP() << "such paths need a prefix here";
#else
    const CopyHost copies;
    const std::string folder = std::string(200, 'f') + "/" + std::string(200, 'g');
    std::filesystem::create_directories(folder);
    EXPECT_EQ(get_file("SORT.CODE", folder + "/SORT2.CODE", 0), FILE_OK);
    EXPECT_EQ(read_file(folder + "/SORT2.CODE"), copies.content("SORTC_____"));
    EXPECT_EQ(put_file(folder + "/SORT2.CODE", COPY_MOVE), FILE_OK);
    EXPECT_EQ(copies.content("SORT2C____"), copies.content("SORTC_____"));
    EXPECT_FALSE(exists(folder + "/SORT2.CODE"));
#endif
}
