// What stands on a tape, for those who list it or look for its data.
#include "tape/walk.h"

#include "tape/simh_inner.h"
#include "tape/words.h"

namespace
{

TapeItem fault_at(uint64_t position, const char *reason)
{
    return {TapeItemKind::fault, position, 0, reason};
}

// The position is at the record's first word, and ends behind its last one.
TapeItem take_record(TapeView *view, uint32_t length)
{
    const uint64_t position = view->position;
    view->position += word_bytes + padded(length);
    if (view->position > view->end) return fault_at(position, "record longer than the file");
    uint32_t word = 0;
    if (take_word(view, &word) != 0) {
        return fault_at(position, view->failed ? "file can't be read" : "record that ends with the file");
    }
    if (word != length) return fault_at(position, "record with two lengths");
    return {TapeItemKind::record, position, length, nullptr};
}

} // namespace

void begin_walk(TapeWalk *walk, FileHandle file)
{
    walk->tape.fd = file;
    reset_tape(&walk->tape);
    walk->view = &tape_view;
    view_begin_whole(walk->view, file);
    walk->percent = {static_cast<uint32_t>(walk->view->end)};
}

TapeItem next_item(TapeWalk *walk)
{
    TapeView *view = walk->view;
    if (tape_progress != nullptr && !show_percent(&walk->percent, view->position)) {
        return fault_at(view->position, "walk that was stopped");
    }
    uint32_t length = 0;
    if (pass_held_record(&walk->tape, view, &length)) {
        return {TapeItemKind::record, view->position - 2 * word_bytes - padded(length), length, nullptr};
    }
    const int32_t result = move_forward(&walk->tape, view, true);
    if (result >= 0) return take_record(view, static_cast<uint32_t>(result));
    switch (result) {
    case SIMH_TAPE_MARK: return {TapeItemKind::tape_mark, view->position - word_bytes, 0, nullptr};
    case SIMH_END_OF_MEDIUM: return {TapeItemKind::end_of_medium, view->position - word_bytes, 0, nullptr};
    case SIMH_END_OF_FILE: return {TapeItemKind::end_of_file, view->position, 0, nullptr};
    default: break;
    }
    if (view->failed) return fault_at(view->position, "file can't be read");
    return fault_at(view->position - word_bytes, "word that is no length");
}
