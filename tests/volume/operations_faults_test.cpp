// Each operation with its n-th read or write failing, once and from then on: the medium opens again, files that the
// operation wasn't about are as before, and what it was about is there in its old or its new form.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <string>

#include "base/error.h"
#include "tests/platform/scratch.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "tests/support/stored_volume.h"
#include "tests/support/system45_builder.h"
#include "tests/volume/dir_ops_support.h"
#include "volume/state.h"

using namespace tests;

namespace
{

using Names = std::vector<std::string>;

struct Contents {
    const char *name;
    uint32_t records;
    uint8_t fill;
};

using Files = std::vector<Contents>;

Bytes filled(uint32_t records, uint8_t fill)
{
    return Bytes(size_t{records} * record_bytes, fill);
}

// ---- small volumes of each format ----------------------------------------------------------------------------

Bytes lif_of(const Files &files)
{
    LifVolume volume;
    volume.tracks = 4;
    volume.records_per_track = 10;
    for (const Contents &file : files)
        volume.entries.push_back({.name = file.name, .type = 0xE848, .content = filled(file.records, file.fill)});
    return lif_image(volume);
}

Bytes disk_of(const Files &files)
{
    DiskVolume volume;
    volume.records_per_track = 10;
    volume.tracks = 6;
    volume.availability_start = 3;
    volume.availability_end = 4;
    volume.system_tracks = 2;
    volume.data_tracks = 4;
    for (const Contents &file : files)
        volume.entries.push_back(
            {.name = file.name, .type = 0x2400, .records = static_cast<uint16_t>(file.records), .fill = file.fill});
    return disk45_image(volume);
}

Bytes tape_of(const Files &files)
{
    TapeVolume volume;
    volume.records = 60; // the rest of the tape isn't in the image
    for (const Contents &file : files)
        volume.entries.push_back(
            {.name = file.name, .type = 0x24, .records = static_cast<uint16_t>(file.records), .fill = file.fill});
    return tape45_image(volume);
}

struct Format {
    const char *name;
    Layout layout;
    Bytes (*image)(const Files &files);
};

const Format formats[] = {
    {"LIF", Layout::lif, lif_of}, {"disk", Layout::disk, disk_of}, {"tape", Layout::tape, tape_of}};

const Files present = {{"ONE", 2, 'a'}, {"TWO", 3, 'b'}, {"THREE", 1, 'c'}};

// ---- the operations ------------------------------------------------------------------------------------------

struct Scene {
    explicit Scene(const Format &the_format, const Files &on_other)
        : format(the_format), image(format.image(present), ".img"), other(format.image(on_other), ".img")
    {
    }

