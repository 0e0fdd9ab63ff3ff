/* Walks the file list of an open medium: finds entries, changes directory, tests names against patterns. */
#ifndef TARVO_VOLUME_NAVIGATE_H
#define TARVO_VOLUME_NAVIGATE_H

#include <stdint.h>

#include "base/api.h"
#include "volume/media.h"

#ifdef __cplusplus
extern "C" {
#endif

extern TARVO_API int32_t wildcards; /* 0: "*" in a pattern has no meaning */

/* One separator for each directory above the entry, or one when there is none; no names. ret_path has
 * MAX_DIRECTORY_LEVEL + 1 bytes; separator null means "/". Errors set: 103. */
TARVO_API void image_get_path(const FileInfo *info, char *ret_path, const char *separator);

/* Follows a path from a list.
 *   directory  list to start in, null means md->root
 *   separator  its first character divides components; null means "/"
 *   ret_info   receives the first entry of the directory reached (null for an empty one)
 * Returns 0; -1 with error 218 and the rest of the path, or without an error for an absolute path that starts
 * elsewhere than at the root. */
TARVO_API int32_t image_change_directory(MediaDescriptor *md, FileInfo *directory, const char *path,
                                         const char *separator, FileInfo **ret_info);

/* The entry of a list with that name and, unless null, that type text. Purged entries count with md->show_purged only.
 * recursive descends into directories instead of comparing them. Null when there is none. */
TARVO_API FileInfo *image_find_in_dir(MediaDescriptor *md, FileInfo *directory, const char *filename, const char *type,
                                      int32_t recursive);

/* The same by name alone; error 103 for a null md or filename. */
TARVO_API FileInfo *image_find_file(MediaDescriptor *md, FileInfo *directory, const char *filename, int32_t recursive);

/* The same by a visible name, taken apart into name and type. translate: filename is in the host's character set and
 * may have a path. */
TARVO_API FileInfo *image_find_typed_file(MediaDescriptor *md, FileInfo *directory, const char *filename,
                                          int32_t translate, int32_t recursive);

/* Tests a name against patterns, an array ended by a null pointer; none at all matches.
 * Returns 0 none; 1 the name, 4 name and extension; by wildcard 3 the name, 5 name and extension. */
TARVO_API int32_t match_filespec(const char *const *filespec, const char *filename, const char *extension);

/* How many entries of the top-level list match, purged ones included. */
TARVO_API uint32_t match_count(const MediaDescriptor *md, const char *const *filespec);

#ifdef __cplusplus
}
#endif

#endif
