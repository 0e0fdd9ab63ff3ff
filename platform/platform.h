// The operating system, as the rest of Tarvo sees it. posix/ and win32/ implement these functions; nothing
// else includes a system header. All results are plain: true or a count for success, false or -1 for a
// failure whose reason platform_last_error() tells.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/find_data.h"
#include "platform/system_time.h"

// ---- last error ----------------------------------------------------------------------------------------

uint32_t platform_last_error(); // the system's last error code of this thread, 0 for none
void platform_set_last_error(uint32_t code);
// The system's words for a code, without a line end and without the full stop before it; always terminated,
// cut to `size` bytes with the NUL. Returns the length.
size_t platform_error_text(uint32_t code, char *text, size_t size);

// ---- files ---------------------------------------------------------------------------------------------

using PlatformFile = uint64_t; // POSIX: the descriptor plus one; Windows: the handle. 0 is no file
constexpr PlatformFile platform_void_file = ~uint64_t{0};

enum class OpenMode : uint8_t { existing, create_always, open_or_create, create_new };
enum class SeekFrom : uint8_t { start, current, end };
enum class StandardFile : uint8_t { input, output, error };

struct FileIdentity { // the same for two handles means the same file, whatever it is called
    uint64_t volume = 0;
    uint64_t number = 0;
    bool operator==(const FileIdentity &) const = default;
};

struct FileFacts {
    FileIdentity identity;
    uint64_t bytes = 0;  // of a plain file
    bool plain = false;  // it has a size and positions
    int64_t written = 0; // when, in units of 100 ns since 1601
};

// Opens for sharing with other readers and writers; the handle isn't inherited. A directory is refused.
bool platform_open(PlatformFile *ret_file, const char *path, bool reading, bool writing, OpenMode mode,
                   bool writethrough);
// For reading; with what is known of it as platform_facts tells, or nothing.
bool platform_open_with_facts(PlatformFile *ret_file, const char *path, FileFacts *ret_facts);
void platform_close(PlatformFile file);
int64_t platform_seek(PlatformFile file, int64_t offset, SeekFrom from);       // the new position in bytes, or -1
int64_t platform_read(PlatformFile file, void *buffer, uint32_t bytes);        // short only at the end of the file
int64_t platform_write(PlatformFile file, const void *buffer, uint32_t bytes); // short when the device is full
int64_t platform_write_at(PlatformFile file, const void *buffer, uint32_t bytes, uint64_t position);
bool platform_set_end(PlatformFile file); // at the present position
bool platform_sync(PlatformFile file);
bool platform_size(PlatformFile file, uint64_t *ret_bytes);
bool platform_facts(PlatformFile file, FileFacts *ret_facts);
PlatformFile platform_standard_file(StandardFile which);
bool platform_is_terminal(PlatformFile file);
bool platform_delete(const char *path);
bool platform_move(const char *from, const char *to); // never over an existing file
// Puts a file in the place of another one in one step: whoever opens the name meets one of them, whole. It gets the
// owner and the rights of the old one; a link at the name isn't followed.
bool platform_replace(const char *from, const char *to);
bool platform_real_path(const char *path, char *ret_path, size_t size); // of an existing file, through all links
bool platform_create_directory(const char *path);
bool platform_temporary_file(char *ret_path, size_t size); // makes a new empty file; prefix "TRV$$"
bool platform_program_path(char *ret_path, size_t size);   // the program's file, in full
bool platform_is_separator(char character);                // divides the components of a host path
bool platform_is_directory(const char *path);              // through links
bool platform_is_plain_file(const char *path);             // through no link at the name itself
bool platform_is_reserved_name(const char *name);          // means a device or another folder, or can't be a file's
// Opens an existing file for writing, shared with nobody where the system knows that.
bool platform_open_alone(PlatformFile *ret_file, const char *path);
bool platform_file_time(const SystemTime *local, int64_t *ret_time); // the system's own count; false for no date
bool platform_set_times(PlatformFile file, int64_t time);            // creation, access and write time
bool platform_get_file_time(PlatformFile file, SystemTime *ret_local, bool *ret_daylight);
bool platform_local_file_time(int64_t time, SystemTime *ret_local, bool *ret_daylight); // false for no date

// ---- wide and ANSI file calls --------------------------------------------------------------------------
// Names are what the system wants, already lengthened where they must be. Results are the system's own:
// non-zero for success. A failing open or find gives platform_no_handle.

