/* The short names of HP volumes, and the visible names that a host sees. */
#ifndef TARVO_VOLUME_NAMES_H
#define TARVO_VOLUME_NAMES_H

#include <stdint.h>

#include "base/api.h"
#include "volume/media.h"

#ifdef __cplusplus
extern "C" {
#endif

enum {
    VISIBLE_NAME_SIZE = 64, /* bytes that compose_filename and decode_filename may write, with the NUL */
    NAME_MESSAGE_SIZE = 64  /* bytes that check_valid_filename may write */
};

extern TARVO_API int32_t pascal_mode; /* 1: ten-character LIF names may end in a type marker */

/* Tests a name for a format; extension may be null.
 *   ret_message  NAME_MESSAGE_SIZE bytes: why not, or a warning, or empty
 * Returns 0 usable, -1 refused. Errors set: 103 for a null filename, 203 for another format. */
TARVO_API int32_t check_valid_filename(uint32_t format, const char *filename, const char *extension, char *ret_message);

/* The visible name: name, ".&n" for records of n bytes other than 256, "." and the type; the latter two only with
 * use_typed_extensions and not for directories. ret_file has VISIBLE_NAME_SIZE bytes. */
TARVO_API void compose_filename(const MediaDescriptor *md, const FileInfo *info, char *ret_file);

/* Puts a name into info->name, cut to what the field holds, with the marker that its type asks for. */
TARVO_API void encode_filename(FileInfo *info, uint32_t format, const char *filename);

/* The name without its marker; VISIBLE_NAME_SIZE bytes. Errors set: 103 for null pointers. */
TARVO_API void decode_filename(const FileInfo *info, uint32_t format, char *ret_filename);

/* Fills name, record_len, type and type text of info from a host name; nothing for a null path.
 *   system_string    text of the system for the type, may be null or empty
 *   strip_directory  not 0: only what follows the last \ : or / */
TARVO_API void process_filepath(const MediaDescriptor *md, FileInfo *info, const char *path, const char *system_string,
                                int32_t strip_directory);

#ifdef __cplusplus
}
#endif

#endif
