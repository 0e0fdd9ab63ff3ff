/* The log with its levels, progress on a console, and the console forms of the callbacks through which the engine
 * asks and reports. */
#ifndef TARVO_BASE_LOG_H
#define TARVO_BASE_LOG_H

#include <stdint.h>

#include "base/api.h"
#include "base/file.h"

#ifdef __cplusplus
extern "C" {
#endif

/* (context, current record, percent); 0 goes on, anything else stops the operation. */
typedef int32_t (*ProgressCallback)(void *context, uint32_t record, uint32_t percent);

/* kind 1 a notice, 2 yes or no, 3 yes, no or cancel, 4 yes, no, all or cancel.
 * Result 0 acknowledged, 1 yes, 2 no, 3 cancel, 4 all, -1 failure. */
typedef int32_t (*ConfirmCallback)(int32_t kind, const char *format, ...);

/* The low 3 bits are the threshold: 0 errors, 1 warnings, 2 information, 3 calls, 4 bus bytes, 5 records. From 4 on
 * lines begin with the time; above 7 they go to the system's debugger. */
extern TARVO_API int32_t loglevel;
extern TARVO_API FileHandle logfile; /* where lines go; 0: nowhere, the writes fail */

/* Adds text to the log line; a line is written when it ends in a line feed, which gets a carriage return before it.
 *   level  0 to 6 */
TARVO_API void log_file(int32_t level, const char *format, ...) __attribute__((format(printf, 2, 3)));

/* Prints the next frame of a turning mark. */
TARVO_API void console_progress(void);

/* Prints current * 100 / total and a % sign, if that changed; nothing for total 0. */
TARVO_API void percent_progress(uint32_t current, uint32_t total);

/* A ProgressCallback: prints "Record n (p%)" on one line of the console. Returns 0. */
TARVO_API int32_t standard_progress_callback(void *ignored, uint32_t record, uint32_t percent);

/* A ConfirmCallback: asks on the console until the answer is good; the end of input answers no (kind 2) or cancel.
 * Returns -1 for a null format, or with error 103 for another kind. */
TARVO_API int32_t standard_confirm_callback(int32_t kind, const char *format, ...)
    __attribute__((format(printf, 2, 3)));

/* Set the console's colours for a test's lines, and put them back. */
TARVO_API void init_test_message(void);
TARVO_API void exit_test_message(void);

/* "text:" */
TARVO_API void show_test_message(const char *format, ...) __attribute__((format(printf, 1, 2)));

/* At a column of the present line: the text in a field of 20; with a null format only the cursor moves. */
TARVO_API void show_test_progress(uint32_t column, const char *format, ...) __attribute__((format(printf, 2, 3)));

/* At a column of the present line: " passed " or " failed " in colour, then the text in a field of 20 and a line end.
 */
TARVO_API void show_result(uint32_t column, int32_t passed, const char *format, ...)
    __attribute__((format(printf, 3, 4)));

/* The licence in a few lines, and in full, page by page, from the file COPYING beside the program or in the present
 * folder. */
TARVO_API void show_short_license(void);
TARVO_API void show_full_license(void);

#ifdef __cplusplus
}
#endif

#endif
