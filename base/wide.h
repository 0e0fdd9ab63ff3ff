/* File calls by wide names on systems that have them, and by ANSI names on others: thin forwards. A function
 * with a result of the system's own gives non-zero for success; where a handle is the result, the system's
 * invalid handle (all bits set) is the failure. Names of 260 characters and more are lengthened by
 * MakeExtraLongNameW; a name that doesn't fit 1,029 characters fails. */
#ifndef TARVO_BASE_WIDE_H
#define TARVO_BASE_WIDE_H

#include <stddef.h>
#include <stdint.h>
#include <wchar.h>

#include "base/api.h"
#include "platform/find_data.h"

#ifdef __cplusplus
extern "C" {
#endif

extern TARVO_API int32_t usysychecked; /* 0 not asked yet, 1 wide calls, 2 ANSI calls */

/* 1 where the system has wide calls; asks once and keeps the answer in usysychecked. */
TARVO_API int32_t usys(void);

/* Convert in the system's ANSI code page and store a terminator at the latest at index mb_len or wstr_len, so the
 * target has one element more. Return the target; null for a missing source or target. */
TARVO_API char *walcopy(char *mb_str, const wchar_t *wstr, int32_t mb_len);
TARVO_API wchar_t *awlcopy(wchar_t *wstr, const char *mb_str, int32_t wstr_len);

/* Bounded copy and append: at most size - 1 characters and a terminator; size 0 stores nothing. Return the length
 * that the whole text would have had. */
TARVO_API size_t wcslcpy(wchar_t *dst, const wchar_t *src, size_t size);
TARVO_API size_t wcslcat(wchar_t *dst, const wchar_t *src, size_t size);

/* Copies a name shorter than 260 characters; puts \\?\ before a longer one, or \\?\UNC in place of the first of its
 * two leading backslashes. out has max_len characters; what doesn't fit is cut, always terminated. Returns 1 if the
 * result fits and max_len has room for the name's length + 4, else 0. */
TARVO_API int32_t MakeExtraLongNameW(wchar_t *out, const wchar_t *name, int32_t max_len);

/* Convert a find record between the two layouts; texts are cut at what their fields hold. */
TARVO_API void copyfinddatawa(FindDataA *target, const FindDataW *source);
TARVO_API void copyfinddataaw(FindDataW *target, const FindDataA *source);

TARVO_API int32_t CopyFileT(const wchar_t *from, const wchar_t *to, int32_t fail_if_exists);
TARVO_API int32_t CreateDirectoryT(const wchar_t *name, void *security);
TARVO_API int32_t RemoveDirectoryT(const wchar_t *name);
TARVO_API int32_t DeleteFileT(const wchar_t *name);
TARVO_API int32_t MoveFileT(const wchar_t *from, const wchar_t *to);
TARVO_API int32_t SetFileAttributesT(const wchar_t *name, uint32_t attributes);
/* access, share, disposition and flags as the system's file creation call has them: access $80000000 read, $40000000
 * write; disposition 1 create new, 2 create always, 3 open existing, 4 open always. The caller closes the handle. */
TARVO_API void *CreateFileT(const wchar_t *name, uint32_t access, uint32_t share, void *security, uint32_t disposition,
                            uint32_t flags, void *file_template);
/* Icons of a file, as many as were put into the two arrays; 0 on systems without icons in files. */
TARVO_API uint32_t ExtractIconExT(const wchar_t *file, int32_t index, void **ret_large, void **ret_small,
                                  uint32_t count);
TARVO_API void *FindFirstFileT(const wchar_t *pattern, FindDataW *ret_data);
TARVO_API int32_t FindNextFileT(void *handle, FindDataW *ret_data);

#ifdef __cplusplus
}
#endif

#endif
