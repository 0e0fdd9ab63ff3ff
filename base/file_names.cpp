// Files by their names, and their times: folders, temporary files, deleting, moving, the program's folder.
#include <cstring>

#include "base/error.h"
#include "base/file.h"
#include "base/file_inner.h"
#include "base/file_steps.h"
#include "base/log.h"
#include "base/log_pointer.h"
#include "platform/platform.h"

namespace
{

constexpr uint32_t error_text_size = 256;

int32_t missing_pointer(int32_t result)
{
    set_error(103, "NULL pointer");
    return result;
}

// Error `number` with the system's words; always -1.
int32_t system_failure(uint32_t number)
{
    set_error(number, "%s", last_error());
    return -1;
}

// A number that no field can hold becomes one that is valid in none.
uint16_t time_field(int64_t number)
{
    return number < 0 || number > UINT16_MAX ? uint16_t{UINT16_MAX} : static_cast<uint16_t>(number);
}

SystemTime system_time_of(const TimeRecord &time)
{
    return {.year = time_field(int64_t{time.tm_year} + 1900),
            .month = time_field(int64_t{time.tm_mon} + 1),
            .day_of_week = time_field(time.tm_wday),
            .day = time_field(time.tm_mday),
            .hour = time_field(time.tm_hour),
            .minute = time_field(time.tm_min),
            .second = time_field(time.tm_sec),
            .milliseconds = 0};
}

TimeRecord time_record_of(const SystemTime &time, bool daylight)
{
    return {.tm_sec = time.second,
            .tm_min = time.minute,
            .tm_hour = time.hour,
            .tm_mday = time.day,
            .tm_mon = time.month - 1,
            .tm_year = time.year - 1900,
            .tm_wday = time.day_of_week,
            .tm_yday = 0,
            .tm_isdst = daylight};
}

} // namespace

int32_t file_create_directory(const char *filename)
{
    log_file(3, "file_create_directory(filename=\"%s\")\n", log_text(filename));
    if (filename == nullptr) return missing_pointer(0);
    // Extraction of a folder looks for -1 alone.
    const bool made = platform_create_directory(filename);
    if (!made) return 1; // Kept: a folder that was made is an error, one that was not is none.  [KeepsInvertedResult]
    char text[error_text_size];
    get_win_error(text, sizeof(text));
    set_error(312, "%s", text);
    return 0;
}

int32_t file_open_temp(FileHandle *ret_file, char *ret_filepath, const char *flags)
{
    log_file(3, "file_open_temp(ret_file=%lu, ret_filepath=%lu, flags=\"%s\")\n", log_pointer(ret_file),
             log_pointer(ret_filepath), log_text(flags));
    if (ret_file == nullptr || ret_filepath == nullptr || flags == nullptr) return missing_pointer(-1);
    if (file_get_temp(ret_filepath) != 0) return -1;
    const int32_t opened = file_open(ret_file, ret_filepath, flags, 0);
    if (opened != 1) platform_delete(ret_filepath); // the caller learns of no file to delete
    return opened;
}

int32_t file_delete(const char *filename)
{
    log_file(3, "file_delete(filename=\"%s\")\n", log_text(filename));
    if (filename == nullptr) return missing_pointer(-1);
    return platform_delete(filename) ? 0 : system_failure(304);
}

int32_t file_move(const char *from, const char *to)
{
    log_file(3, "file_move(from=\"%s\", to=\"%s\")\n", log_text(from), log_text(to));
    if (from == nullptr || to == nullptr) return missing_pointer(-1);
    return platform_move(from, to) ? 0 : system_failure(310);
}

int32_t file_get_temp(char *ret_filepath)
{
    log_file(3, "file_get_temp(ret_filepath=%lu)\n", log_pointer(ret_filepath));
    if (ret_filepath == nullptr) return missing_pointer(-1);
    return platform_temporary_file(ret_filepath, FILE_PATH_SIZE) ? 0 : system_failure(306);
}

int32_t file_get_execution_path(const char *const *argv, char *ret_filepath)
{
    log_file(3, "file_get_execution_path(argv=%lu, ret_filepath=%lu)\n", log_pointer(argv), log_pointer(ret_filepath));
    if (ret_filepath == nullptr) return missing_pointer(-1);
    if (!platform_program_path(ret_filepath, FILE_PATH_SIZE)) return system_failure(300);
    size_t length = strlen(ret_filepath);
    while (length > 0 && !platform_is_separator(ret_filepath[length - 1])) --length;
    ret_filepath[length] = '\0';
    return 0;
}

int32_t file_set_time(const char *filename, const TimeRecord *time)
{
    log_file(3, "file_set_time(filename=\"%s\", time=%lu)\n", log_text(filename), log_pointer(time));
    if (filename == nullptr || time == nullptr) return missing_pointer(-1);
    const SystemTime local = system_time_of(*time);
    int64_t file_time = 0;
    FileHandle file = 0;
    if (!platform_file_time(&local, &file_time)) return system_failure(311);
    if (!file_calls->open_alone(&file, filename)) return system_failure(311);
    if (!file_calls->set_times(file, file_time))
        return system_failure(311); // Kept: the file stays open when its time can't be set.  [KeepsFileOpenWithoutTime]
    file_calls->close(file);
    return 0;
}

bool file_set_open_time(FileHandle file, const TimeRecord *time)
{
    const SystemTime local = system_time_of(*time);
    int64_t file_time = 0;
    if (platform_file_time(&local, &file_time) && file_calls->set_times(file, file_time)) return true;
    system_failure(311);
    return false;
}

bool file_time_of(const FileFacts &facts, TimeRecord *ret_time)
{
    SystemTime local;
    bool daylight = false;
    if (!platform_local_file_time(facts.written, &local, &daylight)) return false;
    *ret_time = time_record_of(local, daylight);
    return true;
}

int32_t file_get_time(FileHandle file, TimeRecord *ret_time)
{
    log_file(3, "file_get_time(file=%lu, ret_time=%lu)\n", log_handle(file), log_pointer(ret_time));
    if (ret_time == nullptr) return missing_pointer(-1);
    SystemTime local;
    bool daylight = false;
    if (!platform_get_file_time(file, &local, &daylight)) return system_failure(311);
    *ret_time = time_record_of(local, daylight);
    return 0;
}
