/* From a target string to an open medium with its file list in memory. */
#ifndef TARVO_VOLUME_OPEN_H
#define TARVO_VOLUME_OPEN_H

#include <stdint.h>

#include "base/api.h"
#include "volume/media.h"

#ifdef __cplusplus
extern "C" {
#endif

enum {                          /* flags of image_open */
       OPEN_CREATE = 1,         /* create the image file if it can't be opened */
       OPEN_READ_VOLUME = 4,    /* recognise the file system, read its tables */
       OPEN_CHECK = 8,          /* check tables while reading, print image facts */
       OPEN_SORT = 16,          /* keep each file list sorted by location */
       OPEN_REPAIR = 32,        /* carry on past corrupt entries */
       OPEN_NO_QUERY = 0x100,   /* don't query the GPIB drive */
       OPEN_SIMH = 0x200,       /* the image file is SIMH whatever its extension */
       OPEN_RECURSIVE = 0x400,  /* read sub-directories too */
       OPEN_EMPTY = 0x800,      /* empty an existing image file */
       OPEN_READ_ONLY = 0x1000, /* open the image file for reading only */
       OPEN_TAPE_DATA = 0x2000  /* of a tape image that holds data, these are the medium, and are only read; without
                                   this flag the bytes of its file are */
};

/* Opens a medium.
 *   target  see target.h
 *   format  template from which the options and, for a new image, size (bytes) are taken; may be null
 *   flags   OPEN_...
 * Returns the medium, which the caller gives to image_close, or null. Errors set: those of parse_target; 105; 109 for
 * drives and volumes that aren't supported; 103 (a new image without a template); 203 no known file system; 300 with
 * the name, after which last_error() has the system's words; 301, 302, 307. A directory that can't be read whole still
 * opens, with what could be read. */
TARVO_API MediaDescriptor *image_open(const char *target, const MediaDescriptor *format, uint16_t flags);

/* Closes a medium and releases it with its lists; null is ignored. Nothing is written. */
TARVO_API void image_close(MediaDescriptor *md);

/* Releases a list with all sub-directories: that of md for a null directory, else the directory's. Its head is
 * emptied. */
TARVO_API void image_free_directory(MediaDescriptor *md, FileInfo *directory);

/* Recognises the file system from the medium's first records and fills md with its header. Returns 0; -1 with error
 * 202 (no such access), 203 (unknown), 109 (known and not supported) or that of a failed read. */
TARVO_API int32_t get_media_info(MediaDescriptor *md);

#ifdef __cplusplus
}
#endif

#endif
