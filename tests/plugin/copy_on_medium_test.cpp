// Copies of a file on its own medium, and what becomes of the medium when they fail.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "base/error.h"
#include "plugin/plugin.h"
#include "plugin/state.h"
#include "tests/plugin/plugin_host.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "tests/support/stored_volume.h"
#include "tests/support/system45_builder.h"

using namespace tests;

namespace
{

using Names = std::vector<std::string>;

constexpr uint32_t most_accesses = 100;

Bytes filled(uint32_t records, char fill)
{
    return Bytes(size_t{records} * record_bytes, static_cast<uint8_t>(fill));
}

Bytes lif()
{
    LifVolume volume;
    volume.tracks = 4;
    volume.records_per_track = 10;
    volume.entries = {{.name = "ONE", .type = 0xE020, .content = filled(2, 'a')},
                      {.name = "TWO", .type = 0xE020, .content = filled(3, 'b')}};
    return lif_image(volume);
}

Bytes disk()
{
    DiskVolume volume;
    volume.entries = {{.name = "ONE", .records = 2, .fill = 'a'}, {.name = "TWO", .records = 3, .fill = 'b'}};
    return disk45_image(volume);
}

Bytes tape()
{
    TapeVolume volume;
    volume.entries = {{.name = "ONE", .records = 2, .fill = 'a'}, {.name = "TWO", .records = 3, .fill = 'b'}};
    return tape45_image(volume);
}

struct Kind {
    const char *name;
    Layout layout;
    Bytes (*image)();
    const char *extension;
};

const Kind kinds[] = {
    {"LIF", Layout::lif, lif, ".BAS8x"}, {"disk", Layout::disk, disk, ".PROG"}, {"tape", Layout::tape, tape, ".PROG"}};

int32_t copy_to(const Kind &kind, const std::string &to, bool overwrite = false)
{
    const std::string from = host_path("TWO" + std::string(kind.extension));
    const std::string target = host_path(to + kind.extension);
    return FsRenMovFile(from.c_str(), target.c_str(), 0, overwrite ? 1 : 0, nullptr);
}

// The file is there, whole.
bool has(const Kind &kind, const Bytes &image, const std::string &name, const Bytes &content)
{
    const StoredVolume volume = stored(kind.layout, image);
    const StoredFile *file = file_named(volume, name);
    return file != nullptr && content_of(image, *file) == content;
}

// False when the n-th access wasn't made.
bool fail(const Kind &kind, FileFault fault, uint32_t n)
{
    SCOPED_TRACE(std::string(kind.name) + ", " + std::to_string(n));
    const TemporaryFile file(kind.image());
    const PluginHost host(file.path());
    begin_operation();
    bool reached = false;
    {
        const FileFaults faults(fault, n);
        const int32_t result = copy_to(kind, "NEW");
        reached = faults.reached;
        EXPECT_EQ(result, reached ? FILE_WRITE_FAILED : FILE_OK);
    }
    // A later change of the same operation writes the tables again.
    FsSetAttr(host_path("ONE" + std::string(kind.extension)).c_str(), 0);
    end_operation();
    const Bytes image = file.bytes();
    EXPECT_TRUE(has(kind, image, "ONE", filled(2, 'a')));
    EXPECT_TRUE(has(kind, image, "TWO", filled(3, 'b')));
    const StoredVolume volume = stored(kind.layout, image);
    if (file_named(volume, "NEW") != nullptr) {
        EXPECT_TRUE(has(kind, image, "NEW", filled(3, 'b')));
    }
    return reached;
}

}

TEST(CopyOnMedium, ContentTypeAndTablesOfEachFormat)
{
    for (const Kind &kind : kinds) {
        const TemporaryFile file(kind.image());
        const PluginHost host(file.path());
        begin_operation();
        EXPECT_EQ(copy_to(kind, "NEW"), FILE_OK) << kind.name;
        EXPECT_EQ(host.percentages, (std::vector<int32_t>{0, 100})) << kind.name;
        EXPECT_EQ(host.messages, (Names{"filename=NEW"})) << kind.name;
        end_operation();
        const Bytes image = file.bytes();
        const StoredVolume volume = stored(kind.layout, image);
        EXPECT_EQ(names_of(volume), (Names{"ONE", "TWO", "NEW"})) << kind.name;
        EXPECT_EQ(volume.files.at(2).type, volume.files.at(1).type) << kind.name;
        EXPECT_TRUE(has(kind, image, "NEW", filled(3, 'b'))) << kind.name;
        EXPECT_TRUE(volume.spares_agree) << kind.name;
    }
}

TEST(CopyOnMedium, FileOfThatNameGivesWayWhereThatIsAsked)
{
    for (const Kind &kind : kinds) {
        const TemporaryFile file(kind.image());
        const PluginHost host(file.path());
        begin_operation();
        EXPECT_EQ(copy_to(kind, "ONE"), FILE_EXISTS) << kind.name;
        EXPECT_EQ(file.bytes(), kind.image()) << kind.name;
        EXPECT_EQ(copy_to(kind, "ONE", true), FILE_OK) << kind.name;
        end_operation();
        EXPECT_EQ(names_of(stored(kind.layout, file.bytes())), (Names{"TWO", "ONE"})) << kind.name;
        EXPECT_TRUE(has(kind, file.bytes(), "ONE", filled(3, 'b'))) << kind.name;
    }
}

TEST(CopyOnMedium, EngineLogsItsCall)
{
    const TemporaryFile file(disk());
    const PluginHost host(file.path());
    begin_operation();
    const LogCapture log(3);
    EXPECT_EQ(copy_to(kinds[1], "NEW"), FILE_OK);
    EXPECT_TRUE(contains(log.text(), "image_copy file(md=")) << log.text();
    EXPECT_TRUE(contains(log.text(), "to_file=\"NEW\", overwrite=0)")) << log.text();
}

TEST(CopyOnMedium, EachFailedWriteIsToldAndLosesNothing)
{
    for (const Kind &kind : kinds) {
        uint32_t n = 1;
        while (n < most_accesses && fail(kind, FileFault::write, n)) n++;
        EXPECT_GT(n, 2u) << kind.name;
        EXPECT_LT(n, most_accesses) << kind.name;
    }
}
