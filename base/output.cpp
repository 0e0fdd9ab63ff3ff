// Printing through one buffer, which leaves in pieces of 64 KB: a system copies whole pages of a file fastest when each
// write begins where a page does.
#include "base/output.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace
{

constexpr size_t piece_size = 64 * 1024;
constexpr size_t reserve_limit = 4096;

struct Output {
    FileHandle file; // 0: standard output
    bool failed;
    char last;   // character that left the buffer
    size_t fill; // less than a piece between two calls
    std::array<char, piece_size + reserve_limit> buffer;
};

constinit Output output = {};

char *free_place()
{
    return output.buffer.data() + output.fill;
}

size_t room() // in the piece
{
    return piece_size - output.fill;
}

void write_out(FileHandle file, const char *bytes, size_t count)
{
    if (count > 0) output.last = bytes[count - 1];
    if (!file_is_valid(file)) return; // the void handle takes everything
    while (count > 0) {
        const int32_t written = file_write(file, bytes, static_cast<uint32_t>(count));
        if (written <= 0) {
            output.failed = true;
            return;
        }
        bytes += written;
        count -= std::min(static_cast<size_t>(written), count);
    }
}

FileHandle destination()
{
    return output.file != 0 ? output.file : Stdout;
}

// What was put behind the piece is the beginning of the next one.
void write_piece()
{
    write_out(destination(), output.buffer.data(), piece_size);
    output.fill -= piece_size;
    memcpy(output.buffer.data(), output.buffer.data() + piece_size, output.fill);
}

} // namespace

void output_to(FileHandle file)
{
    output_flush();
    output.file = file;
    output.last = '\0';
}

void output_text(std::string_view text)
{
    while (!text.empty()) {
        const size_t part = std::min(text.size(), room());
        memcpy(free_place(), text.data(), part);
        output_advance(part);
        text.remove_prefix(part);
    }
}

void output_format(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    va_list again;
    va_copy(again, arguments);
    int length = vsnprintf(free_place(), room(), format, arguments);
    if (length > 0 && static_cast<size_t>(length) >= room()) {
        output_flush();
        length = vsnprintf(free_place(), room(), format, again);
    }
    va_end(again);
    va_end(arguments);
    if (length > 0) output_advance(std::min(static_cast<size_t>(length), piece_size - 1));
}

char *output_reserve(size_t)
{
    return free_place(); // behind a piece that isn't full there is always room
}

void output_advance(size_t bytes)
{
    output.fill += std::min(bytes, output.buffer.size() - output.fill);
    if (output.fill >= piece_size) write_piece();
}

void output_flush()
{
    const size_t count = output.fill;
    output.fill = 0;
    write_out(destination(), output.buffer.data(), count);
}

bool output_at_line_start()
{
    const char last = output.fill > 0 ? output.buffer[output.fill - 1] : output.last;
    return last == '\0' || last == '\n';
}

bool output_failed()
{
    const bool failed = output.failed;
    output.failed = false;
    return failed;
}
