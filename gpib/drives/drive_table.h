/* The drives on an HP-IB bus that are known, with what they answer and the geometry of their media. */
#ifndef TARVO_GPIB_DRIVES_DRIVE_TABLE_H
#define TARVO_GPIB_DRIVES_DRIVE_TABLE_H

#include <stdint.h>

#include "base/api.h"

#ifdef __cplusplus
extern "C" {
#endif

/* GpibDriveInfo.protocol */
enum { PROTOCOL_AMIGO = 0, PROTOCOL_TAPE = 1, PROTOCOL_CS80 = 2, PROTOCOL_SS80 = 3 };

/* A row of a table that a null name ends; also the description of an open drive. */
typedef struct GpibDriveInfo {
    const char *name;         /* the model as it follows "HP" */
    const char *description;  /* one line */
    uint32_t protocol;        /* PROTOCOL_... */
    uint16_t identify;        /* the drive's identify word, first byte received high; 0: found by no drive */
    uint8_t status_mask;      /* AMIGO: of the third of the drive's four status bytes these bits ... */
    uint8_t status_value;     /* ... have this value */
    uint32_t device_number;   /* CS/80: five BCD digits of the model, one for its letter (0 is A) */
    uint8_t units;            /* in the drive */
    uint32_t cylinders;       /* a surface */
    uint32_t heads;           /* surfaces */
    uint32_t sectors;         /* blocks a track */
    uint32_t block_size;      /* bytes */
    uint8_t interleave;       /* factor */
    uint32_t removable;       /* 0: the medium is fixed */
    uint32_t is_tape;         /* 1: a tape drive, or a tape unit of CS/80 */
    uint32_t media_present;   /* of an open drive only */
    uint32_t media_formatted; /* likewise */
} GpibDriveInfo;

/* A search takes the first row that matches, so the order is part of the table. */
extern TARVO_API const GpibDriveInfo default_drive_table[];
extern TARVO_API const GpibDriveInfo *drive_table; /* the table in force */

#ifdef __cplusplus
}
#endif

#endif
