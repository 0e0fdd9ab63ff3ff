// Open files: their handles, positions, sizes, and reading and writing at the present position or by records.
#include "base/file.h"

#include <algorithm>
#include <cstring>

#include "base/error.h"
#include "base/file_inner.h"
#include "base/file_steps.h"
#include "base/log.h"
#include "base/log_pointer.h"
#include "platform/platform.h"

namespace
{
constexpr FileCalls system_file_calls;
}

constinit const FileCalls *file_calls = &system_file_calls;
constinit uint64_t file_generation = 0;
constinit uint64_t unkept_file = 0;

constinit FileHandle FileVoid = platform_void_file;
constinit FileHandle Stdin = 0;
constinit FileHandle Stdout = 0;
constinit FileHandle Stderr = 0;

namespace
{

constexpr uint32_t end_position = ~uint32_t{0};
constexpr uint32_t error_text_size = 256;

struct OpenPlan {
    bool reading = false;
    bool writing = false;
    bool to_the_end = false;
    bool writethrough = false;
    OpenMode mode = OpenMode::open_or_create;
};

OpenPlan plan_opening(const char *flags, bool writethrough)
{
    OpenPlan plan;
    if (strchr(flags, 'r') != nullptr) plan = {.reading = true, .mode = OpenMode::existing};
    if (strchr(flags, 'w') != nullptr)
        plan = {.writing = true, .writethrough = writethrough, .mode = OpenMode::create_always};
    plan.to_the_end = strchr(flags, 'a') != nullptr;
    if (strchr(flags, '+') != nullptr) plan.reading = plan.writing = true;
    return plan;
}

bool open_as_planned(FileHandle *ret_file, const char *filename, const OpenPlan &plan)
{
    if (!file_calls->open(ret_file, filename, plan.reading, plan.writing, plan.mode, plan.writethrough)) return false;
    if (plan.mode == OpenMode::create_always) ++file_generation;
    if (!plan.to_the_end || file_calls->seek(*ret_file, 0, SeekFrom::end) >= 0) return true;
    const uint32_t reason = platform_last_error();
    file_calls->close(*ret_file);
    platform_set_last_error(reason);
    return false;
}

// A record's place: the product has 32 bits, and all ones in it is a place like any other.
bool seek_record(FileHandle file, uint32_t record, uint32_t size)
{
    const uint32_t position = record * size;
    return seek_to(file, position);
}

uint32_t record_bytes(int32_t record_size)
{
    return record_size < 1 ? uint32_t{RECORD_SIZE} : static_cast<uint32_t>(record_size);
}

int32_t missing_pointer(int32_t result)
{
    set_error(103, "NULL pointer");
    return result;
}

} // namespace

FileHandle file_void(void)
{
    return FileVoid = platform_void_file;
}

FileHandle file_stdin(void)
{
    return Stdin = platform_standard_file(StandardFile::input);
}

FileHandle file_stdout(void)
{
    return Stdout = platform_standard_file(StandardFile::output);
}

FileHandle file_stderr(void)
{
    return Stderr = platform_standard_file(StandardFile::error);
}

int32_t file_is_valid(FileHandle file)
{
    return file != platform_void_file;
}

int32_t file_open(FileHandle *ret_file, const char *filename, const char *flags, int32_t writethrough)
{
    log_file(3, "file_open(ret_file=%lu, filename=\"%s\", flags=\"%s\", writethrough=%d)\n", log_pointer(ret_file),
             log_text(filename), log_text(flags), writethrough);
    if (ret_file == nullptr || filename == nullptr || flags == nullptr) return missing_pointer(0);
    if (open_as_planned(ret_file, filename, plan_opening(flags, writethrough != 0))) return 1;
    char text[error_text_size];
    get_win_error(text, sizeof(text));
    set_error(300, "%s", text);
    *ret_file = platform_void_file;
    return 0;
}

bool file_open_new(FileHandle *ret_file, const char *path)
{
    log_file(3, "file_open_new(ret_file=%lu, filename=\"%s\")\n", log_pointer(ret_file), log_text(path));
    if (file_calls->open(ret_file, path, false, true, OpenMode::create_new, false)) return true;
    char text[error_text_size];
    get_win_error(text, sizeof(text));
    set_error(300, "%s", text);
    *ret_file = platform_void_file;
    return false;
}

bool file_open_with_facts(FileHandle *ret_file, const char *path, FileFacts *ret_facts)
{
    log_file(3, "file_open_with_facts(ret_file=%lu, filename=\"%s\")\n", log_pointer(ret_file), log_text(path));
    if (file_calls->open_with_facts(ret_file, path, ret_facts)) return true;
    char text[error_text_size];
    get_win_error(text, sizeof(text));
    set_error(300, "%s", text);
    *ret_file = platform_void_file;
    return false;
}

