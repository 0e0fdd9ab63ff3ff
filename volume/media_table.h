/* The drives whose media are known, with the geometry of a new System 45 volume on them. */
#ifndef TARVO_VOLUME_MEDIA_TABLE_H
#define TARVO_VOLUME_MEDIA_TABLE_H

#include <stdint.h>

#include "base/api.h"

#ifdef __cplusplus
extern "C" {
#endif

/* A row of a table that a null name ends. Tracks are those of all surfaces. */
typedef struct MediaTableRow {
    const char *name;        /* of the drive, upper case, at most 16 characters */
    const char *description; /* one line, at most 256 characters */
    uint32_t letter;         /* of the drive, as a catalogue shows it */
    uint32_t heads;          /* surfaces */
    uint32_t sectors;        /* records a track; word 2 of the system record */
    uint32_t tracks;         /* word 4 */
    uint32_t system_tracks;  /* word 14 */
    uint32_t data_tracks;    /* word 16 */
    uint32_t spare_track;    /* from the directory to its spare; word 6 */
    uint32_t dir_start;      /* record; word 8 */
    uint32_t alloc_start;    /* record; word 10 */
    uint32_t alloc_end;      /* first record behind the availability table; word 12 */
    uint32_t interleave;     /* word 18 */
} MediaTableRow;

extern TARVO_API const MediaTableRow default_media_table[];
extern TARVO_API const MediaTableRow *media_table; /* the table in force */

#ifdef __cplusplus
}
#endif

#endif
