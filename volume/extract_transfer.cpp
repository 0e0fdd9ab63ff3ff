// The bytes of a file out of a medium: as they are, behind a header, or as text. Without somebody who wants to be told
// of each record, many are moved at once.
#include "volume/extract_transfer.h"

#include <algorithm>

#include "base/error.h"
#include "base/log.h"
#include "volume/access.h"
#include "volume/content/content.h"
#include "volume/header.h"
#include "volume/scratch.h"

namespace
{
constexpr uint32_t least_text_bytes = 4096;
constexpr uint64_t most_records = 0xFFFFFFFF;

enum class Flow : uint8_t { on, ended, failed };

struct Extent {
    uint32_t start;   // record on the medium
    uint32_t records; // of 256 bytes
    uint64_t bytes;
};

struct Transfer {
    MediaDescriptor *md;
    const FileInfo *info;
    FileHandle file;
    const char *name; // for messages
    ProgressCallback progress;
    bool converted;                    // text goes out, the bytes themselves don't
    const ContentConverter *converter; // null for unknown content, of which no text comes
    uint8_t *records;                  // room for records read at once
    uint32_t room;                     // how many
    OutwardState state = {};
    Sink sink = {};
    uint64_t handled = 0; // bytes; counts on from extent to extent
    uint32_t missing = 0; // records that the medium lacks
    uint32_t pieces = 0;  // that were begun
    int32_t last_read = 0;
    bool stopped = false; // by progress
    bool foreign = false; // the content isn't what its type says
};

Flow fail(const Transfer *transfer, uint32_t number)
{
    set_error(number, "file \"%s\"", transfer->name);
    return Flow::failed;
}

// The bytes of a record that belong to the file when `handled` went before. Those of an extent's last one are what is
// left of it, which behind other extents may be nonsense: that can't be written.
bool record_length(const Extent &extent, uint32_t index, uint64_t handled, uint32_t *ret_length)
{
    *ret_length = RECORD_SIZE;
    if (index + 1 < extent.records) return true;
    *ret_length = static_cast<uint32_t>(extent.bytes - handled);
    if (extent.bytes >= handled && extent.bytes - handled <= RECORD_SIZE) return true;
    *ret_length = 0;
    return false;
}

Flow tell_progress(Transfer *transfer, uint32_t index)
{
    if (transfer->progress == nullptr) return Flow::on;
    const uint64_t position = (uint64_t{index} + 1) * RECORD_SIZE;
    const uint64_t percent = transfer->info->size == 0 ? 0 : transfer->handled * 100 / transfer->info->size;
    auto *context = reinterpret_cast<void *>(static_cast<uintptr_t>(position));
    transfer->stopped = transfer->progress(context, index, static_cast<uint32_t>(percent)) != 0;
    return transfer->stopped ? Flow::ended : Flow::on;
}

Flow write_records(Transfer *transfer, const Extent &extent, uint32_t index, uint32_t count)
{
    const uint8_t *bytes = transfer->records;
    const uint32_t together = transfer->progress == nullptr ? count : 1;
    for (const uint32_t end = index + count; index < end; index += together) {
        const uint32_t last = index + together - 1;
        const uint32_t ahead = (together - 1) * RECORD_SIZE;
        uint32_t length = 0;
        const bool whole = record_length(extent, last, transfer->handled + ahead, &length);
        length += ahead;
        if (file_write(transfer->file, bytes, length) != static_cast<int32_t>(length)) return fail(transfer, 303);
        if (!whole) return fail(transfer, 303);
        bytes += length;
        transfer->handled += length;
        const Flow flow = tell_progress(transfer, last);
        if (flow != Flow::on) return flow;
    }
    return Flow::on;
}

Flow convert_record(Transfer *transfer, const uint8_t *record, uint32_t length)
{
    if (transfer->converter == nullptr) return Flow::on;
    const ContentStep step = transfer->converter->outward(&transfer->state, record, length);
    transfer->state.first_block = false;
    transfer->foreign = step == ContentStep::foreign;
    if (transfer->progress != nullptr || step == ContentStep::rejected) flush(&transfer->sink);
    if (step == ContentStep::rejected) return fail(transfer, 214);
    return step == ContentStep::more ? Flow::on : Flow::ended;
}

Flow convert_records(Transfer *transfer, const Extent &extent, uint32_t index, uint32_t count)
{
    const uint8_t *record = transfer->records;
    for (const uint32_t end = index + count; index < end; index++) {
        uint32_t length = 0;
        if (!record_length(extent, index, transfer->handled, &length)) return fail(transfer, 303);
        Flow flow = convert_record(transfer, record, length);
        if (flow != Flow::on) return flow;
        transfer->handled += length;
        flow = tell_progress(transfer, index);
        if (flow != Flow::on) return flow;
        record += RECORD_SIZE;
    }
    return Flow::on;
}

// What a content has ahead of its text counts, but isn't read. *index is the first record behind it.
Flow skip_records(Transfer *transfer, const Extent &extent, uint32_t *index)
{
    if (!transfer->converted || transfer->converter == nullptr) return Flow::on;
    const uint32_t skipped = std::min(transfer->converter->skipped_blocks, extent.records);
    for (; *index < skipped; (*index)++) {
        uint32_t length = 0;
        if (!record_length(extent, *index, transfer->handled, &length)) return fail(transfer, 303);
        transfer->handled += length;
        const Flow flow = tell_progress(transfer, *index);
        if (flow != Flow::on) return flow;
    }
    return Flow::on;
}

Flow transfer_records(Transfer *transfer, MediumStream *stream, const Extent &extent, uint32_t index)
{
    Flow flow = Flow::on;
    while (flow == Flow::on && index < extent.records) {
        const int32_t count = read_stream(stream, transfer->records, transfer->room);
        if (count <= 0) return Flow::failed;
        transfer->last_read = RECORD_SIZE;
        const auto records = static_cast<uint32_t>(count);
        flow = transfer->converted ? convert_records(transfer, extent, index, records)
                                   : write_records(transfer, extent, index, records);
        index += records;
    }
    return flow;
}

Flow transfer_extent(Transfer *transfer, const Extent &extent)
{
    uint32_t index = 0;
    Flow flow = skip_records(transfer, extent, &index);
    if (flow != Flow::on || index == extent.records) return flow;
    MediumStream stream;
    if (open_stream(&stream, transfer->md, extent.start + index, extent.records - index, false) < 0) {
        return Flow::failed;
    }
    stream.alone = transfer->progress == nullptr;
    stream.missing = transfer->missing;
    transfer->pieces++;
    flow = transfer_records(transfer, &stream, extent, index);
    transfer->missing = stream.missing;
    return close_stream(&stream) < 0 ? Flow::failed : flow;
}

Flow write_header(const Transfer *transfer, uint32_t records)
{
    const FileHeader *header = file_header(transfer->md->use_file_headers);
    if (header == nullptr || transfer->converted) return Flow::on;
    uint8_t bytes[most_header_bytes] = {};
    header->compose(transfer->info, records, bytes);
    const int32_t written = file_write(transfer->file, bytes, header->bytes);
    return written == static_cast<int32_t>(header->bytes) ? Flow::on : fail(transfer, 303);
}

// The bytes of a file that stand in one of its extents: all that this has room for; in the last one what is left.
uint64_t bytes_in(const Transfer *transfer, const ExtentList &list, uint32_t index)
{
    if (index + 1 < list.count) return list.extents[index].length * RECORD_SIZE;
    const uint64_t size = transfer->info->size;
    return size > transfer->handled ? size - transfer->handled : 0;
}

Flow transfer_extents(Transfer *transfer, const ExtentList &list)
{
    const MediumAccess *access = medium_access(transfer->md);
    if (access == nullptr) return Flow::failed;
    for (uint32_t index = 0; index < list.count; index++) {
        const uint64_t bytes = bytes_in(transfer, list, index);
        // Kept: a location counts records here, however long a block is.  [KeepsImageLocationInRecords]
        const uint64_t start = access->extents_follow_location ? transfer->info->location : list.extents[index].start;
        // No medium has more records than a stream can count; what is claimed beyond ends in an error of reading.
        const uint64_t records = std::min((bytes + RECORD_SIZE - 1) / RECORD_SIZE, most_records);
        if (records == 0) continue;
        const Flow flow = transfer_extent(transfer, {.start = static_cast<uint32_t>(std::min(start, most_records)),
                                                     .records = static_cast<uint32_t>(records),
                                                     .bytes = bytes});
        if (flow != Flow::on) return flow;
    }
    return Flow::on;
}

Flow run(Transfer *transfer, const ExtentList &list, uint32_t records)
{
    const Flow flow = write_header(transfer, records);
    return flow == Flow::on ? transfer_extents(transfer, list) : flow;
}

// Whether what has gone out is all of the file.
bool is_whole(const Transfer *transfer)
{
    const MediumAccess *access = medium_access(transfer->md);
    const bool repeated = transfer->pieces > 1 && access != nullptr && access->extents_follow_location;
    if (transfer->stopped || transfer->sink.failed || repeated) return false;
    if (transfer->converted) return transfer->converter != nullptr && !transfer->foreign;
    return transfer->handled == transfer->info->size;
}
}

