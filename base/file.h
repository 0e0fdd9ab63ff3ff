/* Files of the host, through raw operating-system handles. A position, size or record number is an unsigned
 * 32-bit number; a record has 256 bytes where nothing else is said. Every function that takes a pointer sets
 * error 103 "NULL pointer" when it is missing. */
#ifndef TARVO_BASE_FILE_H
#define TARVO_BASE_FILE_H

#include <stdint.h>

#include "base/api.h"
#include "base/time_record.h"

#ifdef __cplusplus
extern "C" {
#endif

/* An operating-system handle; on POSIX the descriptor plus one. 0 is no file, all bits set is the void handle:
 * operations on it do nothing and report what is said at each. */
typedef uint64_t FileHandle;

enum {
    RECORD_SIZE = 256,   /* bytes */
    FILE_PATH_SIZE = 260 /* bytes of a path buffer, with the NUL */
};

extern TARVO_API FileHandle FileVoid; /* the void handle */
extern TARVO_API FileHandle Stdin;    /* the standard handles; filled by file_stdin and its like, and at attach */
extern TARVO_API FileHandle Stdout;
extern TARVO_API FileHandle Stderr;

/* Each fills the value above that has its name, and returns it. */
TARVO_API FileHandle file_void(void);
TARVO_API FileHandle file_stdin(void);
TARVO_API FileHandle file_stdout(void);
TARVO_API FileHandle file_stderr(void);

/* 1 for every handle but the void one. */
TARVO_API int32_t file_is_valid(FileHandle file);

/* Opens a file, shared for reading and writing.
 *   ret_file      receives the handle, which the caller closes; the void handle on failure
 *   flags         "r" open existing for reading; "w" create anew for writing; neither: open or create; "a" go to
 *                 the end; "+" read and write; later ones correct earlier ones, other characters are ignored
 *   writethrough  not 0: with "w", the system writes through its caches
 * Returns 1, or 0 with error 300 and the system's words as detail. */
TARVO_API int32_t file_open(FileHandle *ret_file, const char *filename, const char *flags, int32_t writethrough);

/* Makes a directory. Returns 0 with error 312 when the system made it, and 1 when it did not. */
TARVO_API int32_t file_create_directory(const char *filename);

/* Makes and opens a temporary file.
 *   ret_filepath  receives its path, FILE_PATH_SIZE bytes; the caller deletes the file
 * Returns as file_open, -1 if a pointer is missing or no name can be had (error 306). */
TARVO_API int32_t file_open_temp(FileHandle *ret_file, char *ret_filepath, const char *flags);

/* Closes a handle; the void handle and the three standard handles stay. */
TARVO_API void file_close(FileHandle file);

/* Goes to a position in bytes, all ones for the end of the file. Returns 1, or 0 (error 301; none for the void handle).
 */
TARVO_API int32_t file_seek(FileHandle file, uint32_t position);

/* Makes the file `size` bytes long and goes to its start. Returns 1; 0 with error 301 or 309; -1 for the void handle.
 */
TARVO_API int32_t file_prepare(FileHandle file, uint32_t size);

/* Reads at the present position. Returns the bytes read, fewer only at the end of the file; 0 for the void handle
 * or a missing buffer; -1 with error 302. */
TARVO_API int32_t file_read(FileHandle file, void *buffer, uint32_t num_bytes);

/* Writes at the present position. Returns the bytes written, fewer when the device is full; 0 for the void handle;
 * -1 with error 303, or 103 for a missing buffer. */
TARVO_API int32_t file_write(FileHandle file, const void *buffer, uint32_t num_bytes);

/* Removes num_bytes at the present position, closing the gap, and hands them over in buffer; the position stays.
 * Returns the bytes handed over, 0 for the void handle, -1 with error 301, 302 or 303. */
TARVO_API int32_t file_cut(FileHandle file, void *buffer, uint32_t num_bytes);

/* Inserts num_bytes from buffer at the present position, moving what follows; the position ends behind them.
 * Returns the bytes written, 0 for the void handle, -1 with error 301, 302 or 303. */
TARVO_API int32_t file_paste(FileHandle file, const void *buffer, uint32_t num_bytes);

/* The present position in bytes, its low 32 bits; 0 for the void handle. Returns 0, or -1 with error 301. */
TARVO_API int32_t file_getposition(FileHandle file, uint32_t *ret_position);

/* Has the system write its buffers for this file. Returns 0, also for the void handle, or -1 with error 308. */
TARVO_API int32_t file_sync(FileHandle file);

/* Reads one record at record * record_size (32-bit product); record_size below 1 means 256.
 * Returns the bytes read, fewer behind the end of the file, 0 for the void handle, -1 with error 301 or 302. */
TARVO_API int32_t file_readrecord(FileHandle file, uint32_t record, int32_t record_size, void *buffer);

/* Writes one record likewise. Returns 0, also for the void handle, or -1 with error 301, or 303 when fewer bytes were
 * written. */
TARVO_API int32_t file_writerecord(FileHandle file, uint32_t record, int32_t record_size, const void *buffer);

/* Writes one character. Returns the character for the void handle, 1 when it was written, 303 when it was not. */
TARVO_API int32_t file_writechar(FileHandle file, int32_t character);

/* Reads a line of at most size - 1 bytes, byte by byte; the line feed stays in the buffer, which is always
 * terminated (size 0: nothing is stored). Returns the length stored, 0 at the end of the file. */
TARVO_API int32_t file_readline(FileHandle file, char *buffer, uint32_t size);

/* Formats and writes a text without its NUL. Errors set: 303. */
TARVO_API void file_printf(FileHandle file, const char *format, ...) __attribute__((format(printf, 2, 3)));

/* The size in bytes, its low 32 bits; all ones for the void handle or on failure. */
TARVO_API uint32_t file_getsize(FileHandle file);

/* Deletes a file. Returns 0, or -1 with error 304 and the system's words. */
TARVO_API int32_t file_delete(const char *filename);

/* Renames a file, never over an existing one. Returns 0, or -1 with error 310 and the system's words. */
TARVO_API int32_t file_move(const char *from, const char *to);

/* Makes an empty temporary file; ret_filepath receives its path, FILE_PATH_SIZE bytes.
 * Returns 0, or -1 with error 306 and the system's words. */
TARVO_API int32_t file_get_temp(char *ret_filepath);

/* The folder of the running program with its closing separator, FILE_PATH_SIZE bytes; argv isn't used.
 * Returns 0, or -1 with error 300 and the system's words. */
TARVO_API int32_t file_get_execution_path(const char *const *argv, char *ret_filepath);

/* Sets all three times of a file from a local time. Returns 0, or -1 with error 311 and the system's words. */
TARVO_API int32_t file_set_time(const char *filename, const TimeRecord *time);

/* The last write time of an open file as a local time. Returns 0, or -1 with error 311 and the system's words. */
TARVO_API int32_t file_get_time(FileHandle file, TimeRecord *ret_time);

#ifdef __cplusplus
}
#endif

#endif
