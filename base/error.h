/* One process-wide error slot: the number and the detail text of the last failure. */
#ifndef TARVO_BASE_ERROR_H
#define TARVO_BASE_ERROR_H

#include <stdint.h>

#include "base/api.h"

#ifdef __cplusplus
extern "C" {
#endif

enum {
    ERROR_DETAIL_SIZE = 1024, /* bytes of global_error_info, with the NUL */
    ERROR_TEXT_SIZE = 1280    /* bytes that get_error may write, with the NUL */
};

extern TARVO_API uint32_t global_error;                     /* number of the last error, 0: none was ever set */
extern TARVO_API char global_error_info[ERROR_DETAIL_SIZE]; /* detail of the last error, may be empty */
extern TARVO_API const char *const fdc_error_strings[29];   /* the texts of errors 400 to 428 */

/* Stores a number and a detail text; both stay until the next call, a success in between changes nothing.
 *   number  100 to 699, see the tables in error.cpp
 *   format  printf form for the detail, "" for none; null is taken as ""; the text is cut at 1,023 bytes
 * Returns number. */
TARVO_API uint32_t set_error(uint32_t number, const char *format, ...) __attribute__((format(printf, 2, 3)));

/* Composes the message of the last error: text, then the detail in brackets (error 101: the detail alone).
 *   buffer  receives at most ERROR_TEXT_SIZE bytes with the NUL
 * Errors set: 103 for a null buffer. */
TARVO_API void get_error(char *buffer);

/* The operating system's words for its last error, without a closing ".\r\n".
 *   buffer, size  receives at most size bytes, always terminated; nothing happens for null or size 0 */
TARVO_API void get_win_error(char *buffer, uint32_t size);

/* The same in a static buffer of 256 bytes, which the next call overwrites; "no error" when there was none. */
TARVO_API const char *last_error(void);

/* Writes the operating system's words for its last error to the log, at level 0. */
TARVO_API void PrintError(void);

/* Writes the text of get_error to the log at level 0 and, unless the log goes to standard output, also to
 * standard error as "[program] Error: text". */
TARVO_API void print_error(const char *program);

#ifdef __cplusplus
}
#endif

#endif
