/* The content of a tape between the variable layout, the fixed layout and a plain file of equal blocks.
 *
 * Both ends are worked on from their begin, whatever their positions are, and have position 0 afterwards. The target
 * isn't made shorter. Percentages are shown while loglevel is below 2. Every function returns 0, or -1, the target
 * standing as far as it got: error 103 (a missing tape, a block size of 0, a record too long), 105, 208 (both ends are
 * the same file), 214 (the source is no magtape image), 301, 302 or 303. A source that ends early is none. */
#ifndef TARVO_TAPE_SIMH_CONVERT_H
#define TARVO_TAPE_SIMH_CONVERT_H

#include <stdint.h>

#include "base/api.h"
#include "base/file.h"
#include "tape/simh.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Variable to fixed layout.
 *   from_tape  a tape of either layout
 *   to_tape    has fd and blocksize; becomes a tape of the fixed layout
 *   do_pack    not 0: the records of a file are joined, and only a tape mark ends a block early; otherwise each record
 *              begins a block, and a last block of an odd record includes its zero byte
 * Tape marks in a row become one. */
TARVO_API int32_t simh_simh2fixed(TapeImage *from_tape, TapeImage *to_tape, int32_t do_pack);

/* Either layout to a plain file: all data as one stream of blocks, the last one filled up with zeros. */
TARVO_API int32_t simh_simh2hpi(TapeImage *from_tape, FileHandle to_fd, uint32_t blocksize);

/* Fixed layout to a plain file: one block a slot, as far as from_tape->num_records goes. Tape marks and empty slots are
 * blocks of zeros. */
TARVO_API int32_t simh_fixed2hpi(TapeImage *from_tape, FileHandle to_fd);

/* A plain file to a tape of the layout that to_tape->format says, one record for each to_tape->blocksize bytes. */
TARVO_API int32_t simh_hpi2simh(FileHandle from_fd, TapeImage *to_tape);

#ifdef __cplusplus
}
#endif

#endif
