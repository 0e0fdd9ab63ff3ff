// Records from one medium to another, many at once where nobody wants to be told of each.
#include "volume/copy.h"

#include <algorithm>
#include <cstring>

#include "base/error.h"
#include "base/log_pointer.h"
#include "volume/access.h"
#include "volume/copy_inner.h"
#include "volume/region.h"
#include "volume/scratch.h"

namespace
{
struct Streams {
    MediumStream from;
    MediumStream to;
};

// What can't be read becomes zeros, unless the copy is to end there.
int32_t read_some(const BlockCopy &copy, MediumStream *stream, uint8_t *buffer, uint32_t records)
{
    const int32_t count = read_stream(stream, buffer, records);
    if (count > 0) return count;
    if (copy.break_on_error) return -1;
    log_file(1, "Read error at record %lu (ignored)\n", static_cast<unsigned long>(stream->next));
    std::memset(buffer, 0, RECORD_SIZE);
    stream->next++;
    return 1;
}

bool goes_on(const BlockCopy &copy, const MediumStream &stream)
{
    if (copy.progress == nullptr) return true;
    const uint64_t position = uint64_t{stream.next} * RECORD_SIZE;
    const uint64_t percent = uint64_t{stream.next} * 100 / copy.count;
    auto *context = reinterpret_cast<void *>(static_cast<uintptr_t>(position));
    return copy.progress(context, stream.next - 1, static_cast<uint32_t>(percent)) == 0;
}

int32_t copy_all(const BlockCopy &copy, Streams *streams, uint32_t room, bool *ret_stopped)
{
    const Scratch buffer(size_t{room} * RECORD_SIZE);
    if (!buffer) return -1;
    while (streams->to.next < copy.count && !*ret_stopped) {
        const int32_t got = read_some(copy, &streams->from, buffer.bytes(), room);
        if (got < 0) return -1;
        const auto records = static_cast<uint32_t>(got);
        if (write_stream(&streams->to, buffer.bytes(), records) != records) return -1;
        *ret_stopped = !goes_on(copy, streams->to);
    }
    return 0;
}

// One after the other where somebody wants to be told of each, and where a record may be read after it was written.
uint32_t records_at_once(const BlockCopy &copy)
{
    const bool overlapping =
        copy.from == copy.to && overlap({copy.from_start, copy.count}, {copy.to_start, copy.count});
    if (copy.progress != nullptr || overlapping) return 1;
    return std::clamp(copy.count, uint32_t{1}, transfer_bytes / RECORD_SIZE);
}
}

int32_t copy_blocks(const BlockCopy &copy, bool *ret_stopped)
{
    *ret_stopped = false;
    if (copy.do_stream && copy.from == copy.to) {
        log_file(2, "Streaming not supported inside one image, using block access\n");
    }
    if (copy.count == 0) return 0;
    Streams streams;
    if (open_stream(&streams.from, copy.from, copy.from_start, copy.count, false) < 0) return -1;
    if (open_stream(&streams.to, copy.to, copy.to_start, copy.count, true) < 0) {
        close_stream(&streams.from);
        return -1;
    }
    streams.from.alone = streams.to.alone = copy.progress == nullptr && copy.from != copy.to;
    int32_t result = copy_all(copy, &streams, records_at_once(copy), ret_stopped);
    if (close_stream(&streams.from) < 0) result = -1;
    if (close_stream(&streams.to) < 0) result = -1;
    return result;
}

int32_t image_blockcopy(MediaDescriptor *from_md, uint32_t from_start, MediaDescriptor *to_md, uint32_t to_start,
                        uint32_t count, int32_t do_stream, int32_t break_on_error, ProgressCallback progress)
{
    log_file(3,
             "image_blockcopy(from_md=%lu, from_start=%lu, to_md=%lu, to_start=%lu, count=%lu, do_stream=%d, "
             "break_on_error=%d, progress=%lu)\n",
             log_pointer(from_md), static_cast<unsigned long>(from_start), log_pointer(to_md),
             static_cast<unsigned long>(to_start), static_cast<unsigned long>(count), do_stream, break_on_error,
             log_callback(progress));
    if (from_md == nullptr || to_md == nullptr) {
        set_error(103, "Null pointer");
        return -1;
    }
    const BlockCopy copy = {from_md, from_start, to_md, to_start, count, do_stream != 0, break_on_error != 0, progress};
    bool stopped = false;
    return copy_blocks(copy, &stopped);
}
