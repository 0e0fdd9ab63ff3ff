// Options between the dialog, the configuration file and the medium.
#include <gtest/gtest.h>

#include "plugin/plugin.h"
#include "plugin/state.h"
#include "tests/plugin/config_stand_in.h"
#include "tests/plugin/plugin_host.h"

using namespace tests;

namespace
{

using Names = std::vector<std::string>;

const Names with_purged = {"README.ASCII", "RESULTS.&512.BDAT", "OLD.PURGE",   "NOTES.TEXT",
                           "SORT.CODE",    "SECRET.BDAT",       "NODATE.BAS8x"};

constexpr uint32_t headers_by_dialog[] = {0, 0x10, 0x20, 0x30};

}

TEST(PluginOptions, StartWithTypeNamesAndTypedExtensions)
{
    const TemporaryFile file(lif_image(demo_volume()));
    const PluginHost host(file.path());
    EXPECT_EQ(plugin.options, 3u);
    begin_operation();
    ASSERT_NE(plugin.medium, nullptr);
    EXPECT_EQ(plugin.medium->use_type_names, 1u);
    EXPECT_EQ(plugin.medium->use_typed_extensions, 1u);
    EXPECT_EQ(plugin.medium->use_file_conversion, 0u);
    EXPECT_EQ(plugin.medium->use_file_headers, 0u);
    EXPECT_EQ(plugin.medium->show_purged, 0u);
}

TEST(PluginOptions, KeepsFileHeadersFourTimesTheirNumber)
{
    const TemporaryFile file(lif_image(demo_volume()));
    for (const uint32_t bits : headers_by_dialog) {
        const PluginHost host(file.path());
        plugin.options |= bits;
        begin_operation();
        ASSERT_NE(plugin.medium, nullptr);
        EXPECT_EQ(plugin.medium->use_file_headers, bits >> 4 << 2);
    }
}

TEST(PluginOptions, KeepsConfiguredHeadersOutOfTheirBits)
{
    const TemporaryFile file(lif_image(demo_volume()));
    for (const int32_t headers : {0, 1, 2, 3}) {
        ConfiguredValues values;
        values.use_file_headers = headers;
        const ConfigStandIn config(values);
        const PluginHost host(file.path());
        plugin.options |= option_file_headers;
        begin_operation();
        ASSERT_NE(plugin.medium, nullptr);
        EXPECT_EQ(plugin.medium->use_file_headers, 0u) << headers;
        EXPECT_EQ(plugin.medium->use_file_conversion, 0u) << headers;
        EXPECT_EQ(plugin.medium->show_purged, headers >= 2 ? 1u : 0u) << headers;
    }
}

TEST(PluginOptions, PurgedEntriesStayShownOnceTheyAre)
{
    const TemporaryFile file(lif_image(demo_volume()));
    ConfiguredValues values;
    values.use_file_headers = 2;
    ConfigStandIn config(values);
    const PluginHost host(file.path());
    EXPECT_EQ(listed_names(), with_purged);
    end_operation();
    config.values.use_file_headers = 0;
    EXPECT_EQ(listed_names(), with_purged);
    EXPECT_EQ(FsDeleteFile(host_path("OLD.PURGE").c_str()), 1);
    EXPECT_EQ(names_after_reopening().size(), with_purged.size() - 1);
}

TEST(PluginOptions, ConfiguredValuesReachTheMediumAtEachOpening)
{
    const TemporaryFile file(lif_image(demo_volume()));
    ConfiguredValues values;
    values.use_type_names = 0;
    ConfigStandIn config(values);
    const PluginHost host(file.path());
    EXPECT_EQ(listed_names().front(), "README.#0001");
    end_operation();
    config.values.use_type_names = 1;
    config.values.use_typed_extensions = 0;
    EXPECT_EQ(listed_names().front(), "README");
    end_operation();
    config.values.use_typed_extensions = 1;
    config.values.use_file_conversion = 1;
    begin_operation();
    EXPECT_EQ(plugin.medium->use_typed_extensions, 1u);
    EXPECT_EQ(plugin.medium->use_file_conversion, 1u);
    begin_operation();
    EXPECT_EQ(config.readings, 4u) << "also when a medium is open already";
}

TEST(PluginOptions, PlainNamesAreTakenAsTheyStand)
{
    const TemporaryFile file(lif_image(demo_volume()));
    ConfiguredValues values;
    values.use_typed_extensions = 0;
    const ConfigStandIn config(values);
    const PluginHost host(file.path());
    begin_operation();
    const std::string old_name = host_path("README");
    EXPECT_EQ(FsRenMovFile(old_name.c_str(), host_path("LETTER.TEXT.LONG").c_str(), 1, 0, nullptr), FILE_OK);
    EXPECT_TRUE(host.messages.empty());
    EXPECT_EQ(listed_names().front(), "LETTER.TEX");
    EXPECT_EQ(names_after_reopening().front(), "LETTER.TEX");
}

TEST(PluginOptions, UnreadableConfigurationIsToldAndTheMediumOpens)
{
    const TemporaryFile file(lif_image(demo_volume()));
    ConfiguredValues values;
    values.readable = false;
    const ConfigStandIn config(values);
    const PluginHost host(file.path());
    const uint32_t options = plugin.options;
    begin_operation();
    EXPECT_NE(plugin.medium, nullptr);
    EXPECT_EQ(host.messages,
              (Names{"Error in config file tarvo.ini\n", "Error in config file (bad assignment in line 5)"}));
    EXPECT_EQ(plugin.options, options);
}

TEST(PluginOptions, InitForgetsTheTargetAndKeepsTheOptions)
{
    const TemporaryFile file(lif_image(demo_volume()));
    const PluginHost host(file.path());
    plugin.options |= option_show_purged;
    FsInit(1, nullptr, nullptr, nullptr);
    EXPECT_STREQ(plugin.target, "");
    EXPECT_EQ(plugin.options, 11u);
}
