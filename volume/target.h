/* The target string: which medium, and what on it. Forms, tried in this order:
 *   D:REST      floppy drive D, a digit 0 to 3
 *   7AAUV:REST  GPIB address AA, unit U and volume V as single digits that may be left out
 *   PATH:REST   an image file; a drive letter with its colon at the front belongs to the path */
#ifndef TARVO_VOLUME_TARGET_H
#define TARVO_VOLUME_TARGET_H

#include <stdint.h>

#include "base/api.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Takes a target apart. Each ret_ pointer may be null.
 *   ret_msus      the medium part, 260 bytes
 *   ret_filespec  the rest behind the dividing colon, 260 bytes
 *   ret_access    ACCESS_...
 *   ret_addr      GPIB address 0 to 32, 31 for "7:", the bus itself
 * Returns 0, or -1 with error 103 (no target), 204 (no GPIB address), 300 (longer than a path may be). */
TARVO_API int32_t parse_target(const char *target, char *ret_msus, char *ret_filespec, uint32_t *ret_access,
                               uint32_t *ret_addr, uint32_t *ret_unit, uint32_t *ret_volume, uint32_t *ret_drive_num);

/* Reads 7AAUV: by position. Returns the characters taken with the colon, or -1, with error 103 or 204 where a value is
 * out of range. The ret_ pointers may be null. */
TARVO_API int32_t parse_gpib_msus(const char *msus, uint32_t *ret_addr, uint32_t *ret_unit, uint32_t *ret_volume);

#ifdef __cplusplus
}
#endif

#endif
