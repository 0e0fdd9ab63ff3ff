// Where the bytes of a conversion go: gathered in a buffer, handed over in large pieces.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "base/file.h"

struct Sink {
    // Takes a piece; false when not all of it could be kept.
    bool (*hand_over)(void *context, const uint8_t *bytes, uint32_t count) = nullptr;
    void *context = nullptr;
    uint8_t *buffer = nullptr; // of `size` bytes, at least 2
    uint32_t size = 0;
    uint32_t filled = 0;
    bool failed = false; // some piece could not be kept; what comes later is handed over all the same
    uint64_t total = 0;  // bytes put, whether kept or not
};

void flush(Sink *sink);
void put_bytes(Sink *sink, const uint8_t *bytes, size_t count);
void put_text(Sink *sink, std::string_view text);
// Short: what goes beyond 63 characters is cut.
void put_format(Sink *sink, const char *format, ...) __attribute__((format(printf, 2, 3)));
void put_repeated(Sink *sink, uint8_t byte, size_t count);

inline void put_byte(Sink *sink, uint8_t byte)
{
    if (sink->filled == sink->size) flush(sink);
    sink->buffer[sink->filled++] = byte;
}

inline void put_line_end(Sink *sink)
{
    put_byte(sink, '\r');
    put_byte(sink, '\n');
}

void put_word(Sink *sink, uint16_t word); // big-endian

// Characters with the host's set in exchange for that of the HP machine, and the other way round.
void copy_as_host(uint8_t *target, const uint8_t *bytes, size_t count);
void put_as_host(Sink *sink, const uint8_t *bytes, size_t count);
void put_as_hp(Sink *sink, const char *text, size_t count);

// A sink that writes into an open file of the host.
Sink file_sink(FileHandle *file, uint8_t *buffer, uint32_t size);
