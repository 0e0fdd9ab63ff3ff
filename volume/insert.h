/* Files of the host into files of an open medium. */
#ifndef TARVO_VOLUME_INSERT_H
#define TARVO_VOLUME_INSERT_H

#include <stdint.h>

#include "base/api.h"
#include "base/log.h"
#include "volume/media.h"

#ifdef __cplusplus
extern "C" {
#endif

enum {                       /* flags of image_add_file */
       INSERT_OVERWRITE = 1, /* a file of that name gives way */
       INSERT_CONVERT = 2,   /* with one of the next two: the source is text */
       INSERT_FORCE = 4,     /* always */
       INSERT_TXT = 8        /* when its name ends in ".txt" or ".TXT", which is left out */
};

/* Makes an entry and finds room for it. The tables in memory change; the caller writes them.
 *   new_file    name (in the host's character set), type text and size (bytes) are the caller's; location is filled
 *   initialize  not 0: every record is filled with `pattern`, a big-endian word
 * Returns the first record, or -1. Errors set: 105, 200 a type that the directory doesn't show, 203, 210 the name
 * exists, 211 no room, 212 the name can't be, 216 the directory is full, those of a failed write, after which the entry
 * stays in the list. */
TARVO_API int32_t image_create_file(MediaDescriptor *md, FileInfo *new_file, int32_t initialize, uint16_t pattern);

/* Copies a file of the host to the medium: as it is, without the header that md->use_file_headers says it has, or
 * turned from text into the content of its type. The tables in memory change; the caller writes them.
 *   new_file       zeroed but for what is known: type, type text, system text; receives the entry
 *   from_filename  host path; the name on the volume is made from its last component
 *   flags          INSERT_...
 *   progress       may be null; called after each record as in image_extract_file
 * An old file of that name is taken out of the list first, whatever becomes of the new one.
 * Returns the first record, or -1. Errors set: 103, 208 the source is the image itself, 300, 301, 302, 306, and those
 * of image_create_file; after a failed transfer the entry stays in the list. */
TARVO_API int32_t image_add_file(MediaDescriptor *md, FileInfo *new_file, const char *from_filename, uint16_t flags,
                                 ProgressCallback progress);

#ifdef __cplusplus
}
#endif

#endif