    const Format &format;
    TemporaryFile image;
    TemporaryFile other;
    Scratch host;
    FileInfo info{};
};

struct Operation {
    const char *name;
    std::function<DirOrder(Scene &scene)> order;
    Names touched{};       // files of the volume that may be in an old or a new form, or gone
    Files made{};          // what may come: whole where a directory names it
    bool on_other = false; // it comes on the other volume
    Files other = {{"OTHER", 2, 'o'}};
    Files moved{}; // whole here or there
};

DirOrder copy_two(const char *dest_file)
{
    return {.command = COMMAND_COPY, .filespec = Names{"TWO"}, .dest_file = dest_file};
}

const Operation operations[] = {
    {.name = "create",
     .order =
         [](Scene &scene) {
             scene.info = new_file("NEW", "DATA", 512);
             return DirOrder{.command = COMMAND_CREATE, .info = &scene.info};
         }},
    {.name = "add",
     .order =
         [](Scene &scene) {
             const std::string source = scene.host.file("NEW", std::string(768, 'n'));
             return DirOrder{.command = COMMAND_ADD, .filespec = Names{source}, .info = &scene.info};
         },
     .made = {{"NEW", 3, 'n'}}},
    {.name = "add two files",
     .order =
         [](Scene &scene) {
             const Names sources = {scene.host.file("NEW", std::string(768, 'n')),
                                    scene.host.file("NEWER", std::string(256, 'm'))};
             return DirOrder{.command = COMMAND_ADD, .filespec = sources, .info = &scene.info};
         },
     .made = {{"NEW", 3, 'n'}}},
    {.name = "add over",
     .order =
         [](Scene &scene) {
             const std::string source = scene.host.file("TWO", std::string(1024, 'n'));
             return DirOrder{.command = COMMAND_ADD, .filespec = Names{source}, .info = &scene.info};
         },
     .touched = {"TWO"}},
    {.name = "copy", .order = [](Scene &) { return copy_two("NEW"); }, .made = {{"NEW", 3, 'b'}}},
    {.name = "copy over", .order = [](Scene &) { return copy_two("THREE"); }, .touched = {"THREE"}},
    {.name = "copy to another volume",
     .order =
         [](Scene &scene) {
             return DirOrder{.command = COMMAND_COPY, .filespec = Names{"TWO"}, .dest_path = scene.other.path()};
         },
     .made = {{"TWO", 3, 'b'}},
     .on_other = true},
    {.name = "move to another volume",
     .order =
         [](Scene &scene) {
             return DirOrder{.command = COMMAND_MOVE, .filespec = Names{"TWO"}, .dest_path = scene.other.path()};
         },
     .touched = {"TWO"},
     .made = {{"TWO", 3, 'b'}},
     .on_other = true,
     .moved = {{"TWO", 3, 'b'}}},
    {.name = "move all to another volume",
     .order = [](Scene &scene) { return DirOrder{.command = COMMAND_MOVE, .dest_path = scene.other.path()}; },
     .touched = {"ONE", "TWO", "THREE"},
     .on_other = true,
     .moved = present},
    {.name = "rename",
     .order = [](Scene &) { return DirOrder{.command = COMMAND_MOVE, .filespec = Names{"TWO"}, .dest_file = "NEW"}; },
     .touched = {"TWO"},
     .made = {{"NEW", 3, 'b'}}},
    {.name = "delete",
     .order = [](Scene &) { return DirOrder{.command = COMMAND_DELETE, .filespec = Names{"TWO"}}; },
     .touched = {"TWO"}},
    {.name = "delete the first",
     .order = [](Scene &) { return DirOrder{.command = COMMAND_DELETE, .filespec = Names{"ONE"}}; },
     .touched = {"ONE"}},
    {.name = "change attributes",
     .order =
         [](Scene &scene) {
             scene.info = new_file("", "PROG", 0);
             std::copy_n(scene.format.layout == Layout::lif ? "98X6" : "9845", 5, scene.info.system_string);
             return DirOrder{.command = COMMAND_ATTRIBUTES,
                             .filespec = Names{"TWO"},
                             .info = &scene.info,
                             .attributes = CHANGE_TYPE | CHANGE_SYSTEM};
         },
     .touched = {"TWO"}},
    {.name = "list", .order = [](Scene &) { return DirOrder{.command = COMMAND_LIST}; }},
    {.name = "extract",
     .order = [](Scene &scene) { return DirOrder{.command = COMMAND_EXTRACT, .dest_path = scene.host.folder()}; }},
};

// ---- what must hold ------------------------------------------------------------------------------------------

bool holds(const Names &list, const std::string &name)
{
    return std::find(list.begin(), list.end(), name) != list.end();
}

// A record that was written by half may have lost its end mark, so that what follows is read as bad entries.
void expect_opens(const TemporaryFile &image, bool torn, const std::string &where)
{
    const Medium again(image.path(), OPEN_READ_VOLUME | OPEN_CHECK);
    ASSERT_TRUE(again) << where << ": " << error_text();
    if (torn) return;
    EXPECT_EQ(again->state->table_result, 0) << where << ": " << error_text();
}

void expect_kept(const Scene &scene, const TemporaryFile &image, const Files &files, const Names &touched,
                 const std::string &where)
{
    const Bytes bytes = image.bytes();
    const StoredVolume volume = stored(scene.format.layout, bytes);
    for (const Contents &file : files) {
        if (holds(touched, file.name)) continue;
        const StoredFile *found = file_named(volume, file.name);
        ASSERT_NE(found, nullptr) << where << ": " << file.name;
        EXPECT_TRUE(content_of(bytes, *found) == filled(file.records, file.fill)) << where << ": " << file.name;
    }
}

// Data go to the medium ahead of the directory that names them.
void expect_made_are_whole(const Scene &scene, const Operation &operation, const std::string &where)
{
    const Bytes bytes = (operation.on_other ? scene.other : scene.image).bytes();
    const StoredVolume volume = stored(scene.format.layout, bytes);
    for (const Contents &file : operation.made) {
        const StoredFile *found = file_named(volume, file.name);
        if (found == nullptr) continue;
        EXPECT_TRUE(content_of(bytes, *found) == filled(file.records, file.fill)) << where << ": " << file.name;
    }
}

bool is_whole_on(const Scene &scene, const TemporaryFile &image, const Contents &file)
{
    const Bytes bytes = image.bytes();
    const StoredVolume volume = stored(scene.format.layout, bytes);
    const StoredFile *found = file_named(volume, file.name);
    return found != nullptr && content_of(bytes, *found) == filled(file.records, file.fill);
}

void expect_here_or_there(const Scene &scene, const Operation &operation, const std::string &where)
{
    for (const Contents &file : operation.moved)
        EXPECT_TRUE(is_whole_on(scene, scene.image, file) || is_whole_on(scene, scene.other, file))
            << where << ": " << file.name;
}

void expect_bearable(Scene &scene, const Operation &operation, bool torn, const std::string &where)
{
    expect_opens(scene.image, torn, where);
    expect_opens(scene.other, torn, where);
    expect_kept(scene, scene.image, present, operation.touched, where);
    expect_kept(scene, scene.other, operation.other, {}, where);
    expect_made_are_whole(scene, operation, where);
    expect_here_or_there(scene, operation, where);
}

// Whatever the tables say of free space now, a further file doesn't go over another one.
void add_another(Scene &scene, const TemporaryFile &image, const std::string &where)
{
    const Medium medium(image.path());
    ASSERT_TRUE(medium) << where;
    FileInfo info{};
    const std::string source = scene.host.file("LATER", std::string(1500, 'l'));
    const int32_t result = dir_ops(medium.md, {.command = COMMAND_ADD, .filespec = Names{source}, .info = &info});
    EXPECT_TRUE(result == 0 || global_error == 211) << where << ": " << error_text();
}

struct Fault {
    const char *name;
    FileFault fault;
    bool onward;
};

// A read that ends early is none: that is how an image ends.
constexpr Fault faults[] = {{"read", FileFault::read, false},
                            {"reads from", FileFault::read, true},
                            {"seek", FileFault::seek, false},
                            {"write", FileFault::write, false},
                            {"short write", FileFault::short_write, false},
                            {"writes from", FileFault::write, true}};

struct Outcome {
    int32_t result = 0;
    uint32_t error = 0;
    Bytes image{};
    Bytes other{};
};

Outcome run(Scene &scene, const Operation &operation, const Fault *fault, uint32_t n, bool *ret_reached)
{
    Outcome outcome;
    {
        const OutputCapture output; // its file is there ahead of the faults
        const Medium medium(scene.image.path());
        const DirOrder order = operation.order(scene);
        const FileFaults failing(fault == nullptr ? FileFault::none : fault->fault, n,
                                 fault != nullptr && fault->onward);
        outcome.result = dir_ops_printing(medium.md, order);
        outcome.error = global_error;
        *ret_reached = failing.reached;
    }
    outcome.image = scene.image.bytes();
    outcome.other = scene.other.bytes();
    return outcome;
}

// False when the n-th call wasn't made.
bool try_with(const Format &format, const Operation &operation, const Fault &fault, uint32_t n, const Outcome &clean)
{
    const std::string where =
        std::string(format.name) + ", " + operation.name + ", " + fault.name + ' ' + std::to_string(n);
    Scene scene(format, operation.other);
    bool reached = false;
    const Outcome outcome = run(scene, operation, &fault, n, &reached);
    if (!reached) {
        EXPECT_EQ(outcome.result, clean.result) << where;
        EXPECT_EQ(outcome.error, clean.error) << where;
        return false;
    }
    if (outcome.result < 0) {
        EXPECT_NE(outcome.error, 0u) << where;
    } else { // it went on without that call: nothing lacks
        EXPECT_EQ(names_of(stored(format.layout, outcome.image)), names_of(stored(format.layout, clean.image)))
            << where;
        EXPECT_EQ(names_of(stored(format.layout, outcome.other)), names_of(stored(format.layout, clean.other)))
            << where;
    }
    const bool torn = fault.fault == FileFault::short_write;
    expect_bearable(scene, operation, torn, where);
    add_another(scene, scene.image, where);
    add_another(scene, scene.other, where);
    expect_bearable(scene, operation, torn, where + ", another file");
    return true;
}

void expect_every_failure_is_borne(const Format &format)
{
    const LogCapture log(0);
    for (const Operation &operation : operations) {
        bool reached = false;
        Scene scene(format, operation.other);
        const Outcome clean = run(scene, operation, nullptr, 0, &reached);
        expect_bearable(scene, operation, false, std::string(format.name) + ", " + operation.name);
        for (const Fault &fault : faults) {
            for (uint32_t n = 1; try_with(format, operation, fault, n, clean); ++n) ASSERT_LT(n, 300u);
            if (testing::Test::HasFailure()) return;
        }
    }
}

}

TEST(OperationFaults, OnLif)
{
    expect_every_failure_is_borne(formats[0]);
}

TEST(OperationFaults, OnADisk)
{
    expect_every_failure_is_borne(formats[1]);
}

TEST(OperationFaults, OnATape)
{
    expect_every_failure_is_borne(formats[2]);
}
