// A file during one operation on a tape: reading ahead and gathering what is written.
#include "tape/view.h"

#include <algorithm>
#include <cstring>

#include "base/error.h"
#include "base/file_inner.h"
#include "base/file_steps.h"

constinit TapeView tape_view = {};
constinit TapeView other_view = {};

namespace
{

constexpr uint32_t first_reach = 4096; // one record is often all that is wanted
constexpr uint64_t unknown_place = ~uint64_t{0};
constexpr uint32_t chunk_bytes = 1024;

void forget(TapeView *view, FileHandle file)
{
    view->file = file;
    view->position = 0;
    view->end = last_position;
    view->place = unknown_place;
    view->start = 0;
    view->held = 0;
    view->gathered = 0;
    view->reach = first_reach;
    view->whole_file = false;
    view->backward = false;
    view->failed = false;
    view->uneven = false;
}

bool go_to(TapeView *view, uint64_t at)
{
    if (view->place == at) return true;
    view->place = unknown_place;
    if (!seek_to(view->file, at)) return false;
    view->place = at;
    return true;
}

int32_t read_at(TapeView *view, uint64_t at, uint8_t *bytes, uint64_t count)
{
    if (at >= view->end || !file_is_valid(view->file)) return 0;
    const auto length = static_cast<uint32_t>(std::min<uint64_t>({count, view->end - at, INT32_MAX}));
    const int32_t result = go_to(view, at) ? read_here(view->file, bytes, length) : -1;
    if (result < 0) {
        view->place = unknown_place;
        view->failed = true;
        return -1;
    }
    view->place += static_cast<uint32_t>(result);
    return result;
}

bool write_at(TapeView *view, uint64_t at, const uint8_t *bytes, uint32_t count)
{
    if (!file_is_valid(view->file)) {
        set_error(303, "");
        return false;
    }
    if (!go_to(view, at)) return false;
    view->place = unknown_place;
    if (!write_whole(view->file, bytes, count)) return false;
    view->place = at + count;
    return true;
}

// The bytes that the buffer has from a position on.
uint32_t held_from(const TapeView *view, uint64_t at)
{
    const bool is_held = at >= view->start && at - view->start < view->held;
    return is_held ? view->held - static_cast<uint32_t>(at - view->start) : 0;
}

bool flush(TapeView *view)
{
    const uint32_t count = view->gathered;
    view->gathered = 0;
    return count == 0 || write_at(view, view->start, view->buffer.data(), count);
}

// Where a window over a position begins. Reading on from where the system stands saves it a seek.
uint64_t window_start(const TapeView *view, uint64_t at, uint32_t bytes, uint64_t reach)
{
    const uint64_t behind = at + bytes;
    if (view->backward) return behind > reach ? behind - reach : 0;
    const bool is_near = view->place <= at && at - view->place <= reach / 2 && behind - view->place <= reach;
    return is_near ? view->place : at;
}

// The begin of a word may be held already, and the system stand behind it: it is kept, at the begin of the buffer.
uint32_t keep_from(TapeView *view, uint64_t at)
{
    const uint32_t kept = held_from(view, at);
    if (view->backward || kept == 0 || view->start + view->held != view->place) return 0;
    std::memmove(view->buffer.data(), view->buffer.data() + (view->held - kept), kept);
    return kept;
}

// Fills the buffer so that it has the bytes from `at` on, as far as there are any. When the large read fails, theirs
// may still succeed.
bool fill(TapeView *view, uint64_t at, uint32_t bytes)
{
    if (!flush(view)) return false;
    const uint64_t reach = std::max(view->reach, bytes);
    const uint32_t kept = keep_from(view, at);
    view->start = kept > 0 ? at : window_start(view, at, bytes, reach);
    view->held = 0;
    view->reach = view_bytes;
    const uint64_t wanted = view->backward ? at + bytes - view->start : reach;
    int32_t count = read_at(view, view->start + kept, view->buffer.data() + kept, wanted - kept);
    if (count >= 0) count += static_cast<int32_t>(kept);
    if (count < 0 && wanted > bytes) {
        view->start = at;
        count = read_at(view, at, view->buffer.data(), bytes);
    }
    if (count < 0) return false;
    view->held = static_cast<uint32_t>(count);
    return true;
}

// Takes over bytes to be written at the present position, and writes them once they fill the buffer, or at once where
// they alone would. How many; 0: they can't be written.
uint32_t gather(TapeView *view, const uint8_t *bytes, uint32_t count)
{
    if (view->gathered == 0) {
        view->start = view->position;
        if (count >= view_bytes) return write_at(view, view->position, bytes, count) ? count : 0;
    }
    const uint32_t part = std::min(count, view_bytes - view->gathered);
    std::memcpy(view->buffer.data() + view->gathered, bytes, part);
    view->gathered += part;
    return view->gathered < view_bytes || flush(view) ? part : 0;
}

uint32_t copy_held(const TapeView *view, uint64_t at, uint8_t *bytes, uint32_t count)
{
    const uint32_t part = std::min(count, held_from(view, at));
    if (part > 0) std::memcpy(bytes, view->buffer.data() + (at - view->start), part);
    return part;
}

constexpr std::array<uint8_t, chunk_bytes> gap_words()
{
    std::array<uint8_t, chunk_bytes> words{};
    for (uint32_t i = 0; i < chunk_bytes; i += word_bytes) store_word(words.data() + i, gap_word);
    return words;
}

bool write_pattern(TapeView *view, const std::array<uint8_t, chunk_bytes> &pattern, uint64_t count)
{
    while (count > 0) {
        const auto part = static_cast<uint32_t>(std::min<uint64_t>(count, chunk_bytes));
        if (!view_write(view, pattern.data(), part)) return false;
        count -= part;
    }
    return true;
}

constexpr std::array<uint8_t, chunk_bytes> gap_pattern = gap_words();
constexpr std::array<uint8_t, chunk_bytes> zero_pattern = {};

struct GapParts {
    uint64_t half; // bytes
    uint64_t words;
    uint64_t rest;
};

constexpr GapParts gap_parts(uint64_t count)
{
    const uint64_t rest = count % 2;
    const uint64_t half = (count - rest) % word_bytes;
    return {half, count - rest - half, rest};
}

} // namespace

