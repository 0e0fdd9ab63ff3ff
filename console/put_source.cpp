// Sources: what has a size and a start is read where it stands, pipes and their like are read into memory first.
#include "console/put_source.h"

#include "base/convert.h"
#include "base/error.h"
#include "base/file_inner.h"
#include "platform/platform.h"

namespace
{
constexpr uint32_t no_space = 211;
constexpr uint32_t cannot_open = 300;
constexpr size_t most_bytes = size_t{65535} * RECORD_SIZE; // of one file on any volume
constexpr size_t piece_bytes = 64 * 1024;

bool open_file(const std::string &path, PutSource *source)
{
    if (path == "-") {
        source->file.handle = file_stdin();
        get_current_datetime(&source->date);
        return true;
    }
    FileFacts *facts = &source->source.facts;
    if (file_open_with_facts(&source->file.handle, path.c_str(), facts)) {
        if (!file_time_of(*facts, &source->date)) get_current_datetime(&source->date);
        return true;
    }
    const uint32_t reason = platform_last_error();
    source->file.handle = 0;
    set_error(cannot_open, "file \"%s\"", path.c_str());
    platform_set_last_error(reason);
    return false;
}

// Whether all of it lies between its start and its end, and it stands at its start.
bool is_plain(PutSource *source)
{
    const FileHandle file = source->file.handle;
    FileFacts *facts = &source->source.facts;
    const bool is_input = file == file_stdin(); // which may stand anywhere
    if (is_input && (!file_calls->facts(file, facts) || file_calls->seek(file, 0, SeekFrom::current) != 0))
        return false;
    if (!facts->plain || facts->bytes == 0) return false;
    source->source.file = file;
    source->source.size = facts->bytes;
    return true;
}

bool read_into_memory(PutSource *source)
{
    std::vector<uint8_t> &bytes = source->bytes;
    for (size_t length = 0;;) {
        bytes.resize(length + piece_bytes);
        const int32_t count = file_read(source->file.handle, bytes.data() + length, piece_bytes);
        if (count < 0) return false;
        length += static_cast<size_t>(count);
        bytes.resize(length);
        if (count == 0) break;
        if (length <= most_bytes) continue;
        set_error(no_space, "it is longer than %lu bytes", static_cast<unsigned long>(most_bytes));
        return false;
    }
    source->source.bytes = bytes.data();
    source->source.size = bytes.size();
    return true;
}
}

bool open_source(const std::string &path, PutSource *ret_source)
{
    return open_file(path, ret_source) && (is_plain(ret_source) || read_into_memory(ret_source));
}
