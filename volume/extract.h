/* Files of an open medium into files of the host. */
#ifndef TARVO_VOLUME_EXTRACT_H
#define TARVO_VOLUME_EXTRACT_H

#include <stdint.h>

#include "base/api.h"
#include "base/log.h"
#include "volume/media.h"

#ifdef __cplusplus
extern "C" {
#endif

enum {                        /* flags of image_extract_file */
       EXTRACT_OVERWRITE = 1, /* an existing file of the host gives way */
       EXTRACT_CONVERT = 2,   /* content that is known becomes text */
       EXTRACT_FORCE = 4,     /* with EXTRACT_CONVERT: unknown content becomes an empty text */
       EXTRACT_TXT = 8        /* the name of a converted file gets ".txt" */
};

/* Copies a file to the host: as it is, behind the header that md->use_file_headers asks for, or as text.
 *   destination   folder of the host, made when it isn't there; may be null
 *   to_file       name on the host; null: made from the entry's name. A relative one without a destination is in the
 *                 present folder
 *   ret_filename  VISIBLE_NAME_SIZE bytes, may be null: the name made from the entry's, in the HP character set; only
 *                 with to_file null
 *   flags         EXTRACT_...
 *   progress      may be null; called after each record with the bytes' position behind it, its index and the
 *                 percentage; not 0 ends the copy after this record, with a positive result
 * Lines of converted text end in CR LF. A directory becomes a folder of the host. The host file gets the entry's date
 * on LIF and SDF. Returns the bytes of the last record read, 0 for an empty file, or -1. Errors set: 103 null pointers,
 * 105, 208 the target is the image itself, 210 the target exists, 214 a number that is none in typed DATA, 300, 302,
 * 303, 312; a part that was written stays. */
TARVO_API int32_t image_extract_file(MediaDescriptor *md, const FileInfo *info, const char *destination,
                                     const char *to_file, char *ret_filename, uint16_t flags,
                                     ProgressCallback progress);

#ifdef __cplusplus
}
#endif

#endif
