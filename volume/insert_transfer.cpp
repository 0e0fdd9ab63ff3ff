// The records of a file onto a medium. Without somebody who wants to be told of each record, many are moved at once.
#include "volume/insert_transfer.h"

#include <algorithm>
#include <cstring>

#include "base/error.h"
#include "volume/access.h"
#include "volume/insert_source.h"
#include "volume/scratch.h"

namespace
{
bool goes_on(const TransferIn &transfer, const MediumStream &stream)
{
    if (transfer.progress == nullptr) return true;
    const uint32_t index = stream.next - 1;
    const uint64_t position = uint64_t{stream.next} * RECORD_SIZE;
    const uint64_t percent = uint64_t{stream.next} * 100 / stream.records;
    auto *context = reinterpret_cast<void *>(static_cast<uintptr_t>(position));
    return transfer.progress(context, index, static_cast<uint32_t>(percent)) == 0;
}

int32_t write_records(const TransferIn &transfer, MediumStream *stream, const uint8_t *bytes, uint32_t count,
                      bool *ret_stopped)
{
    const uint32_t together = transfer.progress == nullptr ? count : 1;
    for (uint32_t done = 0; done < count && !*ret_stopped; done += together) {
        if (write_stream(stream, bytes + size_t{done} * RECORD_SIZE, together) != together) return -1;
        *ret_stopped = !goes_on(transfer, *stream);
    }
    return 0;
}

// What the source has of so many records; its last one is filled up with zeros.
int32_t read_records(const TransferIn &transfer, uint8_t *bytes, uint32_t count)
{
    InsertSource *source = transfer.source;
    const uint64_t left = source->size - std::min(source->position, source->size);
    const auto wanted = static_cast<uint32_t>(std::min<uint64_t>(left, uint64_t{count} * RECORD_SIZE));
    const int32_t got = wanted == 0 ? 0 : read_source(source, bytes, wanted);
    if (got < 0) {
        set_error(302, "file \"%s\"", transfer.name);
        return -1;
    }
    std::memset(bytes + got, 0, size_t{count} * RECORD_SIZE - static_cast<size_t>(got));
    return 0;
}

int32_t transfer_all(const TransferIn &transfer, MediumStream *stream, uint32_t room, bool *ret_stopped)
{
    const Scratch bytes(size_t{room} * RECORD_SIZE);
    if (!bytes) return -1;
    while (stream->next < stream->records && !*ret_stopped) {
        const uint32_t count = std::min(room, stream->records - stream->next);
        if (read_records(transfer, bytes.bytes(), count) < 0) return -1;
        if (write_records(transfer, stream, bytes.bytes(), count, ret_stopped) < 0) return -1;
    }
    return 0;
}
}

int32_t transfer_in(const TransferIn &transfer, bool *ret_stopped)
{
    const auto records = static_cast<uint32_t>((uint64_t{transfer.info->size} + RECORD_SIZE - 1) / RECORD_SIZE);
    MediumStream stream;
    if (open_stream(&stream, transfer.md, transfer.info->location, records, true) < 0) return -1;
    stream.alone = transfer.progress == nullptr;
    const uint32_t room = std::clamp(records, uint32_t{1}, transfer_bytes / RECORD_SIZE);
    const int32_t result = transfer_all(transfer, &stream, room, ret_stopped);
    return close_stream(&stream) < 0 ? -1 : result;
}
