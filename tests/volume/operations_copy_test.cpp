// One file from a volume to another, or under another name on its own.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "base/convert.h"
#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/support/faults.h"
#include "tests/support/medium.h"
#include "tests/support/memory_medium.h"
#include "tests/support/stored_volume.h"
#include "tests/support/system45_builder.h"
#include "tests/volume/extract_support.h"
#include "volume/allocation.h"
#include "volume/operations_inner.h"
#include "volume/table.h"

using namespace tests;

namespace
{

using Names = std::vector<std::string>;

DiskVolume empty_disk()
{
    return {};
}

LifVolume empty_lif()
{
    LifVolume volume;
    volume.directory_length = 2;
    return volume;
}

int32_t copy(MediaDescriptor *from, const std::string &name, MediaDescriptor *to, const char *to_file,
             int32_t overwrite = 0)
{
    const OutputCapture output;
    forget_error();
    return image_copy_file(from, entry_named(from, name), to, to_file, overwrite);
}

// The files of LIF volumes whose types have a rule.
LifVolume typed_files()
{
    LifVolume volume = empty_lif();
    uint8_t fill = 'a';
    for (const auto &[name, type] : {std::pair<const char *, uint16_t>{"DATA", 0xE848},
                                     {"PROG", 0xE990},
                                     {"KEYS", 0xE998},
                                     {"BPRG", 0xE9B0},
                                     {"ASMB", 0xE9B8}})
        volume.entries.push_back({.name = name, .type = type, .content = Bytes(600, fill++)});
    return volume;
}

using Types = std::vector<uint32_t>;

Types types_of(const StoredVolume &volume)
{
    Types types;
    for (const StoredFile &file : volume.files) types.push_back(file.type);
    return types;
}

// All files of one image onto another one, by way of the engine; the image then.
Bytes copied_over(const Bytes &from, const Bytes &to)
{
    const OutputCapture output;
    const OpenVolume source(from);
    const OpenVolume target(to);
    for (FileInfo *info = source.md->root; info != nullptr; info = info->next)
        EXPECT_EQ(image_copy_file(source.md, info, target.md, nullptr, 0), 0) << error_text();
    EXPECT_EQ(update_tables(target.md), 0) << error_text();
    return target.file.bytes();
}

void expect_contents(const Bytes &image, const StoredVolume &volume)
{
    uint8_t fill = 'a';
    for (const StoredFile &file : volume.files) {
        Bytes wanted(600, fill++);
        wanted.resize(768);
        EXPECT_EQ(content_of(image, file), wanted) << file.name;
    }
}

}

// ---- from one format to another ------------------------------------------------------------------------------

TEST(CopyFile, WayFromLifToDiskToTapeAndBack)
{
    const Names all = {"DATA", "PROG", "KEYS", "BPRG", "ASMB"};
    const Bytes disk = copied_over(lif_image(typed_files()), disk45_image(empty_disk()));
    EXPECT_EQ(names_of(stored_disk(disk)), all);
    EXPECT_EQ(types_of(stored_disk(disk)), (Types{0x2400, 0xC800, 0xCC00, 0xD800, 0xDE00}));
    EXPECT_TRUE(stored_disk(disk).spares_agree);
    expect_contents(disk, stored_disk(disk));

    const Bytes tape = copied_over(disk, tape45_image({}));
    EXPECT_EQ(names_of(stored_tape(tape)), all);
    EXPECT_EQ(types_of(stored_tape(tape)), (Types{36, 72, 76, 88, 92}));
    EXPECT_TRUE(stored_tape(tape).spares_agree);
    expect_contents(tape, stored_tape(tape));

    const Bytes lif = copied_over(tape, lif_image(empty_lif()));
    EXPECT_EQ(names_of(stored_lif(lif)), all);
    EXPECT_EQ(types_of(stored_lif(lif)), (Types{0xE848, 0xE990, 0xE998, 0xE9B0, 92})); // the last has no way back
    expect_contents(lif, stored_lif(lif));
}

