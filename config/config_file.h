/* The configuration file tarvo.ini: settings, and rows for the tables of drives, media and LIF types. */
#ifndef TARVO_CONFIG_CONFIG_FILE_H
#define TARVO_CONFIG_CONFIG_FILE_H

#include <stdint.h>

#include "base/api.h"
#include "base/file.h"

#ifdef __cplusplus
extern "C" {
#endif

enum {
    CONFIG_LINE_SIZE = 1024, /* bytes of a line with its line end and a NUL; what is longer counts as several lines */
    CONFIG_SYSTEM_SIZE = 16  /* bytes of the text of a system, with the NUL */
};

/* Reads an open configuration file from its present position on. The custom tables become copies of the built-in ones
 * with the file's rows; the tables in force stay as they are. Each pointer receives a value where the file has one.
 *   board, port, nosleep  for board_select, port_address and gpib_limit_load
 *   fastschedule          0 for TRUE, 1 for FALSE
 *   system                of new files, CONFIG_SYSTEM_SIZE bytes; empty when the file has none
 *   filesystem            of new volumes, FORMAT_...
 *   use_file_headers      0 none, 1 HPBASIC, 2 HPCALC
 * The first bad line ends the reading; what was stored until then stays. A line whose quotes or length are wrong is
 * printed, with a mark above it.
 * Returns 0, or -1 with error 103 for a missing pointer, 105, 107 or 108 for a line, 302 when reading fails. */
TARVO_API int32_t read_config_file(FileHandle file, int32_t *ret_loglevel, int32_t *board, uint32_t *port,
                                   int32_t *nosleep, int32_t *fastschedule, char *system, int32_t *filesystem,
                                   int32_t *use_file_headers, int32_t *use_type_names, int32_t *use_typed_extensions,
                                   int32_t *use_file_conversion);

#ifdef __cplusplus
}
#endif

#endif
