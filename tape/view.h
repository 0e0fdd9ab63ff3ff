// A file during one operation on a tape: it has a position of its own, reads ahead and gathers what is written, since a
// call of the system for each word of a tape costs a hundred times as much. Nothing is kept from one operation to the
// next, so what others write, and another file under the same handle, is always seen.
#pragma once

#include <array>
#include <cstdint>

#include "base/file.h"
#include "tape/words.h"

constexpr uint64_t last_position = UINT32_MAX; // in any file: positions have 32 bits
constexpr uint32_t view_bytes = 128 * 1024;

struct TapeView {
    FileHandle file;
    uint64_t position; // of the next byte
    uint64_t end;      // of what is read
    uint64_t place;    // where the system stands in the file
    uint64_t start;    // of the bytes in the buffer
    uint32_t held;     // of them, when they were read
    uint32_t gathered; // of them, when they are to be written; one of the two is 0
    uint32_t reach;    // bytes to read at once the next time
    bool whole_file;   // all of it will be read: data come through the buffer too
    bool backward;     // read ahead of a position towards the begin
    bool failed;       // a read has failed
    bool uneven;       // a half gap, or a part of a word, was met: going back the words may be others
    std::array<uint8_t, view_bytes> buffer;
};

extern TapeView tape_view;  // of the tape; or of the source of a conversion
extern TapeView other_view; // of its target

// Takes over the file at its present position. False with error 301.
bool view_begin(TapeView *view, FileHandle file);
// Takes over a file that will be read or written from its begin to its end; what it becomes longer meanwhile isn't
// read.
void view_begin_whole(TapeView *view, FileHandle file);

// Copies at most so many bytes from a position. How many there are: fewer at the end of the file; -1 with error 301 or
// 302.
int32_t view_look(TapeView *view, uint64_t at, uint8_t *bytes, uint32_t count);
// Reads at the present position, and moves it. Results as above.
int32_t view_read(TapeView *view, void *bytes, uint32_t count);
// The same without a copy where the buffer holds them all; what *ret_bytes points to lasts until the next call. The
// scratch is for more than that.
int32_t view_get(TapeView *view, uint8_t *scratch, uint32_t count, const uint8_t **ret_bytes);
// view_take_word where the buffer doesn't hold the word.
int32_t view_take_word_slowly(TapeView *view, uint32_t *ret_word);

// Writing moves the position. False with error 301 or 303.
bool view_write(TapeView *view, const void *bytes, uint32_t count);
bool view_write_word(TapeView *view, uint32_t word);
bool view_write_zeros(TapeView *view, uint64_t count);
bool view_write_gap(TapeView *view, uint64_t count); // see fill_gap
// Forgets what was gathered and not written yet.
void view_drop(TapeView *view);
// Writes what was gathered, and brings the system to the present position. False with error 301 or 303.
bool view_settle(TapeView *view);

// Gap words, a half gap ahead of them where they don't come out even; a zero byte behind an odd count.
void fill_gap(uint8_t *bytes, uint64_t count);

inline const uint8_t *held_word(const TapeView *view, uint64_t at)
{
    const uint64_t offset = at - view->start;
    return offset < view->held && view->held - offset >= word_bytes ? view->buffer.data() + offset : nullptr;
}

// The word at the present position, which moves behind what there is of it: 4 bytes, or fewer; -1 as above.
inline int32_t view_take_word(TapeView *view, uint32_t *ret_word)
{
    const uint8_t *bytes = held_word(view, view->position);
    if (bytes == nullptr) return view_take_word_slowly(view, ret_word);
    *ret_word = word_at(bytes);
    view->position += word_bytes;
    return word_bytes;
}
