/* Type words of files and their texts. */
#ifndef TARVO_VOLUME_FILETYPES_H
#define TARVO_VOLUME_FILETYPES_H

#include <stdint.h>

#include "base/api.h"
#include "volume/media.h"

#ifdef __cplusplus
extern "C" {
#endif

enum { TYPE_TEXT_SIZE = 16 }; /* bytes that get_filetype may write, with the NUL */

/* A row of a table that a null name ends. */
typedef struct TypeName {
    uint16_t word;
    const char *name;
} TypeName;

/* A row of a table that an empty name ends. */
typedef struct LifType {
    uint32_t type;
    char name[16];
    char system[16]; /* may be empty; information only */
} LifType;

extern TARVO_API const TypeName Sys45_system[];    /* system word >> 8 */
extern TARVO_API const TypeName Sys45_filetype[];  /* type & $1E00, or $1F80 when $1C00 is all set */
extern TARVO_API const TypeName Sys250_filetype[]; /* likewise for system $60 */
extern TARVO_API const TypeName LIF_system[];      /* high byte of the type */
extern TARVO_API const LifType default_liftype_table[];
extern TARVO_API const LifType *liftype_table; /* the table in force; the first match wins */

/* The text of a type word.
 *   ret_string  TYPE_TEXT_SIZE bytes
 *   name        the file's name, for types that depend on its marker; may be null */
TARVO_API void get_filetype(const MediaDescriptor *md, char *ret_string, uint16_t type, const char *name);

/* The type word of a text; system_string may be null or empty.
 * Returns 0, or -1 with error 103, 200 (type) or 201 (system). */
TARVO_API int32_t set_filetype(uint32_t format, const char *type_string, const char *system_string, uint16_t *ret_type);

#ifdef __cplusplus
}
#endif

#endif
