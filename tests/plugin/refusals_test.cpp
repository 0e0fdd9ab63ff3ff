// Changes that a file system refuses at the door: what the user is told and the host gets.
#include <gtest/gtest.h>

#include "plugin/plugin.h"
#include "plugin/state.h"
#include "tests/plugin/plugin_host.h"
#include "tests/support/faults.h"
#include "tests/support/sdf_builder.h"

using namespace tests;

namespace
{

using Names = std::vector<std::string>;

// A volume with a tree, opened for an operation.
struct SdfHost {
    SdfHost() : image(sdf_image(five_levels()).bytes), file(image, ".sdf"), host(file.path())
    {
        begin_operation();
    }

    void expect_refused(const char *message) const
    {
        EXPECT_EQ(host.messages, (Names{message}));
        EXPECT_TRUE(host.percentages.empty());
        EXPECT_EQ(file.bytes(), image);
    }

    Bytes image;
    TemporaryFile file;
    PluginHost host;
};

constexpr char name[] = "FIRST.DATA";

}

TEST(SdfRefusal, Insertion)
{
    const SdfHost sdf;
    char local[] = "in.txt";
    EXPECT_EQ(FsPutFile(local, host_path(name).c_str(), COPY_MOVE), FILE_NOT_SUPPORTED);
    sdf.expect_refused("Transfer of files into SDF file system is currently not supported.");
}

TEST(SdfRefusal, InsertionThatResumesIsRefusedWithoutWords)
{
    const SdfHost sdf;
    char local[] = "in.txt";
    EXPECT_EQ(FsPutFile(local, host_path(name).c_str(), COPY_RESUME), FILE_NOT_SUPPORTED);
    EXPECT_TRUE(sdf.host.messages.empty());
}

TEST(SdfRefusal, RenameAndCopy)
{
    for (const int32_t move : {0, 1}) {
        const SdfHost sdf;
        EXPECT_EQ(FsRenMovFile(host_path(name).c_str(), host_path("NEW.ASCII").c_str(), move, 1, nullptr),
                  FILE_NOT_SUPPORTED);
        sdf.expect_refused("Rename/move of files within SDF file system is currently not supported.");
    }
}

TEST(SdfRefusal, Deletion)
{
    const SdfHost sdf;
    EXPECT_EQ(FsDeleteFile(host_path(name).c_str()), FILE_NOT_SUPPORTED);
    sdf.expect_refused("File delete within SDF file system is currently not supported.");
}

TEST(SdfRefusal, DeletionOfAFileThatIsNotThere)
{
    const SdfHost sdf;
    EXPECT_EQ(FsDeleteFile(host_path("MISSING").c_str()), FILE_NOT_SUPPORTED);
    sdf.expect_refused("File delete within SDF file system is currently not supported.");
}

TEST(SdfRefusal, Attributes)
{
    const SdfHost sdf;
    EXPECT_EQ(FsSetAttr(host_path(name).c_str(), 1), FILE_NOT_SUPPORTED);
    sdf.expect_refused("Changing file attributes within SDF file system is currently not supported.");
}

TEST(SdfRefusal, Time)
{
    const SdfHost sdf;
    const HostTime time = host_time(1000000000);
    EXPECT_EQ(FsSetTime(host_path(name).c_str(), &time, &time, &time), FILE_NOT_SUPPORTED);
    sdf.expect_refused("Changing file time within SDF file system is currently not supported.");
}

// A target with a path lists nothing: a directory rewritten from that list would lose every file.
TEST(ListReadForAPath, IsNeverWrittenOverTheDirectory)
{
    const Bytes image = lif_image(demo_volume());
    const TemporaryFile file(image);
    const PluginHost host(std::string(file.path()) + ":SUB");
    begin_operation();
    ASSERT_NE(plugin.medium, nullptr);
    const TemporaryFile source(Bytes(300, 'x'), ".txt");
    std::string local = source.path();
    EXPECT_EQ(FsPutFile(local.data(), host_path("NEW").c_str(), 0), FILE_READ_FAILED);
    EXPECT_EQ(FsDeleteFile(host_path("README.ASCII").c_str()), 0);
    EXPECT_EQ(file.bytes(), image);
    EXPECT_FALSE(host.messages.empty());
}
