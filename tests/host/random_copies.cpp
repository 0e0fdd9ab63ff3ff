// The model knows the volume's list twice: as it stands on the disk, and as the open medium has it, which differs after
// a copy that failed on its way, until something else is written.
#include "tests/host/random_copies.h"

#include <algorithm>
#include <cstring>
#include <random>

#include "tests/host/session.h"
#include "tests/support/volume_builder.h"

namespace host
{

namespace
{

using tests::Bytes;
using tests::record_bytes;

const char image_name[] = "copies.lif";
constexpr uint32_t slots = 16;
constexpr uint32_t area_start = 4;
constexpr uint32_t volume_records = 160;
constexpr uint32_t name_count = 20;
constexpr uint32_t largest_file = 4000; // bytes
constexpr uint32_t never = UINT32_MAX;
constexpr int32_t operation = 4;
const char *const types[] = {"ASCII", "PROG", "BDAT"};

struct ModelFile {
    std::string name;
    std::string type;
    uint32_t start = 0; // record
    uint32_t size = 0;  // bytes, whole records once the volume was read anew
    Bytes content;      // the bytes that are known; behind them stands what was there before
};

using ModelFiles = std::vector<ModelFile>;

struct Counts {
    uint32_t in = 0;
    uint32_t out = 0;
    uint32_t stopped = 0;
    uint32_t refused = 0;
    uint32_t compared = 0;
};

std::mt19937_64 numbers;
ModelFiles on_disk;
ModelFiles present; // in the open medium
Counts counts;

uint32_t below(uint32_t limit)
{
    return static_cast<uint32_t>(numbers() % limit);
}

std::string visible_name(const ModelFile &file)
{
    return file.name + "." + file.type;
}

std::string any_name()
{
    return "N" + std::to_string(below(name_count)) + "." + types[below(3)];
}

// Mostly of a file that is there.
std::string known_name()
{
    return present.empty() || below(6) == 0 ? any_name()
                                            : visible_name(present[below(static_cast<uint32_t>(present.size()))]);
}

uint32_t records_of(uint32_t bytes)
{
    return (bytes + record_bytes - 1) / record_bytes;
}

std::string remote(const std::string &name)
{
    return words_of("~", "")[0] + name;
}

ModelFiles::iterator find(const std::string &visible)
{
    return std::find_if(present.begin(), present.end(),
                        [&visible](const ModelFile &file) { return visible_name(file) == visible; });
}

ModelFiles::iterator find_any_type(const std::string &name)
{
    return std::find_if(present.begin(), present.end(), [&name](const ModelFile &file) { return file.name == name; });
}

void check(bool fine, const std::string &what)
{
    if (fine) return;
    print(what);
    session.failures++;
}

void check_result(int32_t result, int32_t expected, const std::string &call)
{
    check(result == expected, call + " gave " + std::to_string(result) + " instead of " + std::to_string(expected));
    if (expected != 0) counts.refused++;
}

// ---- the host stops a copy -----------------------------------------------------------------------------------

// Which call of progress is the first that is answered with a stop: the one before the first record, that behind any
// record, or the last one.
uint32_t any_stop(uint32_t records)
{
    const uint32_t stop = below(3) == 0 ? below(records + 2) : never;
    session.answers.progress = stop == never ? 0 : 1;
    session.answers.calls_before = stop == never ? 0 : stop;
    if (stop != never) counts.stopped++;
    return stop;
}

uint32_t records_copied(uint32_t records, uint32_t stop)
{
    if (stop == never || records == 0) return records;
    return std::clamp(stop, uint32_t{1}, records);
}

// ---- the calls ---------------------------------------------------------------------------------------------------

uint32_t end_of_files()
{
    uint32_t end = area_start;
    for (const ModelFile &file : present) end = std::max(end, file.start + records_of(file.size));
    return end;
}

// What becomes of the list when a file is to come in: 0, or the result that the host gets.
int32_t make_room(const ModelFile &file, bool overwrite)
{
    const auto old = find_any_type(file.name);
    if (old != present.end()) {
        if (!overwrite) return FILE_EXISTS;
        present.erase(old);
        if (find_any_type(file.name) != present.end()) return FILE_EXISTS;
    }
    if (present.size() == slots) return FILE_READ_FAILED;
    return end_of_files() + records_of(file.size) > volume_records ? FILE_READ_FAILED : FILE_OK;
}

ModelFile any_source(const std::string &visible)
{
    const size_t dot = visible.find('.');
    ModelFile file = {.name = visible.substr(0, dot), .type = visible.substr(dot + 1), .content = {}};
    file.size = below(8) == 0 ? 0 : below(largest_file);
    if (file.type == "BDAT") file.size++; // one without records has no size that a reader could know
    for (uint32_t i = 0; i < file.size; i++) file.content.push_back(static_cast<uint8_t>(below(256)));
    return file;
}

void copy_in()
{
    const std::string visible = any_name();
    ModelFile file = any_source(visible);
    const Bytes source = file.content;
    tests::write_file(visible, source);
    const auto flags = static_cast<int32_t>(below(2) * COPY_OVERWRITE + below(2) * COPY_MOVE);
    const uint32_t records = records_of(file.size);
    const uint32_t stop = any_stop(records);
    const int32_t expected = make_room(file, (flags & COPY_OVERWRITE) != 0);
    std::string local = visible;
    check_result(session.library.FsPutFile(local.data(), remote("ANY").c_str(), flags), expected, "FsPutFile");
    const bool gone = expected == FILE_OK && (flags & COPY_MOVE) != 0 && stop == never;
    check(std::filesystem::exists(visible) != gone, "FsPutFile: " + visible + (gone ? " is still there" : " is gone"));
    if (!gone && std::filesystem::exists(visible)) check(tests::read_file(visible) == source, "FsPutFile: the source");
    if (expected != FILE_OK) return;
    file.start = end_of_files();
    file.content.resize(size_t{records} * record_bytes);
    file.content.resize(size_t{records_copied(records, stop)} * record_bytes);
    present.push_back(file);
    on_disk = present;
    counts.in++;
}

// Whether a host file has the first bytes of a file, so many of its records.
bool holds(const std::string &local, const ModelFile &file, uint32_t records)
{
    const Bytes content = tests::read_file(local);
    const uint32_t size = std::min(file.size, records * record_bytes);
    const size_t known = std::min<size_t>(size, file.content.size());
    return content.size() == size &&
           std::equal(content.begin(), content.begin() + static_cast<std::ptrdiff_t>(known), file.content.begin());
}

void copy_out()
{
    const std::string visible = known_name();
    const auto file = find(visible);
    std::string local = "out" + std::to_string(below(3));
    if (below(2) == 0) std::filesystem::remove(local);
    const auto flags = static_cast<int32_t>(below(2) * COPY_OVERWRITE + below(2) * COPY_MOVE);
    const bool exists = std::filesystem::exists(local) && (flags & COPY_OVERWRITE) == 0;
    const uint32_t records = file == present.end() ? 0 : records_of(file->size);
    const uint32_t stop = any_stop(records);
    const int32_t expected = file == present.end() ? FILE_NOT_FOUND : exists ? FILE_EXISTS : FILE_OK;
    const int32_t result = session.library.FsGetFile(remote(visible).c_str(), local.data(), flags, nullptr);
    check_result(result, expected, "FsGetFile");
    if (expected != FILE_OK) return;
    check(holds(local, *file, records_copied(records, stop)), "FsGetFile: another content");
    counts.out++;
    if ((flags & COPY_MOVE) == 0 || stop != never) return;
    present.erase(file);
    on_disk = present;
}

void delete_file()
{
    const std::string visible = known_name();
    const auto file = find(visible);
    const int32_t result = session.library.FsDeleteFile(remote(visible).c_str());
    check(result == (file == present.end() ? 0 : 1), "FsDeleteFile gave " + std::to_string(result));
    if (file == present.end()) return;
    present.erase(file);
    on_disk = present;
}

// The new name's type says only which file it means.
int32_t rename_in_model(const std::string &from, const std::string &to, bool overwrite)
{
    auto file = find(from);
    if (file == present.end()) return FILE_NOT_FOUND;
    const auto found = find(to);
    if (found != present.end() && !overwrite) return FILE_EXISTS;
    if (found == file) return FILE_OK;
    file->name = to.substr(0, to.find('.'));
    if (found != present.end()) present.erase(found);
    on_disk = present;
    return FILE_OK;
}

void rename_file()
{
    const std::string from = known_name();
    const std::string to = any_name();
    const bool overwrite = below(2) == 0;
    const int32_t expected = rename_in_model(from, to, overwrite);
    const int32_t result =
        session.library.FsRenMovFile(remote(from).c_str(), remote(to).c_str(), 1, overwrite ? 1 : 0, nullptr);
    check_result(result, expected, "FsRenMovFile");
}

// ---- operations, and what is on the volume ---------------------------------------------------------------------

void begin_operation()
{
    session.library.FsStatusInfo(remote("").c_str(), 0, operation);
    present = on_disk;
    for (ModelFile &file : present) file.size = records_of(file.size) * record_bytes;
}

void end_operation()
{
    session.library.FsStatusInfo(remote("").c_str(), 1, operation);
}

bool is_listed(const FindDataA &record, const ModelFile &file)
{
    return record.name == visible_name(file) && record.size_low == file.size;
}

void compare_list()
{
    FindDataA record = {};
    void *handle = session.library.FsFindFirst(remote("").c_str(), &record);
    bool more = record.name[0] != '\0';
    for (const ModelFile &file : present) {
        check(more && is_listed(record, file), "the list has no " + visible_name(file) + " here");
        more = more && session.library.FsFindNext(handle, &record) != 0;
    }
    check(!more, "the list has more than " + std::to_string(present.size()) + " files");
    session.library.FsFindClose(handle);
}

void compare_contents()
{
    session.answers.progress = 0;
    for (const ModelFile &file : present) {
        if (&*find(visible_name(file)) != &file) continue; // another one of the same name comes first
        char local[] = "compared";
        const int32_t result =
            session.library.FsGetFile(remote(visible_name(file)).c_str(), local, COPY_OVERWRITE, nullptr);
        check(result == FILE_OK, "FsGetFile gave " + std::to_string(result));
        check(holds(local, file, records_of(file.size)), visible_name(file) + " has another content");
        counts.compared++;
    }
}

using Call = void (*)();

// Copies in are as many as what takes files away.
constexpr Call calls[] = {copy_in, copy_in, copy_in, copy_out, copy_out, delete_file, rename_file, rename_file};

void play(uint32_t count)
{
    begin_operation();
    for (uint32_t i = 0; i < count; i++) {
        calls[below(std::size(calls))]();
        if (below(4) != 0) continue;
        end_operation();
        begin_operation();
        compare_list();
        if (below(4) == 0) compare_contents();
    }
    end_operation();
}

}

void run_random_copies(uint64_t seed, uint32_t count)
{
    const Answers answers = session.answers;
    numbers.seed(seed);
    on_disk.clear();
    counts = {};
    tests::write_file(image_name, tests::lif_image(tests::LifVolume()));
    session.answers.request = Answer::yes;
    session.answers.target = image_name;
    session.answers.quiet = true;
    session.library.FsExecuteFile(nullptr, remote("").c_str(), "properties");
    play(count);
    session.answers = answers;
    print("= " + std::to_string(count) + " calls: " + std::to_string(counts.in) + " files in, " +
          std::to_string(counts.out) + " out, " + std::to_string(counts.stopped) + " stopped, " +
          std::to_string(counts.refused) + " refused; " + std::to_string(counts.compared) + " compared");
}

}
