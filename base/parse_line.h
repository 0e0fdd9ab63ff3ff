/* A line of a configuration file, taken apart into words, quoted texts and signs of assignment. */
#ifndef TARVO_BASE_PARSE_LINE_H
#define TARVO_BASE_PARSE_LINE_H

#include <stdint.h>

#include "base/api.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Takes a line apart. It ends at a carriage return, a line feed or a comment sign; one of the first two must be there,
 * since a NUL is a blank. Text in double quotes is one token and holds what it likes but a line end; in it a backslash
 * goes before a quote or another backslash. Signs of assignment are tokens; separators aren't, but two of them with
 * nothing between them give an empty token. A character that stands in several sets is the first of blank, quote,
 * assignment, line end, comment, separator that it can be.
 *   line_number      for the words of an error
 *   buffer           receives the tokens, each with its NUL: at most buffer_size bytes; the caller's
 *   tokens           receives pointers into buffer: at most max_tokens
 * Returns the number of tokens, 0 for an empty line; for a fault the negative offset in the line at which it shows (at
 * least 1), with error 108. Errors set besides: 103 for a null pointer (-1). */
TARVO_API int32_t parse_line(int32_t line_number, const char *line, const char *assign_chars,
                             const char *separator_chars, const char *blank_chars, const char *comment_chars,
                             char *buffer, uint32_t buffer_size, uint32_t max_tokens, char **tokens);

#ifdef __cplusplus
}
#endif

#endif
