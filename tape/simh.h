/* SIMH magtape images: a plain file that holds a tape as a stream of records, tape marks, erase gaps and an end of
 * medium. The operations move, read and write as a tape unit does. The tape's position is that of the file handle.
 *
 * Words of the container are 32-bit little-endian. In the variable layout a record is its length, the data, a zero
 * byte if the length is odd, and the length again. In the fixed layout, which is Tarvo's own, the file is an array of
 * slots of blocksize + 16 bytes, each with one record, a tape mark or nothing; blocksize should be a multiple of 4.
 *
 * Every operation that moves ends a record in progress first, as simh_stop does. Positions end at 4 GiB - 1; what
 * lies behind is not there. A missing tape is error 103. */
#ifndef TARVO_TAPE_SIMH_H
#define TARVO_TAPE_SIMH_H

#include <stdint.h>

#include "base/api.h"
#include "base/file.h"

#ifdef __cplusplus
extern "C" {
#endif

/* The words that are no record lengths, as numbers, and the half of a gap word that may stand in front of one. */
extern TARVO_API const uint32_t simh_tm;       /* tape mark */
extern TARVO_API const uint32_t simh_eom;      /* end of medium */
extern TARVO_API const uint32_t simh_gap;      /* erase gap */
extern TARVO_API const uint16_t simh_half_gap; /* two bytes of erase gap */

enum { SIMH_MAX_RECORD = 0xFFFFFF }; /* bytes */

enum { /* results of moves and reads below 0 */
       SIMH_ERROR = -1,
       SIMH_END_OF_MEDIUM = -2, /* the mark for it */
       SIMH_BEGIN_OF_TAPE = -3,
       SIMH_TAPE_MARK = -4,
       SIMH_END_OF_FILE = -5, /* the file ends without a mark for it */
       SIMH_BAD_SLOT = -6,    /* fixed layout: the slot is empty, or its length makes no sense */
       SIMH_RUNAWAY = -7      /* the gap was too long */
};

enum { /* TapeImage.format */
       SIMH_UNKNOWN = 0,
       SIMH_VARIABLE = 1,
       SIMH_FIXED = 2
};

enum { /* TapeImage.state */
       SIMH_IDLE = 0,
       SIMH_WRITING = 1,
       SIMH_READING_FORWARD = 2,
       SIMH_READING_REVERSE = 3
};

enum { /* part of a transfer, bits */
       SIMH_FIRST_PART = 1,
       SIMH_LAST_PART = 2,
       SIMH_WHOLE_RECORD = 3
};

/* A tape image; the caller owns it and its file. */
typedef struct TapeImage {
    FileHandle fd;
    uint32_t unit_size; /* bytes of gap a unit of runaway_limit; 0: gaps of any length */
    uint32_t blocksize; /* data bytes of a slot of the fixed layout; 0 otherwise */
    uint32_t format;    /* SIMH_UNKNOWN and on; unknown works as variable */
    uint32_t reserved_format;
    uint32_t record_number; /* the current one; fixed layout: of the slot, tape marks counted */
    uint32_t file_number;   /* tape marks passed */
    uint32_t record_start;  /* of the record in progress: position of its first byte of data, of its begin on writing */
    uint32_t record_size;   /* bytes; on writing those written so far */
    uint32_t record_done;   /* bytes read so far */
    uint32_t num_records;   /* known in the image; fixed layout: slots */
    uint32_t reserved_records;
    uint32_t max_record;    /* bytes of the largest one, set by simh_test_image */
    uint32_t runaway_limit; /* units of gap */
    uint32_t state;         /* SIMH_IDLE and on */
} TapeImage;

/* Clears all but the file, and sets runaway_limit to 300. */
TARVO_API void simh_reset(TapeImage *tape);

/* Ends the record in progress: a reader skips to where the whole record would have left it, a writer closes the
 * record. Returns the result of that last transfer, or 0. */
TARVO_API int32_t simh_stop(TapeImage *tape);

/* Goes to the begin of the tape, record and file 0. */
TARVO_API void simh_rewind(TapeImage *tape);

/* Goes to the begin of the next record, passing gaps.
 *   keep_address  not 0: at the end of the medium or file and at an error the position stays behind what was read,
 *                 otherwise it returns
 * Returns the length of the record, the position being at its length word; SIMH_TAPE_MARK behind the mark;
 * SIMH_RUNAWAY behind the gap read so far; SIMH_END_OF_MEDIUM; SIMH_END_OF_FILE; SIMH_ERROR. */
TARVO_API int32_t simh_move_forward(TapeImage *tape, int32_t keep_address);

/* Goes back to the begin of the record before. Returns its length, the position being at its first length word;
 * SIMH_TAPE_MARK and SIMH_END_OF_MEDIUM in front of the mark; SIMH_RUNAWAY in front of the gap read so far;
 * SIMH_BEGIN_OF_TAPE; SIMH_END_OF_FILE when the position was behind the end; SIMH_ERROR, the position unchanged. */
TARVO_API int32_t simh_move_reverse(TapeImage *tape);

/* Begins a read: goes to the data of the next record, or with forward 0 of the one before. Returns its length, or what
 * the moves return, or SIMH_BAD_SLOT; a negative number below those is a slot's length with its highest bit set, and
 * begins nothing. */
TARVO_API int32_t simh_position_tape(TapeImage *tape, int32_t forward);

/* Reads the next record, or a part of it.
 *   max_buffer_size  bytes of buffer; 0 with the first part: as large as the record, without it nothing is read
 *   part             bit 0: begin with a record, unless simh_position_tape has done so; bit 1: leave it afterwards,
 *                    whatever is left of it
 *   ret_eor          receives 1 when the record is read to its end, otherwise 0; may be null
 * Returns the bytes delivered, or what simh_position_tape returns; SIMH_END_OF_FILE when the data end early, the
 * position unchanged and no record in progress. SIMH_ERROR with error 103: no record is in progress that could be
 * continued, or there is no buffer. */
TARVO_API int32_t simh_read_record_forward(TapeImage *tape, void *buffer, uint32_t max_buffer_size, int32_t part,
                                           int32_t *ret_eor);

/* Reads the record before likewise, as a tape that runs backward: its last byte first, and the first part of the
 * transfer is the end of the record. */
TARVO_API int32_t simh_read_record_reverse(TapeImage *tape, void *buffer, uint32_t max_buffer_size, int32_t part,
                                           int32_t *ret_eor);

/* Writes a record, or a part of it, over what stands there.
 *   record_size  bytes of this part; a whole record of 0 bytes is left out in the variable layout, an empty slot in
 *                the fixed one
 *   part         bit 0: begin a record; bit 1: end it. In parts for the variable layout only
 * Returns 0, or -1, the position unchanged: error 103 (record too long, or none begun), 301 or 303. */
TARVO_API int32_t simh_write_record(TapeImage *tape, const void *buffer, uint32_t record_size, int32_t part);

/* Writes a tape mark; in the fixed layout into the current slot. When it can't, the position is unchanged. */
TARVO_API void simh_write_tapemark(TapeImage *tape);

/* Writes the end of the medium; in the variable layout the position stays in front of it. When it can't, the position
 * is unchanged. */
TARVO_API void simh_write_eom(TapeImage *tape);

/* Erases gapsize bytes, rounded up to even. What the gap would leave of its last record stays a record, unless that
 * one begins where the gap does. Returns 0, or -1, the position unchanged: error 103 when less than a record would be
 * left of one, 301, 302 or 303. */
TARVO_API int32_t simh_write_erase_gap(TapeImage *tape, uint32_t gapsize);

/* Passes records, forward or, with a negative number, back. Returns 0, or what ended it early as the moves return it;
 * SIMH_END_OF_FILE, the position unchanged, when a record ends where no file can. */
TARVO_API int32_t simh_space_records(TapeImage *tape, int32_t num_records);

/* Passes tape marks likewise. A result below 0 leaves the position and the numbers unchanged, but for SIMH_RUNAWAY,
 * which only puts the record number back. */
TARVO_API int32_t simh_space_files(TapeImage *tape, int32_t num_files);

/* Goes to a record by its number. In the fixed layout that is a slot, at most num_records; otherwise it counts from
 * record_number, passing tape marks. Returns 0, or SIMH_ERROR or what ended it, the position unchanged. */
TARVO_API int32_t simh_set_position(TapeImage *tape, uint32_t new_record);

/* Makes an empty tape, from the begin of the file: in the fixed layout num_records slots, with do_format not 0 each
 * holding a record of blocksize zeros, then the end of the medium; rewinds. Returns 0; -1 with error 103, 105 or
 * 303. */
TARVO_API int32_t simh_initialize(TapeImage *tape, uint32_t num_records, int32_t do_format);

#ifdef __cplusplus
}
#endif

#endif