TEST(CopyFile, OtherWayRoundAndWhatComesBack)
{
    const Bytes tape = copied_over(lif_image(typed_files()), tape45_image({}));
    EXPECT_EQ(types_of(stored_tape(tape)), (Types{36, 72, 76, 0xB0, 92})); // $E9B0 isn't one for tapes
    expect_contents(tape, stored_tape(tape));
    const Bytes disk = copied_over(tape, disk45_image(empty_disk()));
    EXPECT_EQ(types_of(stored_disk(disk)), (Types{0x2400, 0xC800, 0xCC00, 0xB000, 0xDC00}));
    const Bytes lif = copied_over(disk, lif_image(empty_lif()));
    EXPECT_EQ(types_of(stored_lif(lif)), (Types{0xE848, 0xE990, 0xE998, 0xB000, 0xDC00}));
    expect_contents(lif, stored_lif(lif));
}

TEST(CopyFile, DirectoriesSayTheSameAfterReopening)
{
    const Bytes disk = copied_over(lif_image(typed_files()), disk45_image(empty_disk()));
    const OpenVolume open(disk);
    EXPECT_EQ(type_text(*entry_named(open.md, "DATA")), "DATA");
    EXPECT_EQ(type_text(*entry_named(open.md, "KEYS")), "KEYS");
    EXPECT_EQ(entry_named(open.md, "BPRG")->size, 768u);
    EXPECT_EQ(runs_of(*open.md), (Runs{{75, 525}}));
    const OpenVolume tape(copied_over(disk, tape45_image({})));
    EXPECT_EQ(type_text(*entry_named(tape.md, "PROG")), "PROG");
}

TEST(CopyFile, TypeTextOfTheEntryIsThatOfTheTarget)
{
    const OpenVolume source(lif_image(typed_files()));
    const OpenVolume target(disk45_image(empty_disk()));
    EXPECT_EQ(copy(source.md, "ASMB", target.md, nullptr), 0);
    EXPECT_EQ(entry_named(target.md, "ASMB")->type, 0xDE00);
    EXPECT_EQ(type_text(*entry_named(target.md, "ASMB")), "ASMB");
}

// What the new name says is the target's own word already.
TEST(CopyFile, TypeOfTheNewNameIsNotMappedAgain)
{
    const OpenVolume source(lif_image(typed_files()));
    const OpenVolume target(tape45_image({}));
    EXPECT_EQ(copy(source.md, "DATA", target.md, "NEW.PROG"), 0);
    EXPECT_EQ(entry_named(target.md, "NEW")->type, 0xC8);
}

TEST(CopyFile, SameFormatKeepsEverything)
{
    const OpenVolume source(demo_volume());
    ASSERT_EQ(update_tables(source.md), 0); // reading and writing completes implementation bytes
    const Bytes image = source.file.bytes();
    const StoredVolume before = stored_lif(image);
    const Bytes copied = copied_over(image, lif_image(empty_lif()));
    const StoredVolume after = stored_lif(copied);
    ASSERT_EQ(after.files.size(), before.files.size());
    for (size_t i = 0; i < before.files.size(); ++i) {
        StoredFile moved = after.files[i];
        moved.start = before.files[i].start;
        EXPECT_EQ(moved, before.files[i]);
        EXPECT_EQ(content_of(copied, after.files[i]), content_of(image, before.files[i]));
    }
}

// ---- names ---------------------------------------------------------------------------------------------------

TEST(CopyFile, NewNameIsTakenApart)
{
    const OpenVolume open(three_files());
    EXPECT_EQ(copy(open.md, "ONE", open.md, "some/folder/COPY.SDATA"), 0);
    EXPECT_EQ(entry_named(open.md, "COPY")->type, 0xE0D0);
    EXPECT_EQ(copy(open.md, "ONE", open.md, "PLAIN"), 0);
    EXPECT_EQ(entry_named(open.md, "PLAIN")->type, 1u);
}

