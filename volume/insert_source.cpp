// Bytes and lines of what goes onto a medium.
#include "volume/insert_source.h"

#include <algorithm>
#include <cstring>

#include "base/error.h"
#include "base/file.h"
#include "volume/scratch.h"

namespace
{
// A line has at most so many characters, its line end among them; what is left of it is a line of its own.
constexpr uint32_t longest_line = 65534;
constexpr uint32_t buffer_bytes = 2 * 65536;
static_assert(buffer_bytes > longest_line);

struct LineReader {
    InsertSource *source;
    uint8_t *buffer;    // buffer_bytes and one more
    uint32_t start = 0; // of the bytes that are left
    uint32_t end = 0;
    bool exhausted = false;
};

bool fill(LineReader *reader)
{
    std::memmove(reader->buffer, reader->buffer + reader->start, reader->end - reader->start);
    reader->end -= reader->start;
    reader->start = 0;
    const int32_t count = read_source(reader->source, reader->buffer + reader->end, buffer_bytes - reader->end);
    if (count < 0) return false;
    reader->exhausted = static_cast<uint32_t>(count) < buffer_bytes - reader->end;
    reader->end += static_cast<uint32_t>(count);
    return true;
}

// How many bytes the next line has with its line end; 0 when more must be read to know.
uint32_t line_bytes(const LineReader &reader)
{
    const uint32_t held = std::min(reader.end - reader.start, longest_line);
    const uint8_t *line = reader.buffer + reader.start;
    const void *line_feed = std::memchr(line, '\n', held);
    if (line_feed != nullptr) return static_cast<uint32_t>(static_cast<const uint8_t *>(line_feed) - line) + 1;
    return held == longest_line || reader.exhausted ? held : 0;
}

// The text of a line, without its end. Behind a NUL there is no text.
void hand_over(LineReader *reader, uint32_t bytes, const ContentConverter &converter, InwardState *state)
{
    char *text = reinterpret_cast<char *>(reader->buffer + reader->start);
    const auto length = static_cast<uint32_t>(strnlen(text, bytes));
    if (length != bytes) state->cut = true;
    state->line++;
    converter.line(state, text, without_line_end(text, length));
    reader->start += bytes;
}

bool convert_all(LineReader *reader, const ContentConverter &converter, InwardState *state)
{
    for (;;) {
        const uint32_t bytes = line_bytes(*reader);
        if (bytes != 0) {
            hand_over(reader, bytes, converter, state);
        } else if (reader->exhausted) {
            return true;
        } else if (!fill(reader)) {
            set_error(302, "file \"%s\"", state->source_name);
            return false;
        }
    }
}
}

int32_t read_source(InsertSource *source, uint8_t *buffer, uint32_t bytes)
{
    if (source->file != 0) {
        const int32_t count = file_read(source->file, buffer, bytes);
        if (count > 0) source->position += static_cast<uint32_t>(count);
        return count;
    }
    const auto count = static_cast<uint32_t>(std::min<uint64_t>(bytes, source->size - source->position));
    if (count == 0) return 0; // an empty source may have no bytes to point at
    std::memcpy(buffer, source->bytes + source->position, count);
    source->position += count;
    return static_cast<int32_t>(count);
}

bool go_to(InsertSource *source, uint64_t position)
{
    if (position == source->position) return true;
    source->position = std::min(position, source->size);
    return source->file == 0 || file_seek(source->file, static_cast<uint32_t>(position)) == 1;
}

bool convert_lines(InsertSource *source, const ContentConverter &converter, InwardState *state)
{
    const Scratch buffer(buffer_bytes);
    if (!buffer) return false;
    LineReader reader = {.source = source, .buffer = buffer.bytes()};
    converter.begin(state);
    if (!convert_all(&reader, converter, state)) return false;
    converter.end(state);
    flush(state->sink);
    if (!state->sink->failed) return true;
    set_error(303, "file \"%s\"", state->source_name);
    return false;
}
