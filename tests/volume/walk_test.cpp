// A random walk of operations on each format, held against a plain map: after each one the image says what the map
// says. TARVO_LONG in the environment asks for all of the 100,000 steps on each format; a few thousand are the rule,
// and fewer on Windows.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <map>
#include <memory>
#include <random>
#include <string>

#include "base/error.h"
#include "tests/platform/scratch.h"
#include "tests/support/capture.h"
#include "tests/support/stored_volume.h"
#include "tests/support/system45_builder.h"
#include "tests/volume/dir_ops_support.h"
#include "tests/volume/extract_support.h"
#include "volume/repair.h"

using namespace tests;

namespace
{

constexpr uint32_t usual_steps = 3000;
constexpr uint32_t few_steps = 300; // where each access of a file takes long
constexpr uint32_t all_steps = 100'000;
constexpr uint32_t seeds = 3; // that the steps are shared out among

struct TypeRow {
    const char *text;
    uint16_t type;
    uint32_t words; // a logical record
};

struct Field {
    const char *name;
    Layout layout;
    Bytes (*image)();
    std::vector<TypeRow> types;
    uint32_t largest_file; // records
};

struct ModelFile {
    uint16_t type = 0;
    Bytes content{}; // whole records
};

using Model = std::map<std::string, ModelFile>;

Bytes lif_field()
{
    LifVolume volume;
    volume.directory_length = 3;
    volume.tracks = 20;
    volume.records_per_track = 10;
    return lif_image(volume);
}

DiskVolume disk_field()
{
    DiskVolume volume;
    volume.records_per_track = 10;
    volume.tracks = 24;
    volume.directory_start = 1;
    volume.availability_start = 3;
    volume.availability_end = 4;
    volume.system_tracks = 3;
    volume.data_tracks = 21;
    return volume;
}

Bytes short_disk_field()
{
    return disk45_image(disk_field());
}

Bytes long_disk_field()
{
    DiskVolume volume = disk_field();
    volume.magic = 0x0600;
    volume.long_runs = true;
    return disk45_image(volume);
}

Bytes tape_field()
{
    return tape45_image({});
}

const std::vector<TypeRow> disk_types = {
    {"DATA", 0x2400, 128}, {"PROG", 0xC800, 128}, {"KEYS", 0xCC00, 128}, {"BDAT", 0xD000, 256}};

const Field fields[] = {
    {"LIF",
     Layout::lif,
     lif_field,
     {{"ASCII", 0x0001, 128}, {"SDATA", 0xE0D0, 128}, {"DATA", 0xE848, 128}, {"PROG", 0xE950, 128}},
     20},
    {"disk", Layout::disk, short_disk_field, disk_types, 20},
    {"disk with long runs", Layout::disk, long_disk_field, disk_types, 20},
    {"tape", Layout::tape, tape_field, {{"DATA", 0x24, 128}, {"PROG", 0xC8, 128}, {"KEYS", 0xCC, 128}}, 60},
};

uint32_t records_of(const ModelFile &file)
{
    return static_cast<uint32_t>(file.content.size() / record_bytes);
}

// The records between the files, as runs. An empty file has a place, and takes nothing there.
Runs free_space(const StoredVolume &volume)
{
    std::vector<const StoredFile *> files;
    for (const StoredFile &file : volume.files) {
        if (file.records != 0) files.push_back(&file);
    }
    std::sort(files.begin(), files.end(), [](const StoredFile *left, const StoredFile *right) {
        return std::pair(left->start, left->records) < std::pair(right->start, right->records);
    });
    Runs runs;
    uint32_t next = volume.first_file_record;
    for (const StoredFile *file : files) {
        if (file->start > next) runs.emplace_back(next, file->start - next);
        next = std::max(next, file->start + file->records);
    }
    if (volume.end > next) runs.emplace_back(next, volume.end - next);
    return runs;
}

Runs without_empty(const Runs &runs)
{
    Runs rest;
    std::copy_if(runs.begin(), runs.end(), std::back_inserter(rest),
                 [](const FreeRun &run) { return run.second != 0; });
    return rest;
}

class Walker
{
  public:
    Walker(const Field &field, uint32_t seed) : field_(field), random_(seed), image_(field.image(), ".img")
    {
        reopen();
    }

    void step();

  private:
    uint32_t below(uint32_t limit)
    {
        return static_cast<uint32_t>(random_() % limit);
    }

    const TypeRow &some_type()
    {
        return field_.types[below(static_cast<uint32_t>(field_.types.size()))];
    }

    std::string some_file() // of the model, which has one
    {
        auto file = model_.begin();
        std::advance(file, below(static_cast<uint32_t>(model_.size())));
        return file->first;
    }

    std::string fresh_name();
    Bytes noise(uint32_t bytes);
    void reopen();
    bool has_room(const std::string &old, uint32_t records) const;
    uint32_t error_of_new(const std::string &old, uint32_t records) const; // 0: it fits

