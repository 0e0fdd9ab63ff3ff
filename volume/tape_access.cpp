// A tape image as a medium: the data of its records are one array of 256-byte records, that of the medium that was
// copied to the tape. It is only read.
#include "volume/tape_access.h"

#include <algorithm>
#include <cctype>
#include <cstring>

#include "base/error.h"
#include "base/log.h"
#include "base/memory.h"
#include "base/output.h"
#include "tape/data.h"
#include "tape/simh_test.h"

namespace
{

static_assert(window_bytes == tape_data_step, "a window is what is found at once");

const char *const tape_extensions[] = {".TAP", ".TAPE", ".SIMH"};

constexpr const char *type_texts[] = {
    // by the layout of the tape
    "SIMH magtape image (unknown format)",
    "SIMH magtape image (standard format)",
    "SIMH magtape image (fixed block format)",
};

uint64_t tape_end_record(MediaDescriptor *md)
{
    return (md->state->tape_data->bytes + RECORD_SIZE - 1) / RECORD_SIZE;
}

int32_t tape_read_record(MediaDescriptor *md, uint32_t record, uint8_t *buffer)
{
    MediaState *state = md->state;
    const uint64_t position = uint64_t{record} * RECORD_SIZE;
    if (position >= state->tape_data->bytes) return 0; // behind the end everything is zero
    if (position < state->window_start || position >= state->window_start + state->window_length) {
        state->window_start = position - position % window_bytes;
        state->window_length = 0;
        const int32_t length =
            read_tape_data(state->tape_data, md->file, state->window_start, state->window, window_bytes);
        if (length < 0) return -1;
        state->window_length = static_cast<uint32_t>(length);
    }
    const uint64_t offset = position - state->window_start;
    if (offset >= state->window_length) return 0; // the file has become shorter
    const uint64_t length = std::min<uint64_t>(RECORD_SIZE, state->window_length - offset);
    std::memcpy(buffer, state->window + offset, length);
    return 0;
}

int32_t tape_write_record(MediaDescriptor *, uint32_t, const uint8_t *)
{
    set_error(109, "change of a tape image");
    return -1;
}

// What is missing at the end of the medium is handed over as zeros, but for an entry that claims nothing else.
int32_t tape_read_stream(MediumStream *stream, uint8_t *buffer, uint32_t records)
{
    constexpr uint32_t most_missing_records = 65535;
    const MediaDescriptor *md = stream->md;
    const uint64_t position = (uint64_t{stream->first} + stream->next) * RECORD_SIZE;
    const uint32_t wanted = records * RECORD_SIZE;
    const int32_t length = read_tape_data(md->state->tape_data, md->file, position, buffer, wanted);
    if (length < 0) return -1;
    if (length == 0 && (stream->missing += records) > most_missing_records) {
        set_error(302, "");
        return -1;
    }
    std::memset(buffer + length, 0, wanted - static_cast<uint32_t>(length));
    return static_cast<int32_t>(records);
}

int32_t tape_write_stream(MediumStream *, const uint8_t *, uint32_t, bool)
{
    return tape_write_record(nullptr, 0, nullptr);
}

void tape_refresh(MediaDescriptor *md)
{
    md->state->window_length = 0;
}

void tape_close(MediaDescriptor *md)
{
    file_close(md->file);
    my_free(md->state->tape_data->places);
    my_free(md->state->tape_data);
    remove_tape(md);
}

constexpr MediumAccess tape_access = {
    .name = "tape image",
    .open = nullptr, // a medium becomes one when its file is open
    .read_record = tape_read_record,
    .write_record = tape_write_record,
    .read_stream = tape_read_stream,
    .write_stream = tape_write_stream,
    .end_record = tape_end_record,
    .refresh = tape_refresh,
    .close = tape_close,
};

} // namespace

bool is_tape_name(const char *msus)
{
    const char *dot = std::strrchr(msus, '.');
    if (dot == nullptr || dot == msus) return false;
    auto same = [dot](const char *extension) {
        size_t length = std::strlen(extension);
        auto equal = [](char left, char right) { return std::toupper(static_cast<unsigned char>(left)) == right; };
        return std::strlen(dot) == length && std::equal(dot, dot + length, extension, equal);
    };
    return std::any_of(std::begin(tape_extensions), std::end(tape_extensions), same);
}

int32_t add_tape(MediaDescriptor *md)
{
    md->tape = static_cast<TapeImage *>(my_malloc(sizeof(TapeImage)));
    if (md->tape == nullptr) {
        set_error(105, "");
        return -1;
    }
    simh_reset(md->tape);
    return 0;
}

void remove_tape(MediaDescriptor *md)
{
    my_free(md->tape);
    md->tape = nullptr;
}

void test_tape(MediaDescriptor *md)
{
    output_text("Testing SIMH image...");
    const int32_t format = simh_test_image(md->file, md->tape, 0, 1, 0);
    output_text("\n");
    output_flush();
    if (format != SIMH_UNKNOWN) return;
    log_file(2, "%s not a valid SIMH magtape file, assuming hpi format.\n", md->msus);
    remove_tape(md);
}

const char *image_type_text(const MediaDescriptor *md)
{
    return md->tape == nullptr ? "binary image (hpi) format" : type_texts[md->tape->format];
}

int32_t read_tape_as_medium(MediaDescriptor *md)
{
    auto *data = static_cast<TapeData *>(my_malloc(sizeof(TapeData)));
    if (data == nullptr) {
        set_error(105, "");
        return -1;
    }
    const int32_t found = find_tape_data(data, md->file);
    if (found <= 0) {
        my_free(data);
        return found;
    }
    md->state->tape_data = data;
    md->state->access = &tape_access;
    md->state->window_length = 0;
    md->size = static_cast<uint32_t>(data->bytes);
    return 0;
}
