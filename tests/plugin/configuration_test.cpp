// A real tarvo.ini, read at each opening: what reaches the medium, the tables and the settings of the boards.
#include <gtest/gtest.h>

#include "base/error.h"
#include "base/log.h"
#include "config/custom_inner.h"
#include "gpib/controllers/settings.h"
#include "plugin/plugin.h"
#include "plugin/state.h"
#include "tests/plugin/plugin_host.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "tests/support/ini_folder.h"

using namespace tests;

namespace
{

using Names = std::vector<std::string>;

// Everything is as at load again at the end.
class PluginConfiguration : public testing::Test
{
  protected:
    PluginConfiguration() : file(lif_image(demo_volume())), host(file.path()) {}

    ~PluginConfiguration() override
    {
        plugin_close_medium();
        use_builtin_tables();
        loglevel = level_;
        board_select = 0;
        port_address = 0;
        gpib_limit_load = 1;
    }

    std::string first_name() const // in a medium that is opened anew
    {
        end_operation();
        return listed_names().front();
    }

    const IniFolder folder;
    const TemporaryFile file;
    PluginHost host;

  private:
    const int32_t level_ = loglevel;
};

Names config_error(const std::string &words)
{
    return {"Error in config file tarvo.ini\n", "Error in config file (" + words + ")"};
}

}

TEST_F(PluginConfiguration, WithoutAFileNothingIsSaidOrChanged)
{
    EXPECT_EQ(first_name(), "README.ASCII");
    EXPECT_TRUE(host.messages.empty());
    EXPECT_EQ(liftype_table, &default_liftype_table[0]);
    EXPECT_STREQ(plugin.system_string, "9845");
    EXPECT_NE(plugin.options & option_no_configuration, 0u);
}

TEST_F(PluginConfiguration, GoodFileIsPutInForce)
{
    folder.write("[liftypes]\n1 = NOTE\n");
    EXPECT_EQ(first_name(), "README.NOTE");
    EXPECT_TRUE(host.messages.empty());
    EXPECT_EQ(media_table, &custom_media_table[0]);
    EXPECT_EQ(drive_table, &custom_drive_table[0]);
    EXPECT_EQ(liftype_table, &custom_liftype_table[0]);
    EXPECT_EQ(plugin.options & option_no_configuration, 0u);
    EXPECT_STREQ(plugin.system_string, "") << "a file that doesn't say it leaves none";
}

TEST_F(PluginConfiguration, FileIsReadAnewAtEachOpening)
{
    folder.write("[liftypes]\n1 = NOTE\n");
    EXPECT_EQ(first_name(), "README.NOTE");
    folder.write("[defaults]\nuse_type_names = 0\n");
    EXPECT_EQ(first_name(), "README.#0001");
    folder.write("[defaults]\nuse_typed_extensions = 0\n");
    EXPECT_EQ(first_name(), "README");
    folder.write("; nothing\n");
    EXPECT_EQ(first_name(), "README.ASCII") << "options are as they were at first";
    folder.write("[liftypes]\n1 = AGAIN\n");
    EXPECT_EQ(first_name(), "README.AGAIN");
    folder.remove();
    EXPECT_EQ(first_name(), "README.AGAIN") << "without a file all stays as it was";
}

TEST_F(PluginConfiguration, SettingsOfTheBoards)
{
    folder.write("[defaults]\nboard = 2\nport = 0x2E1\nnosleep = TRUE\nloglevel = 4\nsystem = 98x6\n"
                 "fastschedule = TRUE\nfilesystem = DISK45\n");
    EXPECT_EQ(first_name(), "README.ASCII");
    EXPECT_EQ(board_select, 2);
    EXPECT_EQ(port_address, 0x2E1u);
    EXPECT_EQ(gpib_limit_load, 0);
    EXPECT_EQ(loglevel, 4);
    EXPECT_STREQ(plugin.system_string, "98X6");
}

TEST_F(PluginConfiguration, SystemIsThatOfNewFiles)
{
    folder.write("[defaults]\nsystem = SE80\n");
    const TemporaryFile local(Bytes(256), ".BIN");
    begin_operation();
    char path[FILE_PATH_SIZE] = "";
    std::string(local.path()).copy(path, sizeof path - 1);
    EXPECT_EQ(FsPutFile(path, host_path("x.BIN").c_str(), 0), FILE_OK);
    const Names names = names_after_reopening();
    EXPECT_NE(names.back().find(".BIN8x"), std::string::npos) << names.back();
}

TEST_F(PluginConfiguration, BadFileIsToldAndLeavesTheTables)
{
    folder.write("[liftypes]\n1 = NOTE\nhello\n");
    EXPECT_EQ(first_name(), "README.ASCII");
    EXPECT_EQ(host.messages, config_error("bad liftype assignment in line 3"));
    EXPECT_EQ(liftype_table, &default_liftype_table[0]);
    EXPECT_EQ(plugin.options & option_no_configuration, option_no_configuration + 0u) << "as it was";
    host.messages.clear();
    EXPECT_EQ(first_name(), "README.ASCII");
    EXPECT_EQ(host.messages.size(), 2u) << "at each opening";
}

TEST_F(PluginConfiguration, FaultsOfSyntaxAreTold)
{
    const OutputCapture printed;
    folder.write("[defaults]\nboard = \"1\n");
    EXPECT_EQ(first_name(), "README.ASCII");
    EXPECT_EQ(host.messages, config_error("unmatched quote in line 2"));
}

TEST_F(PluginConfiguration, BadFileBehindAGoodOneLeavesTablesThatEnd)
{
    folder.write("[liftypes]\n1 = NOTE\n0xE0F0 = OTHER\n[fsinfo]\nM = d,L,1,2,3,4,5,6,7,8,9\n");
    EXPECT_EQ(first_name(), "README.NOTE");
    folder.write("[liftypes]\n1 = LATER\n[fsinfo]\nM\n");
    EXPECT_EQ(first_name(), "README.LATER") << "what stands above the bad line";
    EXPECT_EQ(host.messages, config_error("bad drive assignment syntax in line 4"));
    size_t media = 0;
    while (media_table[media].name != nullptr) media++;
    EXPECT_EQ(media, 28u);
}

TEST_F(PluginConfiguration, ReadThatFailsIsTold)
{
    folder.write("[liftypes]\n1 = NOTE\n");
    end_operation();
    {
        const FileFaults faults(FileFault::read, 2);
        EXPECT_EQ(plugin_check_config_files(), -1);
        EXPECT_TRUE(faults.reached);
    }
    EXPECT_EQ(host.messages, (Names{"Error in config file tarvo.ini\n", "File read error"}));
    EXPECT_EQ(liftype_table, &default_liftype_table[0]);
}

TEST_F(PluginConfiguration, AllocationThatFailsIsTold)
{
    folder.write("[fsinfo]\nM = d,L,1,2,3,4,5,6,7,8,9\n");
    end_operation();
    {
        const HeapFaults faults(1);
        EXPECT_EQ(plugin_check_config_files(), -1);
        EXPECT_TRUE(faults.reached);
    }
    EXPECT_EQ(host.messages, (Names{"Error in config file tarvo.ini\n", "Out of memory"}));
}

TEST_F(PluginConfiguration, Hazard_J20_FailingLogDoesNotHideTheFault)
{
    folder.write("[defaults]\nloglevel = 3\nboard = first\n");
    const FileHandle log = logfile;
    logfile = 0; // writes to it fail
    end_operation();
    begin_operation();
    logfile = log;
    EXPECT_EQ(host.messages, config_error("bad board assignment in line 3"));
}