bool becomes_text(const MediaDescriptor *md, const FileInfo *info, uint16_t flags)
{
    if ((flags & EXTRACT_CONVERT) == 0) return false;
    return (flags & EXTRACT_FORCE) != 0 || find_converter(md->format, info->type) != nullptr;
}

void log_forced_conversion(const MediaDescriptor *md, const FileInfo *info, uint16_t flags)
{
    if (!becomes_text(md, info, flags) || find_converter(md->format, info->type) != nullptr) return;
    log_file(1, "Conversion forced for file with unknown content\n");
}

int32_t find_extents(const MediaDescriptor *md, const FileInfo *info, ExtentList *ret_extents)
{
    const VolumeFormat &format = volume_format(md->format);
    if (format.locate_file != nullptr) return format.locate_file(md, info, ret_extents);
    const uint64_t records = (uint64_t{info->size} + RECORD_SIZE - 1) / RECORD_SIZE;
    *ret_extents = {.extents = {{info->location, records}}, .count = 1, .has_more = false};
    return 0;
}

void log_extents(const ExtentList &list)
{
    if (list.has_more) log_file(1, "Inode table file contains extent maps which are currently not supported\n");
}

Extraction transfer_out(const TransferOrder &order)
{
    const FileInfo *info = order.info;
    const auto records = static_cast<uint32_t>((uint64_t{info->size} + RECORD_SIZE - 1) / RECORD_SIZE);
    const uint32_t room = std::clamp(records, uint32_t{1}, transfer_bytes / RECORD_SIZE);
    const bool converted = becomes_text(order.md, info, order.flags);
    const uint32_t text_bytes = converted ? std::max(room * RECORD_SIZE, least_text_bytes) : 1;
    const Scratch bytes(size_t{room} * RECORD_SIZE);
    const Scratch text(text_bytes);
    if (!bytes || !text) return {};
    Transfer transfer = {.md = order.md,
                         .info = info,
                         .file = order.file,
                         .name = order.name,
                         .progress = order.progress,
                         .converted = converted,
                         .converter = find_converter(order.md->format, info->type),
                         .records = bytes.bytes(),
                         .room = room};
    transfer.sink = file_sink(&transfer.file, text.bytes(), text_bytes);
    transfer.state.sink = &transfer.sink;
    const Flow flow = run(&transfer, order.extents, records);
    flush(&transfer.sink);
    if (flow == Flow::failed) return {};
    return {.result = transfer.last_read, .whole = is_whole(&transfer), .stopped = transfer.stopped};
}

Extraction extract_to_handle(MediaDescriptor *md, const FileInfo *info, FileHandle file, const char *name,
                             uint16_t flags, ProgressCallback progress)
{
    ExtentList extents;
    if (find_extents(md, info, &extents) < 0) return {};
    log_extents(extents);
    log_forced_conversion(md, info, flags);
    return transfer_out({md, info, extents, file, name, flags, progress});
}
