// Removing and inserting bytes in the middle of an open file. What stands behind them moves in chunks: towards the
// start in ascending order, towards the end in descending order, so that no chunk is overwritten before it is read.
#include <algorithm>
#include <array>

#include "base/error.h"
#include "base/file.h"
#include "base/file_inner.h"
#include "base/file_steps.h"
#include "base/log.h"
#include "base/log_pointer.h"

namespace
{

constexpr uint32_t chunk = 1024;

bool move_bytes(FileHandle file, uint64_t from, uint64_t to, uint32_t bytes)
{
    std::array<uint8_t, chunk> buffer;
    return seek_to(file, from) && read_whole(file, buffer.data(), bytes) && seek_to(file, to) &&
           write_whole(file, buffer.data(), bytes);
}

bool move_towards_start(FileHandle file, uint64_t from, uint64_t to, uint64_t bytes)
{
    for (uint64_t done = 0; done < bytes; done += chunk) {
        const auto part = static_cast<uint32_t>(std::min<uint64_t>(bytes - done, chunk));
        if (!move_bytes(file, from + done, to + done, part)) return false;
    }
    return true;
}

// The part that is no whole chunk is the one nearest to `from`.
bool move_towards_end(FileHandle file, uint64_t from, uint64_t to, uint64_t bytes)
{
    for (uint64_t left = bytes; left >= chunk; left -= chunk) {
        if (!move_bytes(file, from + left - chunk, to + left - chunk, chunk)) return false;
    }
    const auto remainder = static_cast<uint32_t>(bytes % chunk);
    return remainder == 0 || move_bytes(file, from, to, remainder);
}

bool end_here(FileHandle file)
{
    ++file_generation;
    if (file_calls->set_end(file)) return true;
    set_error(301, ""); // Kept: setting the end of the file fails as a seek does here.  [KeepsSeekErrorForEndOfCut]
    return false;
}

bool close_gap(FileHandle file, uint64_t start, uint32_t removed, uint64_t end)
{
    const bool nothing_follows = end < start || end - start <= removed;
    if (nothing_follows) return seek_to(file, start) && end_here(file);
    return move_towards_start(file, start + removed, start, end - start - removed) && end_here(file) &&
           seek_to(file, start);
}

int32_t cut(FileHandle file, void *buffer, uint32_t bytes)
{
    uint64_t start = 0;
    uint64_t end = 0;
    if (!present_position(file, &start)) return -1;
    const int32_t count = read_here(file, buffer, bytes);
    if (count < 0 || !seek_to_end(file, &end)) return -1;
    return close_gap(file, start, bytes, end) ? count : -1;
}

int32_t paste(FileHandle file, const void *buffer, uint32_t bytes)
{
    uint64_t start = 0;
    uint64_t end = 0;
    if (!present_position(file, &start) || !seek_to_end(file, &end)) return -1;
    const uint64_t tail = end > start ? end - start : 0;
    if (!move_towards_end(file, start, start + bytes, tail) || !seek_to(file, start)) return -1;
    return write_here(file, buffer, bytes);
}

} // namespace

int32_t file_cut(FileHandle file, void *buffer, uint32_t num_bytes)
{
    log_file(3, "file_cut(file=%lu, buffer=%lu, num_bytes=%lu)\n", log_handle(file), log_pointer(buffer),
             log_number(num_bytes));
    if (buffer == nullptr) {
        set_error(103, "NULL pointer");
        return -1;
    }
    return file_is_valid(file) ? cut(file, buffer, std::min<uint32_t>(num_bytes, INT32_MAX)) : 0;
}

int32_t file_paste(FileHandle file, const void *buffer, uint32_t num_bytes)
{
    log_file(3, "file_paste(file=%lu, buffer=%lu, num_bytes=%lu)\n", log_handle(file), log_pointer(buffer),
             log_number(num_bytes));
    if (buffer == nullptr) {
        set_error(103, "NULL pointer");
        return -1;
    }
    return file_is_valid(file) ? paste(file, buffer, std::min<uint32_t>(num_bytes, INT32_MAX)) : 0;
}