// The type that ends a directory would hide all files behind it.
TEST(CopyFile, TypesThatADirectoryDoesNotShowAreRefusedBeforeAnyFileGivesWay)
{
    const OpenVolume open(three_files());
    for (const char *name : {"NEW.EOD", "TWO.EOD", "TWO.PURGE"}) {
        forget_error();
        EXPECT_EQ(copy(open.md, "ONE", open.md, name, 1), -1) << name;
        EXPECT_EQ(global_error, 200u) << name;
    }
    for (const char *name : {"ONE", "TWO", "THREE"}) EXPECT_NE(entry_named(open.md, name), nullptr) << name;
    EXPECT_EQ(entry_named(open.md, "NEW"), nullptr);
}

TEST(CopyFile, Hazard_J4_OntoItselfLeavesTheFile)
{
    const OpenVolume open(three_files());
    for (const char *name : {static_cast<const char *>(nullptr), "ONE"}) {
        EXPECT_EQ(copy(open.md, "ONE", open.md, name, 1), -1);
        EXPECT_EQ(error_text(), "Can't copy/move file to itself (file \"ONE\")");
        EXPECT_EQ(names(open.md), (Names{"ONE", "TWO", "THREE"}));
    }
}

TEST(CopyFile, NameThatExists)
{
    const OpenVolume open(three_files());
    EXPECT_EQ(copy(open.md, "ONE", open.md, "TWO"), -1);
    EXPECT_EQ(error_text(), "Target already exists (file \"TWO\")");
    EXPECT_EQ(names(open.md), (Names{"ONE", "TWO", "THREE"}));
    EXPECT_EQ(copy(open.md, "ONE", open.md, "TWO", 1), 0);
    EXPECT_EQ(names(open.md), (Names{"ONE", "THREE", "TWO"}));
}

TEST(CopyFile, KeepsCopiedNamesTurnedTwice)
{
    LifVolume volume = empty_lif();
    volume.entries = {{.name = "A\xD8", .content = Bytes(256, 'a')}};
    const OpenVolume source(volume);
    const OpenVolume target(empty_lif());
    EXPECT_EQ(copy(source.md, "A\xD8", target.md, nullptr), 0);
    const char turned[] = {'A', static_cast<char>(win2hp(win2hp(0xD8))), '\0'};
    ASSERT_STRNE(turned, "A\xD8");
    EXPECT_EQ(names(target.md), (Names{turned}));
}

TEST(CopyFile, NameThatCannotBe)
{
    const OpenVolume source(three_files());
    const OpenVolume target(disk45_image(empty_disk()));
    EXPECT_EQ(copy(source.md, "ONE", target.md, ""), -1);
    EXPECT_EQ(error_text(), "Bad filename (file \"\": empty filename)");
    EXPECT_EQ(target.md->root, nullptr);
    EXPECT_EQ(runs_of(*target.md), (Runs{{60, 540}}));
}

TEST(CopyFile, MissingArguments)
{
    const OpenVolume open(three_files());
    FileInfo *info = open.md->root;
    for (int missing = 0; missing < 3; ++missing) {
        forget_error();
        EXPECT_EQ(image_copy_file(missing == 0 ? nullptr : open.md, missing == 1 ? nullptr : info,
                                  missing == 2 ? nullptr : open.md, "NEW", 0),
                  -1);
        EXPECT_EQ(global_error, 103u);
    }
}

TEST(CopyFile, CallIsLogged)
{
    const OpenVolume open(three_files());
    const LogCapture log(3);
    EXPECT_EQ(copy(open.md, "ONE", open.md, "NEW", 1), 0);
    EXPECT_TRUE(contains(log.text(), "Trace: image_copy file(md=")) << log.text();
    EXPECT_TRUE(contains(log.text(), ", to_file=\"NEW\", overwrite=1)\n"));
}

// ---- what the faces ask of it --------------------------------------------------------------------------------

