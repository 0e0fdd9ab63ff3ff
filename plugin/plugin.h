/* The thirteen functions that a two-pane file manager calls by name. Paths come
 * as the host writes them: from "\" on Windows, from "/" elsewhere; names are
 * bytes of the volume's character set. One medium is open at a time. The last
 * error for the host (995 operation aborted, 18 no more files) is the system's:
 * errno on POSIX. */
#ifndef TARVO_PLUGIN_PLUGIN_H
#define TARVO_PLUGIN_PLUGIN_H

#include <stdint.h>

#include "base/api.h"
#include "platform/find_data.h"

#ifdef __cplusplus
extern "C" {
#endif

/* (plug-in's number, source, target, percent); not 0 ends the operation. */
typedef int32_t (*HostProgress)(int32_t number, char *source, char *target, int32_t percent);
/* Taken and never called. */
typedef void (*HostLog)(int32_t number, int32_t kind, char *text);
/* (plug-in's number, kind, title, text, answer, size of answer); kind 8 a
 * message, 0 a line of text. Not 0 is yes. */
typedef int32_t (*HostRequest)(int32_t number, int32_t kind, char *title, char *text, char *answer, int32_t size);

typedef struct HostTime { /* units of 100 ns since 1601, universal time */
    uint32_t low;
    uint32_t high;
} HostTime;

enum { /* CopyFlags */
       COPY_OVERWRITE = 1,
       COPY_RESUME = 2,
       COPY_MOVE = 4
};

enum { /* results of FsGetFile, FsPutFile and FsRenMovFile */
       FILE_OK = 0,
       FILE_EXISTS = 1,
       FILE_NOT_FOUND = 2,
       FILE_READ_FAILED = 3,
       FILE_WRITE_FAILED = 4,
       FILE_NOT_SUPPORTED = 6
};

/* "TARVO" in at most maxlen bytes with the NUL; a null buffer or a maxlen below
 * 1 is ignored. */
TARVO_API void FsGetDefRootName(char *name, int32_t maxlen);

/* Keeps the four arguments; no target is chosen then. Returns 0. */
TARVO_API int32_t FsInit(int32_t number, HostProgress progress, HostLog log, HostRequest request);

/* Begins a listing; opens the medium, and asks for a target, when there is
 * none. Returns a handle, all bits set on failure (last error 995); an empty or
 * missing directory is a handle with last error 18. The record has 320 bytes.
 */
TARVO_API void *FsFindFirst(const char *path, FindDataA *find_data);

/* The next entry: 1, or 0 with a cleared record when there is none or the
 * handle is no longer one (last error 995). */
TARVO_API int32_t FsFindNext(void *handle, FindDataA *find_data);

/* Ends a listing. Returns 0; last error 995 for a handle that is none. */
TARVO_API int32_t FsFindClose(void *handle);

/* Copies a file out, with COPY_MOVE deletes it afterwards. Returns FILE_...;
 * the last argument isn't used. */
TARVO_API int32_t FsGetFile(const char *remote_name, char *local_name, int32_t copy_flags, void *remote_info);

/* Copies a file in, with COPY_MOVE deletes the local one afterwards. Returns
 * FILE_... */
TARVO_API int32_t FsPutFile(char *local_name, const char *remote_name, int32_t copy_flags);

/* Renames (move not 0) or copies a file on the medium. Returns FILE_... */
TARVO_API int32_t FsRenMovFile(const char *old_name, const char *new_name, int32_t move, int32_t overwrite,
                               void *remote_info);

/* 1 done, 0 failed, 6 refused on this file system; likewise the next two. */
TARVO_API int32_t FsDeleteFile(const char *remote_name);

/* new_attributes: bit 0 read-only, 1 hidden, 2 system. */
TARVO_API int32_t FsSetAttr(const char *remote_name, int32_t new_attributes);

/* Sets the date to last_write, as it stands; the other two are ignored. */
TARVO_API int32_t FsSetTime(const char *remote_name, const HostTime *creation, const HostTime *last_access,
                            const HostTime *last_write);

/* start_end 0 before and 1 after an operation; operation 1 is a listing, 11 is
 * ignored. Opens and closes the medium. */
TARVO_API void FsStatusInfo(const char *remote_directory, int32_t start_end, int32_t operation);

/* "properties" on the root asks for a target. Returns 0, or -1 for every other
 * verb, which the host then does itself. */
TARVO_API int32_t FsExecuteFile(void *main_window, const char *remote_name, const char *verb);

#ifdef __cplusplus
}
#endif

#endif
