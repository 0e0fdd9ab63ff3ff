// Erasing a stretch of tape. What stands there is scanned first, so that no record is left torn: one that the end of
// the gap would cut is shortened from the front.
#include <algorithm>

#include "base/error.h"
#include "tape/simh_inner.h"
#include "tape/words.h"

namespace
{

enum class ScanEnd : uint8_t {
    behind_the_gap, // all of it was passed
    at_a_record,    // the gap ends inside it
    nowhere,        // nothing is known of what follows
    failed
};

struct Scan {
    ScanEnd end;
    uint64_t distance; // bytes from the start of the gap
    uint32_t length;   // of the record
};

// The word at a position that stays. False where it isn't all there.
bool word_ahead(TapeView *view, uint64_t at, uint32_t *ret_word, ScanEnd *ret_end)
{
    uint8_t bytes[word_bytes] = {};
    const int32_t count = view_look(view, at, bytes, word_bytes);
    *ret_word = word_at(bytes);
    *ret_end = count < 0 ? ScanEnd::failed : ScanEnd::nowhere;
    return count == word_bytes;
}

bool has_second_half(TapeView *view, uint64_t at)
{
    uint8_t bytes[half_gap_bytes];
    return view_look(view, at, bytes, half_gap_bytes) == half_gap_bytes;
}

// The bytes that a word lets the scan step on; 0: it ends here.
uint64_t step_over(TapeView *view, uint64_t at, uint32_t word)
{
    switch (classify(word)) {
    case TapeWord::tape_mark:
    case TapeWord::gap: return word_bytes;
    case TapeWord::half_gap: return has_second_half(view, at + word_bytes) ? uint64_t{word_bytes} + half_gap_bytes : 0;
    // Kept: the zero byte behind an odd record isn't counted, so what follows it is misread.  [KeepsPadUncountedByGap]
    case TapeWord::record: return uint64_t{word} + 2 * word_bytes;
    case TapeWord::end_of_medium:
    case TapeWord::bad: return 0;
    }
    return 0;
}

Scan scan_stretch(TapeView *view, uint64_t start, uint64_t size)
{
    Scan scan = {ScanEnd::behind_the_gap, 0, 0};
    while (scan.distance < size) {
        const uint64_t at = start + scan.distance;
        uint32_t word = 0;
        if (!word_ahead(view, at, &word, &scan.end)) return scan;
        const uint64_t step = step_over(view, at, word);
        if (step == 0) return scan;
        if (classify(word) == TapeWord::record && scan.distance + step > size) {
            scan.end = ScanEnd::at_a_record;
            scan.length = word;
            return scan;
        }
        scan.distance += step;
    }
    scan.end = ScanEnd::behind_the_gap;
    return scan;
}

// Only what has the same length at its other end is a record. What was misread, or is damaged, must not make a length
// word be written into the middle of something else.
bool is_whole(TapeView *view, uint64_t at, uint32_t length)
{
    uint32_t word = 0;
    ScanEnd ignored;
    return word_ahead(view, at + word_bytes + padded(length), &word, &ignored) && word == length;
}

// Gives the rest of the record, which begins where the gap ends, its length words. Where no byte of data is left the
// gap takes all of it.
bool shorten(TapeView *view, uint64_t start, const Scan &scan, uint64_t *size)
{
    const int64_t rest = static_cast<int64_t>(scan.length) - static_cast<int64_t>(*size - scan.distance);
    if (rest < 0) {
        set_error(103, "the gap ends in the last bytes of a record");
        return false;
    }
    if (!is_whole(view, start + scan.distance, scan.length)) return true;
    if (rest == 0) {
        *size += 2 * word_bytes;
        return true;
    }
    const auto length = static_cast<uint32_t>(rest);
    view->position = start + *size;
    if (!view_write_word(view, length)) return false;
    view->position += padded(length);
    return view_write_word(view, length);
}

} // namespace

bool write_erase_gap(TapeView *view, uint64_t gapsize)
{
    const uint64_t start = view->position;
    uint64_t size = padded(gapsize);
    if (start + size > last_position) {
        set_error(303, "");
        return false;
    }
    const Scan scan = scan_stretch(view, start, size);
    if (scan.end == ScanEnd::failed) return false;
    if (scan.end == ScanEnd::behind_the_gap) size = scan.distance - scan.distance % 2;
    // Kept: a record that begins where the gap does isn't shortened, and loses its head.  [KeepsTornRecordAtStartOfGap]
    if (scan.end == ScanEnd::at_a_record && scan.distance > 0 && !shorten(view, start, scan, &size)) return false;
    view->position = start;
    return view_write_gap(view, size);
}