TEST(CopyFileInner, TellsWhatBecameOfIt)
{
    const OpenVolume open(three_files());
    const Copying done = copy_file(open.md, entry_named(open.md, "ONE"), open.md, {.to_file = "NEW"});
    EXPECT_EQ(done.result, 0);
    EXPECT_TRUE(done.whole);
    EXPECT_FALSE(done.deleted_old);
    EXPECT_EQ(done.entry, entry_named(open.md, "NEW"));
    const Copying again =
        copy_file(open.md, entry_named(open.md, "TWO"), open.md, {.to_file = "NEW", .overwrite = true});
    EXPECT_TRUE(again.deleted_old);
    EXPECT_EQ(again.entry, entry_named(open.md, "NEW"));
    EXPECT_EQ(again.entry->size, 768u);
}

TEST(CopyFileInner, StoppedCopyIsNotWhole)
{
    const OpenVolume open(three_files());
    const ProgressLog stop(1);
    const Copying done =
        copy_file(open.md, entry_named(open.md, "TWO"), open.md, {.to_file = "NEW", .progress = ProgressLog::callback});
    EXPECT_EQ(done.result, 0);
    EXPECT_FALSE(done.whole);
    EXPECT_EQ(stop.calls.size(), 2u);
}

TEST(CopyFileInner, PlanWritesNothing)
{
    const OpenVolume source(three_files());
    const OpenVolume target(disk45_image(empty_disk()));
    const Bytes before = target.file.bytes();
    const FileFaults watch;
    const Copying done = copy_file(source.md, entry_named(source.md, "TWO"), target.md, {.only_plan = true});
    EXPECT_EQ(done.result, 0);
    EXPECT_FALSE(done.whole);
    EXPECT_EQ(watch.writes, 0u);
    EXPECT_EQ(names(target.md), (Names{"TWO"}));
    EXPECT_EQ(runs_of(*target.md), (Runs{{63, 537}}));
    EXPECT_EQ(target.file.bytes(), before);
}

// ---- hazards -------------------------------------------------------------------------------------------------

TEST(CopyFile, Hazard_J16_DamagedSizeOfTheSourceIsNoRoom)
{
    // An entry that claims more than its volume has; the target has room for all of it.
    LifVolume damaged = three_files();
    damaged.entries[2].length = 400;
    const OpenVolume source(damaged);
    const OpenVolume target(disk45_image(empty_disk()));
    const Bytes before = target.file.bytes();
    EXPECT_EQ(copy(source.md, "THREE", target.md, nullptr), -1);
    EXPECT_EQ(error_text(), "No space left on device (file \"THREE\")");
    EXPECT_EQ(target.md->root, nullptr);
    EXPECT_EQ(target.file.bytes(), before);
    // Inside one volume, with and without an old file that would have to give way.
    EXPECT_EQ(copy(source.md, "THREE", source.md, "NEW"), -1);
    EXPECT_EQ(global_error, 211u);
    EXPECT_EQ(copy(source.md, "THREE", source.md, "ONE", 1), -1);
    EXPECT_EQ(names(source.md), (Names{"ONE", "TWO", "THREE"}));
}

// An image whose last records are missing is as good as one that has them as zeros.
TEST(CopyFile, ImageThatLostItsLastRecords)
{
    LifVolume volume = empty_lif();
    volume.entries = {{.name = "LAST", .start = 150, .length = 5, .content = Bytes(5 * 256, 'l')}};
    volume.records = 152;
    const OpenVolume source(volume);
    const OpenVolume target(empty_lif());
    EXPECT_EQ(copy(source.md, "LAST", target.md, nullptr), 0) << error_text();
    ASSERT_EQ(update_tables(target.md), 0);
    Bytes wanted(2 * 256, 'l');
    wanted.resize(5 * 256);
    EXPECT_EQ(content_of(target.file.bytes(), stored_lif(target.file.bytes()).files[0]), wanted);
}

