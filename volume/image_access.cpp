// An image file as an array of records. Reading goes through a window of 64 KB, since a seek and a read for each 256
// bytes cost thirty times as much; writing goes straight to the file. The window is forgotten as soon as this process
// has written any file, and before each reading of a table, so that what others wrote is seen too.
#include "volume/image_access.h"

#include <algorithm>
#include <cstring>

#include "base/error.h"
#include "base/file.h"
#include "base/file_inner.h"
#include "base/log.h"
#include "base/log_pointer.h"
#include "base/memory.h"
#include "base/output.h"
#include "base/timing.h"
#include "tape/simh.h"
#include "volume/open.h"
#include "volume/scratch.h"
#include "volume/tape_access.h"

namespace
{
constexpr uint64_t addressable_bytes = uint64_t{1} << 32; // positions in a file have 32 bits
constexpr uint64_t nothing_known = ~uint64_t{0};
constexpr int32_t old_family = 2; // os_type of systems that don't fill a file that is made longer

// A new image is `size` bytes rounded up to whole records, all zero.
int32_t fill_new_image(MediaDescriptor *md, uint32_t records)
{
    if (file_prepare(md->file, records * RECORD_SIZE) != 1) return -1;
    if (os_type != old_family) return 0;
    const uint8_t zeros[RECORD_SIZE] = {};
    for (uint32_t record = 0; record < records; record++) {
        if (file_writerecord(md->file, record, RECORD_SIZE, zeros) < 0) return -1;
    }
    return file_sync(md->file);
}

int32_t create_image(MediaDescriptor *md, const MediaDescriptor *format)
{
    if (format == nullptr) {
        set_error(103, "no format specified");
        return -1;
    }
    const bool is_tape = md->tape != nullptr; // a new one is empty
    uint64_t records = is_tape ? 0 : (uint64_t{format->size} + RECORD_SIZE - 1) / RECORD_SIZE;
    if (records * RECORD_SIZE >= addressable_bytes) {
        set_error(307, "can't initialize created file %s", md->msus);
        return -1;
    }
    if (file_open(&md->file, md->msus, "wb+", 0) != 1) {
        set_error(307, "Msus \"%s\"", md->msus);
        return -1;
    }
    if (fill_new_image(md, static_cast<uint32_t>(records)) < 0) {
        file_close(md->file);
        set_error(307, "can't initialize created file %s", md->msus);
        return -1;
    }
    md->size = file_getsize(md->file);
    return 0;
}

// What is only read tells its size when it is opened, unless it is a device.
bool open_file(MediaDescriptor *md, bool reading_only, FileFacts *ret_facts)
{
    if (reading_only) return file_open_with_facts(&md->file, md->msus, ret_facts);
    return file_open(&md->file, md->msus, "rb+", 0) == 1;
}

int32_t open_existing(MediaDescriptor *md, uint16_t flags, const FileFacts &facts)
{
    if ((flags & OPEN_EMPTY) == 0) {
        md->size = facts.plain ? static_cast<uint32_t>(facts.bytes) : file_getsize(md->file);
        if (md->tape != nullptr && md->size != 0 && (flags & OPEN_CHECK) != 0) test_tape(md);
        const bool by_data = md->tape != nullptr && (flags & OPEN_TAPE_DATA) != 0;
        if (!by_data || read_tape_as_medium(md) == 0) return 0;
        file_close(md->file);
        return -1;
    }
    md->size = 0;
    if (file_prepare(md->file, 0) == 1) return 0;
    file_close(md->file);
    return -1;
}

void print_image_facts(const MediaDescriptor *md, uint16_t flags)
{
    if (loglevel < 2 || (flags & OPEN_CHECK) == 0) return;
    output_text("-- Image file info --\n");
    output_format("File name: %s\n", md->msus);
    output_format("Image size: %lu bytes\n", static_cast<unsigned long>(md->size));
    output_format("Image type: %s\n", image_type_text(md));
    output_flush();
}

int32_t open_image(MediaDescriptor *md, const OpenOrder &order)
{
    constexpr uint16_t changing = OPEN_CREATE | OPEN_EMPTY;
    bool reading_only = (order.flags & OPEN_READ_ONLY) != 0;
    if (reading_only && (order.flags & changing) != 0) {
        set_error(103, "read only");
        return -1;
    }
    const bool is_tape = (order.flags & OPEN_SIMH) != 0 || is_tape_name(md->msus);
    if (is_tape && add_tape(md) < 0) return -1;
    md->state = static_cast<MediaState *>(my_malloc(sizeof(MediaState)));
    if (md->state == nullptr) {
        set_error(105, "");
        remove_tape(md);
        return -1;
    }
    md->state->window_generation = nothing_known;
    int32_t result = 0;
    FileFacts facts;
    if (open_file(md, reading_only, &facts)) {
        result = open_existing(md, order.flags, facts);
    } else if ((order.flags & OPEN_CREATE) != 0) {
        result = create_image(md, order.format);
    } else {
        uint32_t reason = platform_last_error();
        set_error(300, "Msus \"%s\"", md->msus);
        platform_set_last_error(reason);
        result = -1;
    }
    if (result < 0) {
        md->file = platform_void_file;
        remove_tape(md);
        return -1;
    }
    if (md->tape != nullptr) md->tape->fd = md->file;
    print_image_facts(md, order.flags);
    return 0;
}

// What is known of the file holds until anything is written.
bool learn_size(MediaDescriptor *md)
{
    MediaState *state = md->state;
    state->window_length = 0;
    const bool known = file_size_in_bytes(md->file, &state->bytes);
    state->window_generation = known ? file_generation : nothing_known;
    state->bytes = known ? std::min(state->bytes, addressable_bytes) : 0;
    return known;
}

// The first record wholly behind the end of the image; false when its size can't be had.
bool find_end(MediaDescriptor *md, uint64_t *ret_record)
{
    uint64_t bytes = 0;
    bool known = true;
    if (md->state == nullptr) {
        known = file_size_in_bytes(md->file, &bytes);
    } else {
        if (md->state->window_generation != file_generation) known = learn_size(md);
        bytes = md->state->bytes;
    }
    *ret_record = (std::min(bytes, addressable_bytes) + RECORD_SIZE - 1) / RECORD_SIZE;
    return known;
}

uint64_t image_end_record(MediaDescriptor *md)
{
    uint64_t record = 0;
    return find_end(md, &record) ? record : 0;
}

// False when the window can't be read; a record in it may still be readable alone.
bool fill_window(MediaDescriptor *md, uint64_t position)
{
    MediaState *state = md->state;
    uint64_t start = position - position % window_bytes;
    state->window_length = 0;
    if (file_seek(md->file, static_cast<uint32_t>(start)) != 1) return false;
    int32_t length = file_read(md->file, state->window, window_bytes);
    if (length < 0) return false;
    state->window_start = start;
    state->window_length = static_cast<uint32_t>(length);
    return true;
}

int32_t image_read_record(MediaDescriptor *md, uint32_t record, uint8_t *buffer)
{
    uint64_t end = 0;
    const bool known = find_end(md, &end);
    if (known && record >= end) return 0; // behind the end everything is zero
    MediaState *state = known ? md->state : nullptr;
    if (state == nullptr) return file_readrecord(md->file, record, RECORD_SIZE, buffer) < 0 ? -1 : 0;
    uint64_t position = uint64_t{record} * RECORD_SIZE;
    bool held = position >= state->window_start && position < state->window_start + state->window_length;
    if (!held && !fill_window(md, position)) {
        return file_readrecord(md->file, record, RECORD_SIZE, buffer) < 0 ? -1 : 0;
    }
    uint64_t offset = position - state->window_start;
    if (offset >= state->window_length) return 0; // the file has become shorter
    uint64_t length = std::min<uint64_t>(RECORD_SIZE, state->window_length - offset);
    std::memcpy(buffer, state->window + offset, length);
    return 0;
}

int32_t image_write_record(MediaDescriptor *md, uint32_t record, const uint8_t *buffer)
{
    if (record >= addressable_bytes / RECORD_SIZE) {
        set_error(303, "");
        return -1;
    }
    return file_writerecord(md->file, record, RECORD_SIZE, buffer);
}

// ---- streams: the records of one file -----------------------------------------------------------------------

constexpr uint32_t most_missing_records = 65535; // behind the end of an image that are handed over as zeros

bool place(MediumStream *stream)
{
    if (stream->placed) return true;
    uint64_t position = (uint64_t{stream->first} + stream->next) * RECORD_SIZE;
    return file_seek(stream->md->file, static_cast<uint32_t>(position)) == 1;
}

// A trimmed image has lost its last records; an entry that claims much more than that is damaged.
int32_t missing_records(MediumStream *stream, uint8_t *buffer, uint32_t records)
{
    uint32_t count = std::min(records, most_missing_records - stream->missing);
    if (count == 0) {
        set_error(302, "");
        return -1;
    }
    std::memset(buffer, 0, size_t{count} * RECORD_SIZE);
    stream->missing += count;
    return static_cast<int32_t>(count);
}

// As the window does: what can't be read together may still be readable one by one.
int32_t read_alone(MediumStream *stream, uint8_t *buffer)
{
    stream->placed = false;
    std::memset(buffer, 0, RECORD_SIZE);
    uint32_t record = stream->first + stream->next;
    return file_readrecord(stream->md->file, record, RECORD_SIZE, buffer) < 0 ? -1 : 1;
}

// Small files come through the window, which then holds their neighbours as well.
int32_t read_through_window(MediumStream *stream, uint8_t *buffer, uint32_t records)
{
    std::memset(buffer, 0, size_t{records} * RECORD_SIZE);
    for (uint32_t index = 0; index < records; index++) {
        uint32_t record = stream->first + stream->next + index;
        if (image_read_record(stream->md, record, buffer + size_t{index} * RECORD_SIZE) == 0) continue;
        return index == 0 ? -1 : static_cast<int32_t>(index); // the next call meets it again
    }
    return static_cast<int32_t>(records);
}

int32_t image_read_stream(MediumStream *stream, uint8_t *buffer, uint32_t records)
{
    uint64_t position = uint64_t{stream->first} + stream->next;
    uint64_t end = 0;
    if (!find_end(stream->md, &end)) {
        set_error(302, "");
        return -1;
    }
    if (position >= end) return missing_records(stream, buffer, records);
    records = static_cast<uint32_t>(std::min<uint64_t>(records, end - position));
    const bool is_small = stream->records <= window_bytes / RECORD_SIZE;
    if (is_small && !stream->unkept) return read_through_window(stream, buffer, records);
    if (!place(stream)) return read_alone(stream, buffer);
    uint32_t wanted = records * RECORD_SIZE;
    int32_t bytes = file_read(stream->md->file, buffer, wanted);
    if (bytes < 0) return read_alone(stream, buffer);
    auto length = static_cast<uint32_t>(bytes);
    stream->placed = stream->alone && length == wanted;
    std::memset(buffer + length, 0, wanted - length);
    return static_cast<int32_t>(records);
}

int32_t image_write_stream(MediumStream *stream, const uint8_t *buffer, uint32_t records, bool)
{
    uint64_t position = uint64_t{stream->first} + stream->next;
    if ((position + records) * RECORD_SIZE > addressable_bytes) {
        set_error(303, "");
        return -1;
    }
    uint32_t wanted = records * RECORD_SIZE;
    int32_t bytes = file_write_at(stream->md->file, position * RECORD_SIZE, buffer, wanted);
    if (bytes == static_cast<int32_t>(wanted)) return static_cast<int32_t>(records);
    set_error(303, "");
    return bytes < 0 ? -1 : bytes / RECORD_SIZE;
}

// A failed write isn't looked at: what was asked for is a medium without a volume.
int32_t image_make_blank(MediaDescriptor *md)
{
    const Scratch zeros(transfer_bytes);
    if (!zeros) return -1;
    const uint64_t end = (uint64_t{md->size} + RECORD_SIZE - 1) / RECORD_SIZE * RECORD_SIZE;
    for (uint64_t position = 0; position < end; position += transfer_bytes) {
        const auto bytes = static_cast<uint32_t>(std::min<uint64_t>(transfer_bytes, end - position));
        if (file_seek(md->file, static_cast<uint32_t>(position)) == 1) file_write(md->file, zeros.bytes(), bytes);
    }
    file_sync(md->file);
    return 0;
}

void image_refresh(MediaDescriptor *md)
{
    if (md->state != nullptr) md->state->window_generation = nothing_known;
}

void image_close_file(MediaDescriptor *md)
{
    file_close(md->file);
    remove_tape(md);
}
}

const MediumAccess image_access = {
    .name = "image file",
    .open = open_image,
    .read_record = image_read_record,
    .write_record = image_write_record,
    .read_stream = image_read_stream,
    .write_stream = image_write_stream,
    .end_record = image_end_record,
    .make_blank = image_make_blank,
    .refresh = image_refresh,
    .close = image_close_file,
    // Kept: other pieces of a file are never looked for.  [KeepsExtentsOfAnImageReadFromTheFirst]
    .extents_follow_location = true,
    .clears_rest_of_directory = true,
};

bool is_image_file(const MediaDescriptor *md, const FileFacts &facts)
{
    if (md->access != ACCESS_IMAGE || !facts.plain) return false;
    MediaState *state = md->state;
    if (state != nullptr && state->identity_known) return facts.identity == state->identity;
    FileFacts image;
    if (!file_calls->facts(md->file, &image)) return false;
    if (state != nullptr) {
        state->identity = image.identity;
        state->identity_known = true;
    }
    return facts.identity == image.identity;
}
