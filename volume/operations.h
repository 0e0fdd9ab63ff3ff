/* Operations on files of an open medium. The tables in memory change; the
 * caller writes them to the medium. */
#ifndef TARVO_VOLUME_OPERATIONS_H
#define TARVO_VOLUME_OPERATIONS_H

#include <stdint.h>

#include "base/api.h"
#include "base/log.h"
#include "volume/media.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Takes an entry out of its list and releases it, or only marks it as purged;
 * its records become free on volumes with an allocation table. Returns 0. */
TARVO_API int32_t image_delete_file(MediaDescriptor *md, FileInfo *info, int32_t mark_only);

/* Copies a file to another medium, or under another name on its own; its type becomes what it is called there. The
 * lists in memory change; the caller writes the tables of dest_md.
 *   to_file    host path from which the new name is made; null keeps the name
 *   overwrite  not 0: a file of that name gives way, whatever becomes of the new one
 * Returns 0, or -1. Errors set: 103 null pointers, 208 the file itself, 210 the name exists, those of image_create_file
 * and of image_blockcopy; after a failed copy of records the new entry stays in the list. */
TARVO_API int32_t image_copy_file(MediaDescriptor *md, FileInfo *from_file, MediaDescriptor *dest_md,
                                  const char *to_file, int32_t overwrite);

enum { /* commands of image_dir_ops */
       COMMAND_LIST = 5,
       COMMAND_EXTRACT = 6,
       COMMAND_CREATE = 7, /* an empty file from info */
       COMMAND_ADD = 8,    /* host files named by filespec, info is their template */
       COMMAND_COPY = 9,
       COMMAND_DELETE = 10,
       COMMAND_MOVE = 11, /* or rename */
       COMMAND_ATTRIBUTES = 12
};

enum {                           /* what COMMAND_ATTRIBUTES takes from info */
       CHANGE_TYPE = 1,          /* type text and attributes */
       CHANGE_SYSTEM = 2,        /* system text and lif_impl */
       CHANGE_RECORD_LENGTH = 4, /* record_len */
       CHANGE_DATE = 8
};

/* Carries a command out over all files that match, and writes the tables of what has changed.
 *   filespec         patterns, or names of host files, ended by a null pointer; null matches everything
 *   dest_path        host folder or target of another medium; may be null
 *   dest_file        new name; may be null
 *   attributes       CHANGE_... of COMMAND_ATTRIBUTES
 *   confirm          asks the user; null: existing files are overwritten
 *   start_directory  directory to begin in, null: the top level; level is that of its entries
 *   recursive        not 0: goes into directories
 * Prints what is done with loglevel above 0. Returns 0, or -1 with the error set: 205, 206, 207, 208, 209, and those of
 * what it calls. */
TARVO_API int32_t image_dir_ops(MediaDescriptor *md, const char *const *filespec, const char *dest_path,
                                const char *dest_file, FileInfo *info, uint8_t attributes, int32_t command,
                                ConfirmCallback confirm, FileInfo *start_directory, int32_t level, int32_t recursive);

#ifdef __cplusplus
}
#endif

#endif
