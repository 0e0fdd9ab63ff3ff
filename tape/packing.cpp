// The records of a tape as blocks of one size, either joined, so that blocks are full as long as there are records, or
// each record cut into blocks of its own.
#include "tape/packing.h"

#include <algorithm>

#include "base/error.h"
#include "base/log.h"
#include "tape/simh_inner.h"
#include "tape/words.h"

namespace
{

enum class Step : uint8_t { goes_on, ends, fails };

// A source that ends early ends the walk.
Step step_for(int32_t result, uint32_t count)
{
    if (result < 0) return Step::fails;
    return static_cast<uint32_t>(result) == count ? Step::goes_on : Step::ends;
}

// The next bytes of the source, behind what waits in the block.
Step read_data(Packing *packing, uint32_t count)
{
    return step_for(view_read(packing->source, packing->block + packing->fill, count), count);
}

// The next bytes of the source are a block.
Step pass_block(Packing *packing, uint32_t count)
{
    const uint8_t *bytes = nullptr;
    const Step step = step_for(view_get(packing->source, packing->block, count, &bytes), count);
    if (step != Step::goes_on) return step;
    return packing->target->take_block(packing, bytes, count) ? Step::goes_on : Step::fails;
}

// Adds a record, or the begin of one, to what waits. The zero byte of an odd record goes behind it and doesn't count.
Step join(Packing *packing, uint32_t *left, uint32_t pad)
{
    const uint32_t room = packing->block_size - packing->fill;
    if (*left <= room) {
        const Step step = read_data(packing, *left + pad);
        if (step == Step::goes_on) packing->fill += *left;
        *left = 0;
        return step;
    }
    const Step step = read_data(packing, room);
    if (step != Step::goes_on) return step;
    *left -= room;
    packing->fill = 0;
    return packing->target->take_block(packing, packing->block, packing->block_size) ? Step::goes_on : Step::fails;
}

Step take_rest(Packing *packing, uint32_t left, uint32_t pad)
{
    // Kept: the zero byte of an odd record counts in its last block.  [KeepsPadByteInShortBlock]
    if (!packing->joins_records) return pass_block(packing, left + pad);
    const Step step = read_data(packing, left + pad);
    if (step == Step::goes_on) packing->fill = left;
    return step;
}

// The position is at the first byte of data, and ends behind the last one and its zero byte.
Step take_data(Packing *packing, uint32_t length)
{
    const uint32_t pad = length % 2;
    uint32_t left = length;
    if (packing->joins_records && packing->fill > 0) {
        const Step step = join(packing, &left, pad);
        if (step != Step::goes_on || left == 0) return step;
    }
    for (; left >= packing->block_size; left -= packing->block_size) {
        const Step step = pass_block(packing, packing->block_size);
        if (step != Step::goes_on) return step;
    }
    if (left > 0) return take_rest(packing, left, pad);
    packing->source->position += pad;
    return Step::goes_on;
}

Step take_record(Packing *packing, uint32_t length)
{
    packing->ended_with_mark = false;
    packing->source->position += word_bytes;
    const Step step = take_data(packing, length);
    if (step != Step::goes_on) return step;
    uint32_t last_word = 0;
    const int32_t missing = take_word(packing->source, &last_word);
    if (missing == 0) return Step::goes_on;
    return missing == SIMH_END_OF_FILE ? Step::ends : Step::fails;
}

Step complain(const Packing *packing)
{
    if (!packing->source->failed) set_error(214, "SIMH magtape image");
    log_file(0, "%s", packing->target->complaint);
    return Step::fails;
}

Step step_on(Packing *packing)
{
    const int32_t result = move_forward(packing->from, packing->source, false);
    if (result >= 0) return take_record(packing, static_cast<uint32_t>(result));
    switch (result) {
    case SIMH_RUNAWAY: return Step::goes_on;
    case SIMH_END_OF_MEDIUM:
    case SIMH_END_OF_FILE: return Step::ends;
    case SIMH_TAPE_MARK:
        packing->ended_with_mark = true;
        return packing->target->take_mark(packing) ? Step::goes_on : Step::fails;
    default: return complain(packing);
    }
}

} // namespace

uint64_t block_room(const TapeView *source, uint32_t block_size)
{
    return std::min<uint64_t>(block_size, source->end) + 1;
}

bool pack_records(Packing *packing)
{
    Percent percent = {static_cast<uint32_t>(packing->source->end)};
    Step step = Step::goes_on;
    while (step == Step::goes_on) {
        if (!show_percent(&percent, packing->source->position)) return false;
        step = step_on(packing);
    }
    if (step == Step::fails) return false;
    return packing->fill == 0 || packing->target->take_block(packing, packing->block, packing->fill);
}