    void put(const std::string &name);
    void remove(const std::string &name);
    void rename(const std::string &name);
    void copy(const std::string &name, const std::string &new_name);
    void change_type(const std::string &name);
    void pack();
    void expect(int32_t result, uint32_t error, const Model &after);

    void check();
    void check_files(const Bytes &image, const StoredVolume &volume);
    void check_list(const StoredVolume &volume);

    const Field &field_;
    std::mt19937 random_;
    TemporaryFile image_;
    Scratch host_;
    std::unique_ptr<Medium> medium_;
    Model model_;
    std::string doing_{}; // for the words of a failure
};

std::string Walker::fresh_name()
{
    while (true) {
        std::string name(1, static_cast<char>('A' + below(26)));
        const uint32_t length = 1 + below(6);
        while (name.size() < length) name += static_cast<char>('0' + below(10));
        if (model_.count(name) == 0) return name;
    }
}

// The same bytes in each record but for its head: what counts is which record stands where.
Bytes Walker::noise(uint32_t bytes)
{
    Bytes content(bytes, static_cast<uint8_t>(random_()));
    for (size_t position = 0; position + 4 <= content.size(); position += record_bytes) {
        const auto head = static_cast<uint32_t>(random_());
        std::memcpy(content.data() + position, &head, sizeof head);
    }
    return content;
}

void Walker::reopen()
{
    medium_.reset();
    medium_ = std::make_unique<Medium>(image_.path(), OPEN_READ_VOLUME | OPEN_CHECK);
    ASSERT_TRUE(*medium_) << error_text();
}

// `old` has given way by then; empty: nothing has.
bool Walker::has_room(const std::string &old, uint32_t records) const
{
    StoredVolume volume = stored(field_.layout, image_.bytes());
    std::erase_if(volume.files, [&old](const StoredFile &file) { return file.name == old; });
    if (field_.layout == Layout::disk) {
        const Runs runs = free_space(volume);
        const uint32_t wanted = std::max(records, 1U);
        return std::any_of(runs.begin(), runs.end(), [=](const FreeRun &run) { return run.second >= wanted; });
    }
    uint32_t end = volume.first_file_record;
    for (const StoredFile &file : volume.files) end = std::max(end, file.start + file.records);
    return end + records <= volume.end;
}

uint32_t Walker::error_of_new(const std::string &old, uint32_t records) const
{
    const size_t entries = model_.size() - (old.empty() ? 0 : 1) + 1;
    if (entries > stored(field_.layout, image_.bytes()).slots) return 216;
    return has_room(old, records) ? 0 : 211;
}

// What fails leaves the image as it was; the list in memory may have lost a file by then, so it is read anew.
void Walker::expect(int32_t result, uint32_t error, const Model &after)
{
    EXPECT_EQ(result, error == 0 ? 0 : -1) << error_text();
    EXPECT_EQ(error == 0 ? 0 : global_error, error);
    if (error == 0) {
        model_ = after;
    } else {
        reopen();
    }
}

void Walker::put(const std::string &name)
{
    doing_ = "put " + name;
    const TypeRow &type = some_type();
    const uint32_t record = type.words * 2;
    const uint32_t size = below(field_.largest_file * record_bytes / record + 1) * record;
    Bytes content = noise(size);
    std::string source = name;
    if (type.words != 128) source += ".&" + std::to_string(record);
    source = host_.path(source + "." + type.text);
    // The last bytes of a logical record may be missing: zeros take their place.
    const uint32_t missing = size == 0 ? 0 : below(record);
    write_file(source, Bytes(content.begin(), content.end() - missing));
    std::fill(content.end() - missing, content.end(), uint8_t{0});
    const uint32_t error = error_of_new(model_.count(name) != 0 ? name : "", size / record_bytes);
    Model after = model_;
    after[name] = {type.type, content};
    FileInfo info{};
    expect(dir_ops(medium_->md, {.command = COMMAND_ADD, .filespec = {{source}}, .info = &info}), error, after);
    std::filesystem::remove(source);
}

void Walker::remove(const std::string &name)
{
    doing_ = "remove " + name;
    Model after = model_;
    after.erase(name);
    expect(dir_ops(medium_->md, {.command = COMMAND_DELETE, .filespec = {{name}}}), 0, after);
}

void Walker::rename(const std::string &name)
{
    doing_ = "rename " + name;
    const std::string new_name = fresh_name();
    Model after = model_;
    after[new_name] = after[name];
    after.erase(name);
    expect(dir_ops(medium_->md, {.command = COMMAND_MOVE, .filespec = {{name}}, .dest_file = new_name}), 0, after);
}

void Walker::copy(const std::string &name, const std::string &new_name)
{
    doing_ = "copy " + name + " to " + new_name;
    const uint32_t error = error_of_new(model_.count(new_name) != 0 ? new_name : "", records_of(model_[name]));
    Model after = model_;
    after[new_name] = after[name];
    expect(dir_ops(medium_->md, {.command = COMMAND_COPY, .filespec = {{name}}, .dest_file = new_name}), error, after);
}

void Walker::change_type(const std::string &name)
{
    doing_ = "type of " + name;
    const TypeRow &type = some_type();
    FileInfo info{};
    set_type_text(info, type.text);
    std::memcpy(info.system_string, field_.layout == Layout::lif ? "98X6" : "9845", 5);
    Model after = model_;
    after[name].type = type.type;
    const DirOrder order = {
        .command = COMMAND_ATTRIBUTES, .filespec = {{name}}, .info = &info, .attributes = CHANGE_TYPE | CHANGE_SYSTEM};
    expect(dir_ops(medium_->md, order), 0, after);
}

void Walker::pack()
{
    doing_ = "pack";
    medium_.reset();
    const Bytes before = image_.bytes();
    const OutputCapture output;
    forget_error();
    const int32_t result = image_defrag(image_.path());
    if (stored_disk(before).runs.empty()) {
        EXPECT_EQ(result, -1);
        EXPECT_EQ(image_.bytes(), before);
    } else {
        EXPECT_EQ(result, 0) << error_text();
        EXPECT_LE(without_empty(stored_disk(image_.bytes()).runs).size(), 1u);
    }
    reopen();
}

void Walker::step()
{
    const uint32_t choice = below(100);
    if (choice < 35 || model_.empty()) {
        put(fresh_name());
    } else if (choice < 45) {
        put(some_file());
    } else if (choice < 70) {
        remove(some_file());
    } else if (choice < 78) {
        rename(some_file());
    } else if (choice < 86) {
        copy(some_file(), fresh_name());
    } else if (choice < 90) {
        const std::string from = some_file();
        const std::string to = some_file();
        if (from != to) copy(from, to);
    } else if (choice < 94) {
        change_type(some_file());
    } else if (choice < 97 && field_.layout == Layout::disk) {
        pack();
    } else {
        doing_ = "reopen";
        reopen();
    }
    SCOPED_TRACE(doing_);
    check();
}

void Walker::check()
{
    const Bytes image = image_.bytes();
    const StoredVolume volume = stored(field_.layout, image);
    check_files(image, volume);
    check_list(volume);
    EXPECT_TRUE(volume.spares_agree);
    if (field_.layout == Layout::disk) {
        EXPECT_EQ(without_empty(volume.runs), free_space(volume));
    }
}

void Walker::check_files(const Bytes &image, const StoredVolume &volume)
{
    ASSERT_EQ(volume.files.size(), model_.size());
    uint32_t taken = 0;
    for (const StoredFile &file : volume.files) {
        const auto wanted = model_.find(file.name);
        ASSERT_NE(wanted, model_.end()) << file.name;
        EXPECT_EQ(file.type, wanted->second.type) << file.name;
        EXPECT_TRUE(content_of(image, file) == wanted->second.content) << file.name;
        EXPECT_GE(file.start, volume.first_file_record) << file.name;
        EXPECT_LE(file.start + file.records, volume.end) << file.name;
        taken += file.records;
    }
    uint32_t free = 0; // that nothing overlaps shows in the sum
    for (const FreeRun &run : free_space(volume)) free += run.second;
    EXPECT_EQ(taken + free, volume.end - volume.first_file_record);
}

// What the engine holds in memory is what it has written.
void Walker::check_list(const StoredVolume &volume)
{
    const MediaDescriptor *md = medium_->md;
    uint32_t used = 0;
    const FileInfo *info = md->root;
    for (const StoredFile &file : volume.files) {
        ASSERT_NE(info, nullptr);
        EXPECT_EQ(info->name, file.name);
        EXPECT_EQ(info->location, file.start) << file.name;
        used += file.records * record_bytes;
        info = info->next;
    }
    EXPECT_EQ(info, nullptr);
    EXPECT_EQ(md->used_bytes, used);
    EXPECT_EQ(md->free_bytes, md->data_size - used);
    if (field_.layout == Layout::disk) {
        EXPECT_EQ(without_empty(runs_of(*md)), without_empty(volume.runs));
    }
}

void walk(const Field &field)
{
    const bool all = std::getenv("TARVO_LONG") != nullptr;
    const uint32_t natively = all ? all_steps : usual_steps;
    const uint32_t steps = is_windows() ? (all ? usual_steps : few_steps) : natively;
    for (uint32_t seed = 1; seed <= seeds; ++seed) {
        const LogCapture log(0);
        Walker walker(field, seed);
        for (uint32_t step = 0; step < steps / seeds; ++step) {
            SCOPED_TRACE(std::string(field.name) + ", seed " + std::to_string(seed) + ", step " + std::to_string(step));
            walker.step();
            if (testing::Test::HasFailure()) return; // all that follows would fail too
        }
    }
}

}

TEST(RandomWalk, OnLif)
{
    walk(fields[0]);
}

TEST(RandomWalk, OnADisk)
{
    walk(fields[1]);
}

TEST(RandomWalk, OnADiskWithLongRuns)
{
    walk(fields[2]);
}

TEST(RandomWalk, OnATape)
{
    walk(fields[3]);
}
