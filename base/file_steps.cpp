// The steps of which the file operations are made.
#include "base/file_steps.h"

#include <algorithm>

#include "base/error.h"
#include "base/file_inner.h"

namespace
{

constexpr uint32_t most_bytes = INT32_MAX; // what the result of a read or write can say

bool failed(uint32_t error)
{
    set_error(error, "");
    return false;
}

bool go(FileHandle file, int64_t offset, SeekFrom from, uint64_t *ret_position)
{
    const int64_t position = file_calls->seek(file, offset, from);
    if (position < 0) return failed(301);
    *ret_position = static_cast<uint64_t>(position);
    return true;
}

} // namespace

bool seek_to(FileHandle file, uint64_t position)
{
    uint64_t reached = 0;
    return go(file, static_cast<int64_t>(position), SeekFrom::start, &reached);
}

bool seek_to_end(FileHandle file, uint64_t *ret_end)
{
    return go(file, 0, SeekFrom::end, ret_end);
}

bool present_position(FileHandle file, uint64_t *ret_position)
{
    return go(file, 0, SeekFrom::current, ret_position);
}

int32_t read_here(FileHandle file, void *buffer, uint32_t bytes)
{
    const int64_t count = file_calls->read(file, buffer, std::min(bytes, most_bytes));
    if (count < 0) set_error(302, "");
    return static_cast<int32_t>(count);
}

int32_t write_here(FileHandle file, const void *buffer, uint32_t bytes)
{
    if (file != unkept_file) ++file_generation;
    const int64_t count = file_calls->write(file, buffer, std::min(bytes, most_bytes));
    if (count < 0) set_error(303, "");
    return static_cast<int32_t>(count);
}

int32_t write_there(FileHandle file, uint64_t position, const void *buffer, uint32_t bytes)
{
    if (file != unkept_file) ++file_generation;
    const int64_t count = file_calls->write_at(file, buffer, std::min(bytes, most_bytes), position);
    if (count < 0) set_error(303, "");
    return static_cast<int32_t>(count);
}

bool read_whole(FileHandle file, void *buffer, uint32_t bytes)
{
    const int32_t count = read_here(file, buffer, bytes);
    return count >= 0 && (static_cast<uint32_t>(count) == bytes || failed(302));
}

bool write_whole(FileHandle file, const void *buffer, uint32_t bytes)
{
    const int32_t count = write_here(file, buffer, bytes);
    return count >= 0 && (static_cast<uint32_t>(count) == bytes || failed(303));
}
