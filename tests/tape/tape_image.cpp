// Tape images made byte by byte from their layout, without the engine, and a tape over such a file.
#include "tests/tape/tape_image.h"

#include <cstdlib>
#include <vector>

#include "base/file.h"

namespace tests
{

namespace
{

constexpr uint32_t largest_read = 1 << 20;

Bytes filled_up(Bytes slot, uint32_t blocksize)
{
    const size_t size = size_t{blocksize} + 16;
    if ((size - slot.size()) % 4 == 2) slot = joined({slot, half_gap()});
    return joined({slot, gap_words(static_cast<uint32_t>(size - slot.size()) / 4)});
}

std::string read_with(int32_t (*read)(TapeImage *, void *, uint32_t, int32_t, int32_t *), TapeImage *tape)
{
    std::vector<char> buffer(largest_read);
    int32_t complete = -1;
    const int32_t count = read(tape, buffer.data(), largest_read, SIMH_WHOLE_RECORD, &complete);
    if (count < 0) return std::to_string(count);
    if (complete != 1) return "incomplete";
    return {buffer.data(), static_cast<size_t>(count)};
}

}

Bytes joined(std::initializer_list<Bytes> parts)
{
    Bytes all;
    for (const Bytes &part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

Bytes little_word(uint32_t value)
{
    Bytes bytes;
    for (int shift = 0; shift < 32; shift += 8) bytes.push_back(static_cast<uint8_t>(value >> shift));
    return bytes;
}

Bytes tape_record(const std::string &data)
{
    const Bytes length = little_word(static_cast<uint32_t>(data.size()));
    return joined({length, Bytes(data.begin(), data.end()), Bytes(data.size() % 2), length});
}

Bytes tape_mark()
{
    return {0, 0, 0, 0};
}

Bytes end_of_medium()
{
    return {0xFF, 0xFF, 0xFF, 0xFF};
}

Bytes gap_words(uint32_t count)
{
    Bytes gap;
    for (uint32_t i = 0; i < count; i++) gap.insert(gap.end(), {0xFE, 0xFF, 0xFF, 0xFF});
    return gap;
}

Bytes half_gap()
{
    return {0xFF, 0xFF};
}

Bytes record_slot(const std::string &data, uint32_t blocksize)
{
    return filled_up(joined({gap_words(1), tape_record(data)}), blocksize);
}

Bytes mark_slot(uint32_t blocksize)
{
    return filled_up(tape_mark(), blocksize);
}

Bytes empty_slot(uint32_t blocksize)
{
    return filled_up({}, blocksize);
}

Bytes end_slot(uint32_t blocksize)
{
    return filled_up(end_of_medium(), blocksize);
}

std::string some_data(uint32_t length, uint32_t number)
{
    std::string data(length, '\0');
    uint32_t state = number * 2654435761u + 1;
    for (char &byte : data) {
        state = state * 1664525u + 1013904223u;
        byte = static_cast<char>(state >> 24);
    }
    return data;
}

Tape::Tape(const Bytes &bytes, uint32_t format, uint32_t blocksize) : file(bytes, ".tap")
{
    if (file_open(&image.fd, file.path(), "rb+", 0) != 1) std::abort();
    simh_reset(&image);
    image.format = format;
    image.blocksize = blocksize;
    if (format == SIMH_FIXED) image.num_records = static_cast<uint32_t>(bytes.size() / (blocksize + 16));
}

Tape::~Tape()
{
    file_close(image.fd);
}

uint32_t Tape::position() const
{
    uint32_t position = 0;
    if (file_getposition(image.fd, &position) != 0) std::abort();
    return position;
}

void Tape::seek(uint32_t position) const
{
    if (file_seek(image.fd, position) != 1) std::abort();
}

Bytes Tape::bytes() const
{
    return file.bytes();
}

std::string Tape::read()
{
    return read_with(simh_read_record_forward, &image);
}

std::string Tape::read_back()
{
    return read_with(simh_read_record_reverse, &image);
}

int32_t Tape::write(const std::string &data, int32_t part)
{
    return simh_write_record(&image, data.data(), static_cast<uint32_t>(data.size()), part);
}

std::string contents(Tape &tape)
{
    simh_rewind(tape);
    std::string all;
    for (int steps = 0; steps < 100000; steps++) {
        const std::string next = tape.read();
        all += (all.empty() ? "" : " ") + next;
        if (next == "-2" || next == "-5" || next == "-1") return all;
    }
    return all + " ...";
}

}
