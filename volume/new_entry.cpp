// Makes the entry of a new file: its name is tested, its room found, the list grows.
#include "volume/new_entry.h"

#include <cstring>

#include "base/convert.h"
#include "base/error.h"
#include "base/log.h"
#include "base/log_pointer.h"
#include "base/memory.h"
#include "volume/access.h"
#include "volume/allocation.h"
#include "volume/allocation_inner.h"
#include "volume/entries.h"
#include "volume/format.h"
#include "volume/insert.h"
#include "volume/names.h"
#include "volume/navigate.h"
#include "volume/type_text.h"

namespace
{
uint32_t records_of(const FileInfo *info)
{
    return static_cast<uint32_t>((uint64_t{info->size} + RECORD_SIZE - 1) / RECORD_SIZE);
}

int32_t file_error(uint32_t number, const FileInfo *info)
{
    set_error(number, "file \"%s\"", info->name);
    return -1;
}

int32_t check_name(MediaDescriptor *md, FileInfo *new_file, ListSurvey *survey)
{
    char type[type_text_size];
    char message[NAME_MESSAGE_SIZE];
    type_text(new_file, type);
    if (check_valid_filename(md->format, new_file->name, type, message) < 0) {
        set_error(212, "file \"%s\": %s", new_file->name, message);
        return -1;
    }
    // Kept: a name that image_add_file has turned already is turned once more.  [KeepsNamesTurnedTwice]
    string_win2hp(new_file->name, new_file->name, 1);
    return find_listed(md, survey, new_file->name) == nullptr ? 0 : file_error(210, new_file);
}

int32_t check_room(const MediaDescriptor *md, const FileInfo *new_file, const ListSurvey &survey)
{
    const uint64_t slots = survey.entries + 1;
    return slots * md->dir_entry_size <= uint64_t{md->dir_size} * RECORD_SIZE ? 0 : file_error(216, new_file);
}

// The place isn't known yet; any will do.
int32_t read_back(MediaDescriptor *md, const FileInfo *new_file, FileInfo *ret_stored)
{
    uint8_t bytes[RECORD_SIZE] = {};
    uint32_t size = 0;
    FileInfo placed = *new_file;
    placed.location = 1;
    *ret_stored = {};
    set_file_info(md, &placed, bytes);
    return get_file_info(md, ret_stored, bytes, &size);
}

FileInfo *append(MediaDescriptor *md, FileInfo *last, const FileInfo *new_file)
{
    auto *info = static_cast<FileInfo *>(my_malloc(sizeof(FileInfo)));
    if (info == nullptr) {
        image_free_allocation(md, new_file->location, records_of(new_file));
        set_error(105, "");
        return nullptr;
    }
    *info = *new_file;
    info->prev = last;
    info->next = info->parent = info->child = nullptr;
    (last == nullptr ? md->root : last->next) = info;
    return info;
}

int32_t fill_records(MediaDescriptor *md, const FileInfo *info, uint16_t pattern)
{
    uint8_t record[RECORD_SIZE];
    for (uint32_t offset = 0; offset < RECORD_SIZE; offset += 2) set_word(record + offset, pattern);
    for (uint32_t index = 0; index < records_of(info); index++) {
        const int32_t result = write_record(md, info->location + index, record);
        if (result < 0) return result;
    }
    return 0;
}

void log_call(const MediaDescriptor *md, const FileInfo *new_file, int32_t initialize, uint16_t pattern)
{
    log_file(3, "image_create_file(md=%lu, new_file=%lu, initialize=%d, pattern=%X)\n", log_pointer(md),
             log_pointer(new_file), initialize, static_cast<unsigned>(pattern));
}

// An entry that says logical records claims the whole of the last one, so the file gets the room for it.
int32_t take_whole_records(const MediaDescriptor *md, FileInfo *new_file)
{
    const VolumeFormat &format = volume_format(md->format);
    if (new_file->records > format.most_records) return file_error(211, new_file);
    if (!format.says_logical_records) return 0;
    const uint64_t bytes = uint64_t{new_file->records} * new_file->record_len * 2;
    if (bytes > UINT32_MAX) return file_error(211, new_file);
    if ((bytes + RECORD_SIZE - 1) / RECORD_SIZE > records_of(new_file)) new_file->size = static_cast<uint32_t>(bytes);
    return 0;
}

FileInfo *make_entry(MediaDescriptor *md, FileInfo *new_file, ListSurvey *survey)
{
    if (check_name(md, new_file, survey) < 0 || check_entry(md, new_file) < 0) return nullptr;
    ListSurvey own;
    if (survey == nullptr) {
        survey_list(md, &own);
        survey = &own;
    }
    if (check_room(md, new_file, *survey) < 0 || take_whole_records(md, new_file) < 0) return nullptr;
    const uint16_t location = allocate_records(md, records_of(new_file), survey->end);
    if (location < 1) {
        file_error(211, new_file);
        return nullptr;
    }
    new_file->location = location;
    FileInfo *info = append(md, survey->last, new_file);
    if (info != nullptr) add_to_survey(md, survey, info);
    return info;
}
}

int32_t check_entry(MediaDescriptor *md, const FileInfo *new_file)
{
    FileInfo stored;
    if (volume_format(md->format).write_entry == nullptr) return 0;
    const int32_t result = read_back(md, new_file, &stored);
    if (result < 0) return -1;
    return result != 0 && (stored.deleted == 0 || new_file->deleted != 0) ? 0 : file_error(200, new_file);
}

FileInfo *create_entry(MediaDescriptor *md, FileInfo *new_file, ListSurvey *survey)
{
    constexpr uint16_t unused_pattern = 60;
    log_call(md, new_file, 0, unused_pattern);
    return make_entry(md, new_file, survey);
}

int32_t image_create_file(MediaDescriptor *md, FileInfo *new_file, int32_t initialize, uint16_t pattern)
{
    log_call(md, new_file, initialize, pattern);
    if (md == nullptr || new_file == nullptr) {
        set_error(103, "Null pointer");
        return -1;
    }
    const FileInfo *info = make_entry(md, new_file, nullptr);
    if (info == nullptr) return -1;
    if (initialize != 0) {
        const int32_t result = fill_records(md, info, pattern);
        if (result < 0) return result;
    }
    return static_cast<int32_t>(info->location);
}
