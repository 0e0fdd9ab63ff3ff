// Takes any bytes as a tape: walks over it in both directions, tests it, erases a gap in it and converts it. Nothing
// may crash or hang, no memory may be left, what only reads leaves the tape as it was, and a conversion's result is
// itself a tape.
//
// The input: two bytes of options, low byte first, the block size, two bytes too, then the image.
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "base/file.h"
#include "base/log.h"
#include "base/memory.h"
#include "fuzz/support.h"
#include "tape/data.h"
#include "tape/simh.h"
#include "tape/simh_convert.h"
#include "tape/simh_test.h"

using fuzz::demand;
using fuzz::live_blocks;

namespace
{

constexpr uint16_t fixed_layout = 0x0001;
constexpr uint16_t join_records = 0x0002;
constexpr uint16_t print_report = 0x0004;
constexpr uint16_t only_slots = 0x0008;
constexpr uint16_t work_out_size = 0x0010;
constexpr uint16_t small_buffer = 0x0020;
constexpr uint16_t detect_runaway = 0x0040;
constexpr uint16_t full_log = 0x0080;
constexpr uint16_t gap_bits = 0xFF00; // the size of the erase gap, in pairs of bytes

constexpr uint32_t head_bytes = 4;
constexpr uint32_t buffer_bytes = 4096;

struct MemoryFile {
    int descriptor;
    FileHandle handle;
};

MemoryFile make_file(const char *name)
{
    const int descriptor = memfd_create(name, 0);
    FileHandle handle = 0;
    const std::string path = "/proc/self/fd/" + std::to_string(descriptor);
    demand(file_open(&handle, path.c_str(), "rb+", 0) == 1);
    return {descriptor, handle};
}

MemoryFile source;
MemoryFile target;

void store(const MemoryFile &file, const uint8_t *bytes, size_t size)
{
    demand(ftruncate(file.descriptor, 0) == 0);
    demand(pwrite(file.descriptor, bytes, size, 0) == static_cast<ssize_t>(size));
    demand(file_seek(file.handle, 0) == 1);
}

bool holds(const MemoryFile &file, const uint8_t *bytes, size_t size)
{
    std::vector<uint8_t> now(size + 1);
    const ssize_t length = pread(file.descriptor, now.data(), now.size(), 0);
    return length == static_cast<ssize_t>(size) && std::equal(bytes, bytes + size, now.begin());
}

uint32_t position_of(const MemoryFile &file)
{
    uint32_t position = 0;
    demand(file_getposition(file.handle, &position) == 0);
    return position;
}

TapeImage tape_over(const MemoryFile &file, uint16_t options, uint32_t blocksize)
{
    TapeImage tape{};
    tape.fd = file.handle;
    simh_reset(&tape);
    tape.format = (options & fixed_layout) != 0 ? SIMH_FIXED : SIMH_VARIABLE;
    tape.blocksize = blocksize;
    tape.num_records = UINT32_MAX;
    tape.unit_size = (options & detect_runaway) != 0 ? 1 : 0;
    return tape;
}

// Every step moves or is the last one, so there are no more of them than bytes.
void walk(TapeImage *tape, bool forward, uint16_t options, size_t size)
{
    std::array<uint8_t, buffer_bytes + 1> buffer{};
    const uint32_t most = (options & small_buffer) != 0 ? 7 : buffer_bytes;
    const auto read = forward ? simh_read_record_forward : simh_read_record_reverse;
    int32_t result = 0;
    int32_t part = SIMH_FIRST_PART;
    for (size_t steps = 0; result >= 0 || result == SIMH_TAPE_MARK || result == SIMH_RUNAWAY; steps++) {
        demand(steps < 2 * size + 64);
        buffer[most] = 0xA5;
        int32_t complete = 0;
        result = read(tape, buffer.data(), most, part, &complete);
        demand(buffer[most] == 0xA5 && result <= static_cast<int32_t>(most));
        part = result < 0 || complete != 0 ? SIMH_FIRST_PART : 0;
    }
    simh_stop(tape);
    demand(tape->state == SIMH_IDLE);
}

void use_moves(TapeImage *tape)
{
    simh_rewind(tape);
    while (simh_move_forward(tape, 0) >= 0) {
        if (simh_space_records(tape, 1) != 0) break;
    }
    simh_space_files(tape, -3);
    simh_space_records(tape, INT32_MAX);
    simh_space_files(tape, INT32_MIN);
    simh_set_position(tape, 3);
    simh_position_tape(tape, 0);
    simh_rewind(tape);
    demand(position_of(source) == 0);
}

void test_image(uint16_t options, uint32_t blocksize)
{
    TapeImage tested{};
    const int32_t format = simh_test_image(source.handle, &tested, (options & work_out_size) != 0 ? 0 : blocksize,
                                           (options & only_slots) == 0, (options & print_report) != 0);
    demand(format >= 0 && format <= 2 && position_of(source) == 0);
}

// The data as one stream: what is read from any place is the rest of it.
void read_data(uint32_t step, size_t size)
{
    TapeData data{};
    if (find_tape_data(&data, source.handle) != 1) return;
    demand(data.bytes > 0 && data.bytes < size);
    const auto bytes = static_cast<uint32_t>(data.bytes);
    std::vector<uint8_t> all(bytes + 1);
    demand(read_tape_data(&data, source.handle, 0, all.data(), bytes + 1) == static_cast<int32_t>(bytes));
    std::vector<uint8_t> rest(bytes);
    for (uint32_t at = 1; at < bytes; at += step + bytes / 8) {
        demand(read_tape_data(&data, source.handle, at, rest.data(), bytes) == static_cast<int32_t>(bytes - at));
        demand(std::equal(all.begin() + at, all.begin() + bytes, rest.begin()));
    }
    my_free(data.places);
}

void convert(uint16_t options, uint32_t blocksize)
{
    TapeImage from = tape_over(source, options, blocksize);
    TapeImage to = tape_over(target, 0, blocksize);
    store(target, nullptr, 0);
    if (simh_simh2fixed(&from, &to, (options & join_records) != 0) == 0 && blocksize % 4 == 0) {
        TapeImage tested{};
        demand(simh_test_image(target.handle, &tested, blocksize, 1, 0) == SIMH_FIXED);
    }
    store(target, nullptr, 0);
    simh_simh2hpi(&from, target.handle, blocksize);
    store(target, nullptr, 0);
    demand(simh_fixed2hpi(&from, target.handle) == 0);
    store(target, nullptr, 0);
    demand(simh_hpi2simh(source.handle, &to) == 0);
    demand(position_of(source) == 0 && position_of(target) == 0);
}

}

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    if (fuzz::prepare() != 0) return 1;
    source = make_file("source");
    target = make_file("target");
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < head_bytes) return 0;
    const auto options = static_cast<uint16_t>(data[0] | data[1] << 8);
    const uint32_t blocksize = std::max(data[2] | (data[3] & 0x0Fu) << 8, 1u);
    const uint8_t *image = data + head_bytes;
    const size_t image_size = size - head_bytes;
    loglevel = (options & full_log) != 0 ? 5 : 0;
    live_blocks = 0;

    store(source, image, image_size);
    TapeImage tape = tape_over(source, options, blocksize);
    walk(&tape, true, options, image_size);
    walk(&tape, false, options, image_size);
    use_moves(&tape);
    test_image(options, blocksize);
    read_data(blocksize, image_size);
    convert(options, blocksize);
    demand(holds(source, image, image_size));
    simh_write_erase_gap(&tape, (options & gap_bits) >> 7);
    walk(&tape, true, options, image_size + 1024);
    demand(live_blocks == 0);
    return 0;
}