TEST(CopyFile, Hazard_D5_FileAbove65535RecordsIsNoRoom)
{
    LifVolume volume = empty_lif();
    volume.entries = {{.name = "HUGE", .length = 65537, .content = Bytes(10, 'h')}};
    volume.tracks = volume.surfaces = volume.records_per_track = 0;
    volume.records = 10;
    const OpenVolume source(volume);
    source.file.extend(70000 * 256);
    const OpenVolume target(disk45_image(empty_disk()));
    EXPECT_EQ(copy(source.md, "HUGE", target.md, nullptr), -1);
    EXPECT_EQ(global_error, 211u);
    EXPECT_EQ(target.md->root, nullptr);
}

TEST(CopyFile, Hazard_D6_PlaceAbove65535IsNoRoom)
{
    DiskVolume volume = three_disk_files();
    volume.records_per_track = 250;
    volume.tracks = 300;
    volume.system_tracks = 1;
    volume.data_tracks = 299;
    volume.long_runs = true;
    volume.runs = Runs{{70000, 100}};
    volume.records = 300;
    const OpenVolume open(disk45_image(volume));
    open.file.extend(75000 * 256);
    EXPECT_EQ(copy(open.md, "ALPHA", open.md, "NEW"), -1);
    EXPECT_EQ(global_error, 211u);
    EXPECT_EQ(names(open.md).size(), 3u);
}

TEST(CopyFile, Hazard_D7_DamagedEntryLeavesNoRoomBehindIt)
{
    for (const uint32_t length : {100'000U, 0xFFFFFFU}) {
        LifVolume volume = three_files();
        volume.tracks = volume.surfaces = volume.records_per_track = 0;
        volume.records = 60;
        volume.entries.push_back({.name = "GONE", .type = 0, .start = 20, .length = length});
        const OpenVolume open(volume);
        EXPECT_EQ(copy(open.md, "ONE", open.md, "NEW"), -1);
        EXPECT_EQ(global_error, 211u) << length;
        EXPECT_EQ(names(open.md), (Names{"ONE", "TWO", "THREE", "GONE"}));
    }
}

TEST(CopyFile, Hazard_D8_FreeRunOverAFileIsNotTaken)
{
    DiskVolume volume = three_disk_files();
    volume.runs = Runs{{64, 4}, {100, 500}}; // the first one lies in BETA
    const OpenVolume open(disk45_image(volume));
    EXPECT_EQ(copy(open.md, "ALPHA", open.md, "NEW"), 0);
    EXPECT_EQ(entry_named(open.md, "NEW")->location, 100u);
    const Bytes image = open.file.bytes();
    EXPECT_EQ(content_of(image, stored_disk(image).files[1]), Bytes(5 * 256, 'b'));
}

TEST(CopyFile, Hazard_D11_FullDirectoryIsRefused)
{
    TapeVolume volume;
    for (const DiskEntry &entry : numbered_files(42)) volume.entries.push_back({.name = entry.name});
    const OpenVolume open(tape45_image(volume));
    EXPECT_EQ(copy(open.md, "F00000", open.md, "NEW"), -1);
    EXPECT_EQ(error_text(), "Directory full (file \"NEW\")");
    EXPECT_EQ(names(open.md).size(), 42u);
}

TEST(CopyFile, FailedReadLeavesTheEntryInTheListOnly)
{
    MemoryMedium source(lif_image(three_files()));
    ASSERT_EQ(get_media_info(&source.md), 0);
    ASSERT_EQ(get_file_table(&source.md, nullptr, nullptr, 0, 0, 0, 1, 0, 0), 0);
    source.unreadable = {7};
    const OpenVolume target(disk45_image(empty_disk()));
    const Bytes before = target.file.bytes();
    EXPECT_EQ(copy(&source.md, "TWO", target.md, nullptr), -1);
    EXPECT_EQ(global_error, 302u);
    EXPECT_EQ(names(target.md), (Names{"TWO"}));
    const Bytes after = target.file.bytes();
    EXPECT_EQ(stored_disk(after).files.size(), 0u);
    EXPECT_EQ(records_of(after, 0, 60), records_of(before, 0, 60));
}
