/* The configuration file tarvo.ini. */
#ifndef TARVO_CONFIG_CONFIG_FILE_H
#define TARVO_CONFIG_CONFIG_FILE_H

#include <stdint.h>

#include "base/api.h"
#include "base/file.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Reads an open configuration file; each pointer receives a value where the
 * file has one. system  text of the system for new files, 16 bytes Returns -1
 * with error 109: the file isn't understood yet. */
TARVO_API int32_t read_config_file(FileHandle file, int32_t *ret_loglevel, int32_t *board, uint32_t *port,
                                   int32_t *nosleep, int32_t *fastschedule, char *system, int32_t *filesystem,
                                   int32_t *use_file_headers, int32_t *use_type_names, int32_t *use_typed_extensions,
                                   int32_t *use_file_conversion);

#ifdef __cplusplus
}
#endif

#endif
