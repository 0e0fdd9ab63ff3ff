// Gathers the bytes of a conversion.
#include "volume/content/sink.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>

#include "base/convert.h"

namespace
{
using CharacterMap = std::array<uint8_t, 256>;

CharacterMap map_by(uint8_t (*exchange)(uint8_t))
{
    CharacterMap map;
    for (size_t code = 0; code < map.size(); code++) map[code] = exchange(static_cast<uint8_t>(code));
    return map;
}

// Most text is in the characters that both sets share: of these, many at once.
constexpr uint64_t high_bits = 0x8080808080808080;
constexpr size_t word_bytes = sizeof(uint64_t);

uint64_t load(const uint8_t *bytes)
{
    uint64_t word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

void exchange_each(uint8_t *target, const uint8_t *source, size_t count, const CharacterMap &map)
{
    for (size_t at = 0; at < count; at++) target[at] = map[source[at]];
}

void exchange_word(uint8_t *target, const uint8_t *source, const CharacterMap &map)
{
    const uint64_t word = load(source);
    if ((word & high_bits) != 0) return exchange_each(target, source, word_bytes, map);
    std::memcpy(target, &word, sizeof word);
}

constexpr size_t step_bytes = 4 * word_bytes;

void exchange_step(uint8_t *target, const uint8_t *source, const CharacterMap &map)
{
    const uint64_t all =
        load(source) | load(source + word_bytes) | load(source + 2 * word_bytes) | load(source + 3 * word_bytes);
    if ((all & high_bits) != 0) return exchange_each(target, source, step_bytes, map);
    std::memcpy(target, source, step_bytes);
}

// The last step goes over some characters a second time.
void exchange(uint8_t *target, const uint8_t *source, size_t count, const CharacterMap &map)
{
    size_t at = 0;
    if (count >= step_bytes) {
        for (; at + step_bytes < count; at += step_bytes) exchange_step(target + at, source + at, map);
        exchange_step(target + count - step_bytes, source + count - step_bytes, map);
    } else if (count >= word_bytes) {
        for (; at + word_bytes < count; at += word_bytes) exchange_word(target + at, source + at, map);
        exchange_word(target + count - word_bytes, source + count - word_bytes, map);
    } else {
        exchange_each(target, source, count, map);
    }
}

void put_exchanged(Sink *sink, const uint8_t *bytes, size_t count, const CharacterMap &map)
{
    while (count > 0) {
        if (sink->filled == sink->size) flush(sink);
        size_t piece = std::min<size_t>(count, sink->size - sink->filled);
        exchange(sink->buffer + sink->filled, bytes, piece, map);
        sink->filled += static_cast<uint32_t>(piece);
        bytes += piece;
        count -= piece;
    }
}

bool write_piece(void *context, const uint8_t *bytes, uint32_t count)
{
    const FileHandle file = *static_cast<const FileHandle *>(context);
    return file_write(file, bytes, count) == static_cast<int32_t>(count);
}
}

void flush(Sink *sink)
{
    if (sink->filled != 0 && !sink->hand_over(sink->context, sink->buffer, sink->filled)) sink->failed = true;
    sink->total += sink->filled;
    sink->filled = 0;
}

void put_bytes(Sink *sink, const uint8_t *bytes, size_t count)
{
    while (count > 0) {
        if (sink->filled == sink->size) flush(sink);
        size_t piece = std::min<size_t>(count, sink->size - sink->filled);
        std::memcpy(sink->buffer + sink->filled, bytes, piece);
        sink->filled += static_cast<uint32_t>(piece);
        bytes += piece;
        count -= piece;
    }
}

void put_text(Sink *sink, std::string_view text)
{
    for (char character : text) put_byte(sink, static_cast<uint8_t>(character));
}

void put_format(Sink *sink, const char *format, ...)
{
    char text[64];
    va_list arguments;
    va_start(arguments, format);
    const int length = vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    put_text(sink, {text, std::min(static_cast<size_t>(std::max(length, 0)), sizeof text - 1)});
}

void put_repeated(Sink *sink, uint8_t byte, size_t count)
{
    for (; count > 0; count--) put_byte(sink, byte);
}

void put_word(Sink *sink, uint16_t word)
{
    put_byte(sink, static_cast<uint8_t>(word >> 8));
    put_byte(sink, static_cast<uint8_t>(word & 0xFF));
}

const CharacterMap &host_of_hp()
{
    static const CharacterMap map = map_by(hp2win);
    return map;
}

void copy_as_host(uint8_t *target, const uint8_t *bytes, size_t count)
{
    exchange(target, bytes, count, host_of_hp());
}

void put_as_host(Sink *sink, const uint8_t *bytes, size_t count)
{
    put_exchanged(sink, bytes, count, host_of_hp());
}

void put_as_hp(Sink *sink, const char *text, size_t count)
{
    static const CharacterMap hp_of_host = map_by(win2hp);
    put_exchanged(sink, reinterpret_cast<const uint8_t *>(text), count, hp_of_host);
}

Sink file_sink(FileHandle *file, uint8_t *buffer, uint32_t size)
{
    return {.hand_over = write_piece, .context = file, .buffer = buffer, .size = size};
}
