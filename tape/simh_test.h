/* Is a file a SIMH magtape image, of which layout, and what is on it. */
#ifndef TARVO_TAPE_SIMH_TEST_H
#define TARVO_TAPE_SIMH_TEST_H

#include <stdint.h>

#include "base/api.h"
#include "base/file.h"
#include "tape/simh.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Tests a file in three passes, forward, in reverse, and as an array of slots. Shows percentages while loglevel is
 * below 2. Error 103 is set for a missing tape, 301 or 302 where the file can't be read; none for a file that is no
 * image.
 *   tape              is reset and has afterwards: the file; format; blocksize of the fixed layout; num_records, the
 *                     records in the variable layout or, once the third pass has looked at slots, how many it
 *                     accepted; max_record
 *   blocksize         of the slots; 0: worked out from the first record
 *   do_level_1_check  0: the third pass alone
 *   xml               not 0: prints what is on the tape
 * Returns tape->format. The file's position is then 0. */
TARVO_API int32_t simh_test_image(FileHandle fd, TapeImage *tape, uint32_t blocksize, int32_t do_level_1_check,
                                  int32_t xml);

#ifdef __cplusplus
}
#endif

#endif