bool view_begin(TapeView *view, FileHandle file)
{
    forget(view, file);
    if (file_is_valid(file) && !present_position(file, &view->position)) return false;
    view->place = view->position;
    if (view->position <= last_position) return true;
    set_error(301, "");
    return false;
}

void view_begin_whole(TapeView *view, FileHandle file)
{
    forget(view, file);
    view->reach = view_bytes;
    view->whole_file = true;
    uint64_t bytes = 0;
    view->end = file_size_in_bytes(file, &bytes) ? std::min(bytes, last_position) : 0;
}

int32_t view_look(TapeView *view, uint64_t at, uint8_t *bytes, uint32_t count)
{
    if (held_from(view, at) < count && !fill(view, at, count)) return -1;
    return static_cast<int32_t>(copy_held(view, at, bytes, count));
}

int32_t view_take_word_slowly(TapeView *view, uint32_t *ret_word)
{
    uint8_t bytes[word_bytes] = {};
    const int32_t count = view_look(view, view->position, bytes, word_bytes);
    if (count < 0) return -1;
    *ret_word = word_at(bytes);
    if (count != 0 && count < static_cast<int32_t>(word_bytes)) view->uneven = true;
    view->position += static_cast<uint32_t>(count);
    return count;
}

int32_t view_read(TapeView *view, void *bytes, uint32_t count)
{
    if (!flush(view)) return -1;
    auto *target = static_cast<uint8_t *>(bytes);
    uint32_t done = 0;
    while (done < count) {
        uint32_t part = copy_held(view, view->position, target + done, count - done);
        if (part == 0 && view->whole_file && count - done < view_bytes) {
            if (!fill(view, view->position, count - done)) return -1;
            part = copy_held(view, view->position, target + done, count - done);
        } else if (part == 0) {
            const int32_t read = read_at(view, view->position, target + done, count - done);
            if (read < 0) return -1;
            part = static_cast<uint32_t>(read);
        }
        if (part == 0) break;
        view->position += part;
        done += part;
    }
    return static_cast<int32_t>(done);
}

int32_t view_get(TapeView *view, uint8_t *scratch, uint32_t count, const uint8_t **ret_bytes)
{
    *ret_bytes = scratch;
    if (count > view_bytes) return view_read(view, scratch, count);
    if (held_from(view, view->position) < count && !fill(view, view->position, count)) return -1;
    const uint32_t length = std::min(count, held_from(view, view->position));
    if (length > 0) *ret_bytes = view->buffer.data() + (view->position - view->start);
    view->position += length;
    return static_cast<int32_t>(length);
}

bool view_write(TapeView *view, const void *bytes, uint32_t count)
{
    view->held = 0;
    if (view->position + count > last_position) {
        set_error(303, "");
        return false;
    }
    if (view->start + view->gathered != view->position && !flush(view)) return false;
    const auto *source = static_cast<const uint8_t *>(bytes);
    while (count > 0) {
        const uint32_t part = gather(view, source, count);
        if (part == 0) return false;
        view->position += part;
        source += part;
        count -= part;
    }
    return true;
}

bool view_write_word(TapeView *view, uint32_t word)
{
    uint8_t bytes[word_bytes];
    store_word(bytes, word);
    return view_write(view, bytes, word_bytes);
}

bool view_write_zeros(TapeView *view, uint64_t count)
{
    return write_pattern(view, zero_pattern, count);
}

bool view_write_gap(TapeView *view, uint64_t count)
{
    const GapParts parts = gap_parts(count);
    uint8_t half[half_gap_bytes] = {0xFF, 0xFF};
    return (parts.half == 0 || view_write(view, half, half_gap_bytes)) &&
           write_pattern(view, gap_pattern, parts.words) && view_write_zeros(view, parts.rest);
}

void view_drop(TapeView *view)
{
    view->gathered = 0;
}

bool view_settle(TapeView *view)
{
    if (!flush(view)) return false;
    return !file_is_valid(view->file) || go_to(view, view->position);
}

void fill_gap(uint8_t *bytes, uint64_t count)
{
    const GapParts parts = gap_parts(count);
    std::memset(bytes, 0xFF, parts.half);
    for (uint64_t at = 0; at < parts.words; at += word_bytes) store_word(bytes + parts.half + at, gap_word);
    std::memset(bytes + parts.half + parts.words, 0, parts.rest);
}
