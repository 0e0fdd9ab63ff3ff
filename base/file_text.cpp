// Characters, lines and formatted text in files.
#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>

#include "base/error.h"
#include "base/file.h"
#include "base/file_inner.h"
#include "base/file_steps.h"
#include "base/log.h"
#include "base/log_pointer.h"

namespace
{

constexpr uint32_t read_ahead = 512; // bytes of a line that are read at once where the file can go back
constexpr size_t text_size = 1024;   // of most formatted texts

// The bytes up to a line feed, that with them.
uint32_t line_length(const char *text, uint32_t bytes)
{
    const auto *line_feed = static_cast<const char *>(memchr(text, '\n', bytes));
    return line_feed == nullptr ? bytes : static_cast<uint32_t>(line_feed - text) + 1;
}

// Takes a part of a line: as many bytes as are left in it, at most `most`. 0 at the end of the file and on a failure.
uint32_t take_part(FileHandle file, char *place, uint32_t most)
{
    const int64_t start = file_calls->seek(file, 0, SeekFrom::current);
    const int32_t count = read_here(file, place, start < 0 ? 1 : std::min(most, read_ahead));
    if (count <= 0) return 0;
    const uint32_t length = line_length(place, static_cast<uint32_t>(count));
    if (length < static_cast<uint32_t>(count)) seek_to(file, static_cast<uint64_t>(start) + length);
    return length;
}

// In a buffer of its own where the usual one is too small, so that nothing is cut.
__attribute__((format(printf, 2, 0))) void write_formatted(FileHandle file, const char *format, va_list arguments)
{
    char text[text_size];
    va_list again;
    va_copy(again, arguments);
    const int result = vsnprintf(text, sizeof(text), format, arguments);
    const size_t length = result < 0 ? 0 : static_cast<size_t>(result);
    std::unique_ptr<char[]> long_text;
    if (length >= sizeof(text)) long_text.reset(new (std::nothrow) char[length + 1]);
    if (long_text != nullptr) vsnprintf(long_text.get(), length + 1, format, again);
    va_end(again);
    if (result < 0 || (length >= sizeof(text) && long_text == nullptr))
        set_error(303, "");
    else
        write_whole(file, long_text != nullptr ? long_text.get() : text, static_cast<uint32_t>(length));
}

} // namespace

int32_t file_writechar(FileHandle file, int32_t character)
{
    log_file(3, "file_writechar(file=%lu, character=%d)\n", log_handle(file), character);
    if (!file_is_valid(file)) return character;
    const auto byte = static_cast<char>(character);
    return write_whole(file, &byte, 1) ? 1 : 303; // Kept: a failure isn't zero either.  [KeepsWritecharNeverZero]
}

int32_t file_readline(FileHandle file, char *buffer, uint32_t size)
{
    log_file(3, "file_readline(file=%lu, buffer=%lu, size=%lu)\n", log_handle(file), log_pointer(buffer),
             log_number(size));
    if (buffer == nullptr) {
        set_error(103, "NULL pointer");
        return 0;
    }
    if (size == 0) return 0;
    const uint32_t most = file_is_valid(file) ? std::min<uint32_t>(size - 1, INT32_MAX) : 0;
    uint32_t length = 0;
    while (length < most && (length == 0 || buffer[length - 1] != '\n')) {
        const uint32_t part = take_part(file, buffer + length, most - length);
        if (part == 0) break;
        length += part;
    }
    buffer[length] = '\0';
    return static_cast<int32_t>(length);
}

void file_printf(FileHandle file, const char *format, ...)
{
    log_file(3, "file_printf(file=%lu, format=%lu)\n", log_handle(file), log_pointer(format));
    if (format == nullptr) {
        set_error(103, "NULL pointer");
        return;
    }
    if (!file_is_valid(file)) return;
    va_list arguments;
    va_start(arguments, format);
    write_formatted(file, format, arguments);
    va_end(arguments);
}