void *platform_no_handle();
bool platform_has_wide_calls();
int32_t platform_wide_to_ansi(char *target, size_t size, const wchar_t *source); // bytes without NUL, cut at size - 1
int32_t platform_ansi_to_wide(wchar_t *target, size_t size, const char *source); // characters without NUL
int32_t platform_copy_file_w(const wchar_t *from, const wchar_t *to, int32_t fail_if_exists);
int32_t platform_copy_file_a(const char *from, const char *to, int32_t fail_if_exists);
int32_t platform_create_directory_w(const wchar_t *name);
int32_t platform_create_directory_a(const char *name);
int32_t platform_remove_directory_w(const wchar_t *name);
int32_t platform_remove_directory_a(const char *name);
int32_t platform_delete_file_w(const wchar_t *name);
int32_t platform_delete_file_a(const char *name);
int32_t platform_move_file_w(const wchar_t *from, const wchar_t *to);
int32_t platform_move_file_a(const char *from, const char *to);
int32_t platform_set_attributes_w(const wchar_t *name,
                                  uint32_t attributes); // 1 read-only, 2 hidden, 4 system, $20 archive
int32_t platform_set_attributes_a(const char *name, uint32_t attributes);
void *platform_create_file_w(const wchar_t *name, uint32_t access, uint32_t share, uint32_t disposition,
                             uint32_t flags);
void *platform_create_file_a(const char *name, uint32_t access, uint32_t share, uint32_t disposition, uint32_t flags);
uint32_t platform_extract_icon_w(const wchar_t *file, int32_t index, void **ret_large, void **ret_small,
                                 uint32_t count);
uint32_t platform_extract_icon_a(const char *file, int32_t index, void **ret_large, void **ret_small, uint32_t count);
void *platform_find_first_w(const wchar_t *pattern, FindDataW *ret_data);
void *platform_find_first_a(const char *pattern, FindDataA *ret_data);
int32_t platform_find_next_w(void *handle, FindDataW *ret_data);
int32_t platform_find_next_a(void *handle, FindDataA *ret_data);
void platform_find_close(void *handle);
void platform_close_handle(void *handle);

// ---- time ----------------------------------------------------------------------------------------------

bool platform_counter_frequency(int64_t *ret_frequency); // counts a second
bool platform_counter(int64_t *ret_count);
void platform_sleep(uint32_t milliseconds);
void platform_local_time(SystemTime *ret_time);
bool platform_timer_caps(uint32_t *ret_minimum, uint32_t *ret_maximum); // milliseconds
bool platform_timer_begin(uint32_t milliseconds);                       // a finer system timer, until _end
bool platform_timer_end(uint32_t milliseconds);

// ---- memory --------------------------------------------------------------------------------------------

void *platform_heap_create(size_t initial_bytes);       // null on failure
void *platform_heap_allocate(void *heap, size_t bytes); // zero-filled, aligned to 16, or null
void platform_heap_free(void *heap, void *block);
void platform_heap_destroy(void *heap); // with all blocks that are left in it

// ---- console and debugger ------------------------------------------------------------------------------

bool platform_console_attributes(uint16_t *ret_attributes); // of standard output; false when it is no console
void platform_console_set_attributes(uint16_t attributes);  // bits 0-2 text blue, green, red; 3 bright; 4-7 the ground
void platform_console_column(uint32_t column);              // on the present row; nothing when it is no console
void platform_debug_text(const char *text);

// ---- what a file manager's plug-in needs ---------------------------------------------------------------

char platform_separator();                         // between the components of a path that the host gives
char platform_visible_character(char character);   // what such a host is shown of a character in a name
bool platform_is_host_temporary(const char *path); // in a folder where hosts put files for viewing and editing
bool platform_time_parts(uint64_t time,
                         SystemTime *ret_time);          // of 100 ns since 1601, no change of zone; false for no time
bool platform_library_path(char *ret_path, size_t size); // the file that holds this code, library or program
// A local time as hosts turn it back for their panels: by the distance of the zone at present, whatever it was at that
// date. Units of 100 ns since 1601; false for no date.
bool platform_panel_time(const SystemTime *local, int64_t *ret_time);
// A library by its plain name, from beside this one or from the system's folder, nowhere else; null for none. It stays
// loaded.
void *platform_open_library(const char *name);
void *platform_library_symbol(void *library, const char *name);

// ---- the system and this library -----------------------------------------------------------------------

bool platform_is_nt_family();
// Keeps this library loaded until the process ends, where leaving it can't wait for the end of a thread of its own.
void platform_keep_library();

// Supplied by the layer above, called when the library is loaded and before it goes. A non-zero result of
// library_attach keeps the library from being loaded, where the system knows such a refusal. library_detach waits for
// the library's own thread, so it isn't called at the end of a process whose threads the system has ended already.
int32_t library_attach();
void library_detach();