void file_close(FileHandle file)
{
    log_file(3, "file_close(file=%lu)\n", log_handle(file));
    if (!file_is_valid(file) || file == Stdin || file == Stdout || file == Stderr) return;
    file_calls->close(file);
}

int32_t file_seek(FileHandle file, uint32_t position)
{
    log_file(3, "file_seek(file=%lu, position=%lu)\n", log_handle(file), log_number(position));
    if (!file_is_valid(file)) return 0;
    if (position != end_position) return seek_to(file, position);
    uint64_t end = 0;
    return seek_to_end(file, &end);
}

bool file_resize(FileHandle file, uint64_t bytes)
{
    if (!seek_to(file, bytes)) return false;
    ++file_generation;
    if (file_calls->set_end(file)) return true;
    set_error(309, "");
    return false;
}

int32_t file_prepare(FileHandle file, uint32_t size)
{
    log_file(3, "file_prepare(file=%lu, size=%lu)\n", log_handle(file), log_number(size));
    if (!file_is_valid(file)) return -1;
    return file_resize(file, size) ? seek_to(file, 0) : 0;
}

int32_t file_read(FileHandle file, void *buffer, uint32_t num_bytes)
{
    log_file(3, "file_read(file=%lu, buffer=%lu, num_bytes=%lu)\n", log_handle(file), log_pointer(buffer),
             log_number(num_bytes));
    if (buffer == nullptr) return missing_pointer(0);
    return file_is_valid(file) ? read_here(file, buffer, num_bytes) : 0;
}

int32_t file_write(FileHandle file, const void *buffer, uint32_t num_bytes)
{
    log_file(3, "file_write(file=%lu, buffer=%lu, num_bytes=%lu)\n", log_handle(file), log_pointer(buffer),
             log_number(num_bytes));
    if (buffer == nullptr) return missing_pointer(-1);
    return file_is_valid(file) ? write_here(file, buffer, num_bytes) : 0;
}

int32_t file_write_at(FileHandle file, uint64_t position, const void *buffer, uint32_t num_bytes)
{
    log_file(3, "file_write_at(file=%lu, position=%lu, buffer=%lu, num_bytes=%lu)\n", log_handle(file),
             static_cast<unsigned long>(position), log_pointer(buffer), log_number(num_bytes));
    return write_there(file, position, buffer, num_bytes);
}

int32_t file_getposition(FileHandle file, uint32_t *ret_position)
{
    log_file(3, "file_getposition(file=%lu, ret_position=%lu)\n", log_handle(file), log_pointer(ret_position));
    if (ret_position == nullptr) return missing_pointer(-1);
    *ret_position = 0;
    if (!file_is_valid(file)) return 0;
    uint64_t position = 0;
    if (!present_position(file, &position)) return -1;
    *ret_position = static_cast<uint32_t>(position);
    return 0;
}

int32_t file_sync(FileHandle file)
{
    log_file(3, "file_sync(file=%lu)\n", log_handle(file));
    if (!file_is_valid(file) || file_calls->sync(file)) return 0;
    set_error(308, "");
    return -1;
}

int32_t file_readrecord(FileHandle file, uint32_t record, int32_t record_size, void *buffer)
{
    log_file(5, "file_readrecord(file=%lu, record=%lu, record_size=%d, buffer=%lu)\n", log_handle(file),
             log_number(record), record_size, log_pointer(buffer));
    if (buffer == nullptr) return missing_pointer(-1);
    if (!file_is_valid(file)) return 0;
    const uint32_t size = record_bytes(record_size);
    return seek_record(file, record, size) ? read_here(file, buffer, size) : -1;
}

int32_t file_writerecord(FileHandle file, uint32_t record, int32_t record_size, const void *buffer)
{
    log_file(5, "file_writerecord(file=%lu, record=%lu, record_size=%d, buffer=%lu)\n", log_handle(file),
             log_number(record), record_size, log_pointer(buffer));
    if (buffer == nullptr) return missing_pointer(-1);
    if (!file_is_valid(file)) return 0;
    const uint32_t size = record_bytes(record_size);
    return seek_record(file, record, size) && write_whole(file, buffer, size) ? 0 : -1;
}

uint32_t file_getsize(FileHandle file)
{
    log_file(3, "file_getsize(file=%lu)\n", log_handle(file));
    uint64_t bytes = 0;
    return file_size_in_bytes(file, &bytes) ? static_cast<uint32_t>(bytes) : ~uint32_t{0};
}

bool file_size_in_bytes(uint64_t file, uint64_t *ret_bytes)
{
    return file_is_valid(file) && file_calls->size(file, ret_bytes);
}
