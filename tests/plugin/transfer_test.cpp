// What the plug-in asks of the engine for a copy: the flags, and the name of a file that went out for the host's own
// use.
#include <gtest/gtest.h>

#include "platform/platform.h"
#include "plugin/plugin.h"
#include "plugin/state.h"
#include "tests/plugin/plugin_host.h"
#include "tests/support/capture.h"

using namespace tests;

namespace
{

const std::string plain_name = "plain.txt";

std::string temporary_name()
{
    return "folder" + host_path("_tc1") + host_path("plain.txt");
}

// The flags that the engine was called with, as its log line shows them; empty when it wasn't called.
std::string flags_in(const std::string &log, const std::string &function)
{
    const size_t line = log.find(function + "(");
    if (line == std::string::npos) return "";
    const size_t begin = log.find("flags=", line) + 6;
    return log.substr(begin, log.find_first_of(",)", begin) - begin);
}

std::string get_flags(std::string local, int32_t copy_flags)
{
    const LogCapture log(3);
    FsGetFile(host_path("README.ASCII").c_str(), local.data(), copy_flags, nullptr);
    return flags_in(log.text(), "image_extract_file");
}

std::string put_flags(std::string local, int32_t copy_flags)
{
    const LogCapture log(3);
    FsPutFile(local.data(), host_path("README.ASCII").c_str(), copy_flags);
    return flags_in(log.text(), "image_add_file");
}

struct OpenHost {
    OpenHost() : file(lif_image(demo_volume())), host(file.path())
    {
        begin_operation();
    }

    TemporaryFile file;
    PluginHost host;
};

}

TEST(PluginTransfer, WithoutConversionOnlyOverwritingIsHandedOn)
{
    const OpenHost open;
    EXPECT_EQ(get_flags(plain_name, 0), "0");
    EXPECT_EQ(get_flags(plain_name, COPY_OVERWRITE), "1");
    EXPECT_EQ(get_flags(temporary_name(), COPY_MOVE), "0");
    EXPECT_EQ(put_flags(plain_name, 0), "0");
    EXPECT_EQ(put_flags(plain_name, COPY_OVERWRITE | COPY_MOVE), "1");
    EXPECT_STREQ(plugin.temporary_name, "");
}

TEST(PluginTransfer, ConversionWritesTextsUnlessTheHostLooksAtTheFileItself)
{
    const OpenHost open;
    plugin.medium->use_file_conversion = 1;
    EXPECT_EQ(get_flags(plain_name, 0), "A");
    EXPECT_EQ(get_flags(plain_name, COPY_OVERWRITE), "B");
    EXPECT_STREQ(plugin.temporary_name, "");
    EXPECT_EQ(get_flags(temporary_name(), 0), "2");
    EXPECT_EQ(plugin.temporary_name, temporary_name());
}

TEST(PluginTransfer, FileThatWentOutForTheHostComesBackTheSameWay)
{
    const OpenHost open;
    plugin.medium->use_file_conversion = 1;
    EXPECT_EQ(put_flags(temporary_name(), 0), "A") << "it never went out";
    get_flags(temporary_name(), 0);
    EXPECT_EQ(put_flags(plain_name, 0), "A");
    EXPECT_EQ(put_flags(temporary_name(), COPY_OVERWRITE), "7");
}

TEST(PluginTransfer, ResumingNeverReachesTheEngine)
{
    const OpenHost open;
    EXPECT_EQ(get_flags(plain_name, COPY_RESUME), "");
    EXPECT_EQ(put_flags(plain_name, COPY_RESUME | COPY_OVERWRITE), "");
    EXPECT_TRUE(open.host.percentages.empty());
}

TEST(PluginTransfer, ProgressIsAskedOnceBeforeTheEngine)
{
    OpenHost open;
    open.host.stop_answer = 1;
    EXPECT_EQ(get_flags(plain_name, 0), "0");
    EXPECT_EQ(open.host.percentages, std::vector<int32_t>{0});
}

TEST(PluginTransfer, Hazard_J1_AMoveOutThatFailedKeepsTheFileOnTheMedium)
{
    const OpenHost open;
    const Bytes before = open.file.bytes();
    std::string local = plain_name;
    EXPECT_EQ(FsGetFile(host_path("README.ASCII").c_str(), local.data(), COPY_MOVE, nullptr), FILE_READ_FAILED);
    EXPECT_NE(find_by_visible_name(plugin.medium->root, "README.ASCII"), nullptr);
    EXPECT_EQ(open.file.bytes(), before);
}

TEST(PluginTransfer, Hazard_J1_AMoveOutThatTheHostStopsKeepsTheFileOnTheMedium)
{
    OpenHost open;
    open.host.stop_answer = 1;
    const Bytes before = open.file.bytes();
    std::string local = plain_name;
    FsGetFile(host_path("README.ASCII").c_str(), local.data(), COPY_MOVE, nullptr);
    EXPECT_TRUE(plugin.aborted);
    EXPECT_EQ(open.file.bytes(), before);
    EXPECT_EQ(names_after_reopening().size(), 6u);
}

TEST(PluginTransfer, Hazard_J2_AMoveInThatFailedKeepsTheLocalFile)
{
    const OpenHost open;
    const TemporaryFile local(Bytes{1, 2, 3}, ".txt");
    std::string path = local.path();
    EXPECT_EQ(FsPutFile(path.data(), host_path("NEW.ASCII").c_str(), COPY_MOVE), FILE_READ_FAILED);
    EXPECT_EQ(local.bytes(), (Bytes{1, 2, 3}));
}

TEST(PluginTransfer, Hazard_J2_AMoveInThatTheHostStopsKeepsTheLocalFile)
{
    OpenHost open;
    open.host.stop_answer = 1;
    const TemporaryFile local(Bytes{1, 2, 3}, ".txt");
    std::string path = local.path();
    FsPutFile(path.data(), host_path("NEW.ASCII").c_str(), COPY_MOVE);
    EXPECT_TRUE(plugin.aborted);
    EXPECT_TRUE(local.exists());
}

TEST(PluginTransfer, Hazard_J9_ALocalNameLongerThanAPathIsNotRemembered)
{
    const OpenHost open;
    plugin.medium->use_file_conversion = 1;
    std::string local = temporary_name() + std::string(300, 'x');
    FsGetFile(host_path("README.ASCII").c_str(), local.data(), 0, nullptr);
    EXPECT_STREQ(plugin.temporary_name, "");
}
