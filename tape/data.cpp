// The data of a tape as one stream. Its places are kept for each step of the stream, so that reading on from any of
// them walks over little more than what is read, and a tape of short records takes no more memory than others.
#include "tape/data.h"

#include <algorithm>

#include "base/error.h"
#include "base/memory.h"
#include "tape/simh_inner.h"
#include "tape/walk.h"
#include "tape/words.h"

namespace
{

void note_record(TapeData *data, const TapeItem &record)
{
    const uint64_t behind = data->bytes + record.length;
    for (uint64_t step = (data->bytes + tape_data_step - 1) / tape_data_step; step * tape_data_step < behind; step++) {
        data->places[step] = {data->bytes, record.position};
    }
    data->bytes = behind;
}

// What stands behind a fault isn't found any more; what stands ahead of it is. False when the file can't be read.
bool note_records(TapeData *data, FileHandle file)
{
    TapeWalk walk;
    begin_walk(&walk, file);
    for (;;) {
        const TapeItem item = next_item(&walk);
        switch (item.kind) {
        case TapeItemKind::record: note_record(data, item); break;
        case TapeItemKind::tape_mark: break;
        case TapeItemKind::fault:
        case TapeItemKind::end_of_medium:
        case TapeItemKind::end_of_file: return !walk.view->failed;
        }
    }
}

// The part of a record that belongs to what is read. How many bytes there are, or -1.
int32_t read_part(TapeView *view, uint64_t skipped, uint64_t length, uint8_t *bytes, uint32_t count)
{
    const uint64_t begin = view->position + word_bytes;
    view->position = begin + skipped;
    const int32_t result = view_read(view, bytes, static_cast<uint32_t>(std::min<uint64_t>(count, length - skipped)));
    view->position = begin + padded(length) + word_bytes;
    return result;
}

} // namespace

int32_t find_tape_data(TapeData *ret_data, FileHandle file)
{
    *ret_data = {};
    view_begin_whole(&tape_view, file);
    ret_data->places = static_cast<TapePlace *>(my_malloc((tape_view.end / tape_data_step + 1) * sizeof(TapePlace)));
    if (ret_data->places == nullptr) {
        set_error(105, "");
        return -1;
    }
    const bool was_read = note_records(ret_data, file);
    if (was_read && ret_data->bytes > 0) return 1;
    my_free(ret_data->places);
    *ret_data = {};
    return was_read ? 0 : -1;
}

int32_t read_tape_data(const TapeData *data, FileHandle file, uint64_t at, uint8_t *bytes, uint32_t count)
{
    if (at >= data->bytes) return 0;
    count = static_cast<uint32_t>(std::min<uint64_t>(count, data->bytes - at));
    const TapePlace *place = &data->places[at / tape_data_step];
    uint64_t before = place->before;
    TapeImage tape = {};
    tape.fd = file;
    view_begin_whole(&tape_view, file);
    tape_view.position = place->position;
    uint32_t done = 0;
    while (done < count) {
        const int32_t length = move_forward(&tape, &tape_view, false);
        if (length == SIMH_TAPE_MARK) continue;
        if (length < 0) break;
        const uint64_t behind = before + static_cast<uint32_t>(length);
        if (at + done < behind) {
            const int32_t part = read_part(&tape_view, at + done - before, behind - before, bytes + done, count - done);
            if (part <= 0) break;
            done += static_cast<uint32_t>(part);
        } else {
            tape_view.position += padded(static_cast<uint32_t>(length)) + 2 * word_bytes;
        }
        before = behind;
    }
    return tape_view.failed ? -1 : static_cast<int32_t>(done);
}
