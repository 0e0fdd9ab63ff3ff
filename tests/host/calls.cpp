// Commands that call the plug-in as a file manager does.
#include <array>
#include <cstdio>
#include <cstring>
#include <stdexcept>

#include "tests/host/session.h"

namespace host
{

namespace
{

constexpr uint8_t filler = 0xAA; // what the plug-in finds in a record or buffer
constexpr uint32_t longest_listing = 1000000;

enum class RecordState : uint8_t { filled, cleared, untouched };

RecordState state_of(const FindDataA &record)
{
    std::array<uint8_t, sizeof record> bytes{};
    if (std::memcmp(&record, bytes.data(), sizeof record) == 0) return RecordState::cleared;
    bytes.fill(filler);
    return std::memcmp(&record, bytes.data(), sizeof record) == 0 ? RecordState::untouched : RecordState::filled;
}

FindDataA fresh_record()
{
    FindDataA record;
    std::memset(&record, filler, sizeof record);
    return record;
}

std::string bounded(const char *text, size_t size)
{
    return std::memchr(text, 0, size) == nullptr ? "(without end) " + std::string(text, size) : std::string(text);
}

std::string name_of(const FindDataA &record)
{
    return quoted(visible(bounded(record.name, sizeof record.name)));
}

bool has_other_fields(const FindDataA &record)
{
    const uint32_t fields[] = {record.creation_time[0], record.creation_time[1], record.access_time[0],
                               record.access_time[1],   record.size_high,        record.reserved[0],
                               record.reserved[1]};
    for (const uint32_t field : fields) {
        if (field != 0) return true;
    }
    return false;
}

void print_record(const FindDataA &record)
{
    std::array<char, 64> numbers{};
    snprintf(numbers.data(), numbers.size(), ", %u bytes, attributes %02X, written ", record.size_low,
             record.attributes);
    const uint64_t time = uint64_t{record.write_time[1]} << 32 | record.write_time[0];
    const std::string alternate = bounded(record.alternate_name, sizeof record.alternate_name);
    print(name_of(record) + ", alternate " + quoted(visible(alternate)) + numbers.data() + iso_of(time) +
          (has_other_fields(record) ? ", other fields set" : ""));
}

bool is_handle(const void *handle)
{
    return reinterpret_cast<uintptr_t>(handle) != ~uintptr_t{0};
}

FindDataA find_first(const std::string &path)
{
    FindDataA record = fresh_record();
    begin_call();
    session.handle = session.library.FsFindFirst(path.c_str(), &record);
    return record;
}

void call_root(const Words &words) // root MAXLEN | root null MAXLEN
{
    if (word(words, 1) == "null") {
        begin_call();
        session.library.FsGetDefRootName(nullptr, std::stoi(word(words, 2)));
        return print_result("nothing", last_error());
    }
    const int maxlen = std::stoi(words[1]);
    std::array<char, 64> buffer{};
    buffer.fill(static_cast<char>(filler));
    const std::array<char, 64> before = buffer;
    begin_call();
    session.library.FsGetDefRootName(buffer.data(), maxlen);
    const uint32_t error = last_error();
    if (buffer == before) return print_result("nothing written", error);
    const auto allowed = static_cast<size_t>(maxlen > 0 ? maxlen : 0);
    std::string text = quoted(visible(bounded(buffer.data(), buffer.size())));
    for (size_t i = allowed; i < buffer.size(); i++) {
        if (buffer[i] != before[i]) text += ", written behind the buffer";
    }
    print_result(text, error);
}

void call_init(const Words &)
{
    begin_call();
    const int32_t result = session.library.FsInit(plugin_number, answer_progress, answer_log, answer_request);
    print_result(std::to_string(result), last_error());
}

void call_find_first(const Words &words) // find-first PATH
{
    const FindDataA record = find_first(word(words, 1));
    const uint32_t error = last_error();
    std::string text = is_handle(session.handle) ? "handle" : "none";
    if (session.handle == nullptr) text = "null";
    if (state_of(record) == RecordState::filled) print_record(record);
    print_result(text, error);
}

void *wanted_handle(const Words &words) // the last one, or null
{
    return words.size() > 1 && words[1] == "null" ? nullptr : session.handle;
}

void call_find_next(const Words &words) // find-next [null]
{
    FindDataA record = fresh_record();
    begin_call();
    const int32_t result = session.library.FsFindNext(wanted_handle(words), &record);
    const uint32_t error = last_error();
    const RecordState state = state_of(record);
    if (state == RecordState::filled) print_record(record);
    const char *const states[] = {"", ", record cleared", ", record untouched"};
    print_result(std::to_string(result) + states[static_cast<size_t>(state)], error);
}

void call_find_close(const Words &words) // find-close [null]
{
    begin_call();
    const int32_t result = session.library.FsFindClose(wanted_handle(words));
    print_result(std::to_string(result), last_error());
}

// A whole listing: each entry goes to `take`. The number of entries; -1 after a failure, which is printed.
int64_t walk(const std::string &path, void (*take)(const FindDataA &record))
{
    FindDataA record = find_first(path);
    const uint32_t error = last_error();
    if (!is_handle(session.handle)) {
        print_result("none", error);
        return -1;
    }
    if (state_of(record) != RecordState::filled) {
        print_result("empty", error);
        session.library.FsFindClose(session.handle);
        return -1;
    }
    uint32_t count = 0;
    do {
        count++;
        take(record);
        record = fresh_record();
    } while (count < longest_listing && session.library.FsFindNext(session.handle, &record) != 0);
    session.library.FsFindClose(session.handle);
    return count;
}

void call_list(const Words &words) // list PATH
{
    const int64_t count = walk(word(words, 1), print_record);
    if (count >= 0) print("= " + std::to_string(count) + (count == 1 ? " entry" : " entries"));
}

std::string names;

void call_names(const Words &words) // names PATH
{
    names.clear();
    const int64_t count = walk(word(words, 1), [](const FindDataA &record) { names += " " + name_of(record); });
    if (count >= 0) print("=" + names);
}

struct Summary {
    std::string first;
    std::string last;
    bool ascending = true;
};

Summary summary;

void summarize(const FindDataA &record)
{
    const std::string name = record.name;
    if (summary.first.empty()) summary.first = name;
    if (!summary.last.empty() && name <= summary.last) summary.ascending = false;
    summary.last = name;
}

void call_count(const Words &words) // count PATH
{
    summary = {};
    const int64_t count = walk(word(words, 1), summarize);
    if (count < 0) return;
    print("= " + std::to_string(count) + " entries from " + quoted(visible(summary.first)) + " to " +
          quoted(visible(summary.last)) + (summary.ascending ? ", ascending" : ", not ascending"));
}

void call_get(const Words &words) // get NAME LOCAL FLAGS
{
    std::string local = word(words, 2);
    const auto flags = static_cast<int32_t>(number_of(word(words, 3)));
    begin_call();
    const int32_t result = session.library.FsGetFile(words[1].c_str(), local.data(), flags, nullptr);
    print_result(std::to_string(result), last_error());
}

void call_put(const Words &words) // put LOCAL NAME FLAGS
{
    std::string local = word(words, 1);
    const auto flags = static_cast<int32_t>(number_of(word(words, 3)));
    begin_call();
    const int32_t result = session.library.FsPutFile(local.data(), words[2].c_str(), flags);
    print_result(std::to_string(result), last_error());
}

void call_rename(const Words &words) // rename OLD NEW move|copy [overwrite]
{
    const std::string &kind = word(words, 3);
    if (kind != "move" && kind != "copy") throw std::runtime_error("move or copy");
    const int32_t overwrite = words.size() > 4 && words[4] == "overwrite" ? 1 : 0;
    begin_call();
    const int32_t result =
        session.library.FsRenMovFile(words[1].c_str(), words[2].c_str(), kind == "move" ? 1 : 0, overwrite, nullptr);
    print_result(std::to_string(result), last_error());
}

void call_delete(const Words &words) // delete NAME
{
    const std::string &name = word(words, 1);
    begin_call();
    const int32_t result = session.library.FsDeleteFile(name.c_str());
    print_result(std::to_string(result), last_error());
}

void call_attr(const Words &words) // attr NAME N
{
    const auto attributes = static_cast<int32_t>(number_of(word(words, 2)));
    begin_call();
    const int32_t result = session.library.FsSetAttr(words[1].c_str(), attributes);
    print_result(std::to_string(result), last_error());
}

void call_time(const Words &words) // time NAME ISO; the other two times are others
{
    const uint64_t time = time_of(word(words, 2));
    const HostTime written = {static_cast<uint32_t>(time), static_cast<uint32_t>(time >> 32)};
    const HostTime other = {0x01D53E80, 0x01BF53EB};
    begin_call();
    const int32_t result = session.library.FsSetTime(words[1].c_str(), &other, &other, &written);
    print_result(std::to_string(result), last_error());
}

void call_status(const Words &words) // status start|end|N OPERATION [PATH]
{
    const std::string &kind = word(words, 1);
    int32_t start_end = kind == "start" ? 0 : 1;
    if (kind != "start" && kind != "end") start_end = std::stoi(kind);
    const auto operation = static_cast<int32_t>(number_of(word(words, 2)));
    const std::string path = words.size() > 3 ? words[3] : words_of("~", "")[0];
    begin_call();
    session.library.FsStatusInfo(path.c_str(), start_end, operation);
    print_result("done", last_error());
}

void call_execute(const Words &words) // execute VERB NAME
{
    const std::string &name = word(words, 2);
    begin_call();
    const int32_t result = session.library.FsExecuteFile(nullptr, name.c_str(), words[1].c_str());
    print_result(std::to_string(result), last_error());
}

struct CallCommand {
    const char *name;
    void (*run)(const Words &words);
};

constexpr CallCommand commands[] = {
    {"root", call_root},
    {"init", call_init},
    {"find-first", call_find_first},
    {"find-next", call_find_next},
    {"find-close", call_find_close},
    {"list", call_list},
    {"names", call_names},
    {"count", call_count},
    {"get", call_get},
    {"put", call_put},
    {"rename", call_rename},
    {"delete", call_delete},
    {"attr", call_attr},
    {"time", call_time},
    {"status", call_status},
    {"execute", call_execute},
};

}

bool run_call(const Words &words)
{
    for (const CallCommand &command : commands) {
        if (words[0] != command.name) continue;
        command.run(words);
        return true;
    }
    return false;
}

}
