// The verbs that look at a medium and change nothing: the catalogue and the summary, as text or as JSON.
#include "console/catalogue_verbs.h"

#include <algorithm>
#include <string>
#include <vector>

#include "base/convert.h"
#include "console/json.h"
#include "console/matches.h"
#include "console/medium.h"
#include "console/report.h"
#include "volume/catalogue.h"
#include "volume/catalogue_inner.h"
#include "volume/format.h"
#include "volume/names.h"
#include "volume/type_text.h"

namespace
{
constexpr uint32_t file_not_found = 207;

// What the words mean, and how it is shown.
struct Request {
    std::vector<ChoiceGroup> groups;
    bool recursive;
};

uint32_t visit_request(const MediaDescriptor *md, const Request &request, EntryVisitor visit, void *context)
{
    uint32_t count = 0;
    for (const ChoiceGroup &group : request.groups) {
        count += visit_group(md, group, request.recursive, visit, context);
    }
    return count;
}

// ---- ls ------------------------------------------------------------------------------------------------

void print_line(void *, const MediaDescriptor *md, const FileInfo *info)
{
    print_list_entry(md, info, 0);
}

// What a list has below itself is shifted by its depth.
void print_shifted_line(void *context, const MediaDescriptor *md, const FileInfo *info)
{
    const uint32_t first_level = *static_cast<const uint32_t *>(context);
    print_list_entry(md, info, info->level - first_level + 1);
}

uint32_t print_catalogue(const MediaDescriptor *md, const Request &request)
{
    print_list_head(md);
    if (!request.recursive) return visit_request(md, request, print_line, nullptr);
    uint32_t count = 0;
    for (const ChoiceGroup &group : request.groups) {
        uint32_t first_level = group.list == nullptr ? 1 : group.list->level;
        count += visit_group(md, group, true, print_shifted_line, &first_level);
    }
    return count;
}

// The directory of the entries that are written is the same for many of them.
struct JsonEntries {
    Json *json;
    const FileInfo *directory = nullptr;
    std::string path{};
};

constexpr size_t longest_texts =
    json_longest_text + sizeof(FileInfo::name) + VISIBLE_NAME_SIZE + type_text_size + sizeof(FileInfo::system_string);
static_assert(longest_texts * json_byte_size + 1024 < json_room, "an entry has room");

void write_entry(void *context, const MediaDescriptor *md, const FileInfo *info)
{
    char visible[VISIBLE_NAME_SIZE];
    char type[type_text_size];
    compose_filename(md, info, visible);
    type_text(info, type);
    std::string_view name = field_text(info->name);
    auto *entries = static_cast<JsonEntries *>(context);
    JsonObject entry(entries->json);
    entry.roman8("name", name);
    entry.roman8("visible", field_text(visible));
    entry.number("type", info->type);
    entry.roman8("type_text", field_text(type));
    entry.roman8("system", field_text(info->system_string));
    entry.number("location", info->location);
    entry.number("size", info->size);
    entry.number("records", info->records);
    entry.number("record_length", uint64_t{info->record_len} * 2);
    entry.date("date", info->date);
    entry.flag("deleted", info->deleted != 0);
    entry.flag("directory", info->is_directory != 0);
    entry.flag("protected", (info->attributes & ATTRIBUTE_READ_ONLY) != 0);
    entry.flag("hidden", (info->attributes & ATTRIBUTE_HIDDEN) != 0);
    entry.number("level", info->level);
    if (info->parent != nullptr) {
        if (info->parent != entries->directory) entries->path = visible_path(md, info->parent);
        entries->directory = info->parent;
        entry.host_text("path", entries->path);
    }
    entry.hex("name_hex", name);
    entry.close();
}

uint32_t write_catalogue(const MediaDescriptor *md, const Request &request)
{
    Json json;
    JsonObject catalogue(&json);
    catalogue.host_text("medium", field_text(md->msus));
    catalogue.host_text("format", volume_format(md->format).name);
    catalogue.roman8("label", field_text(md->label));
    catalogue.last("entries");
    json.writer.StartArray();
    JsonEntries entries = {.json = &json};
    uint32_t count = visit_request(md, request, write_entry, &entries);
    json.writer.EndArray();
    catalogue.close();
    output_text("\n");
    return count;
}

// ---- info ----------------------------------------------------------------------------------------------

// A field of the medium; one of its pointers is set.
struct InfoField {
    const char *name;
    uint32_t MediaDescriptor::*number = nullptr;
    uint16_t MediaDescriptor::*word = nullptr;
    TimeRecord MediaDescriptor::*date = nullptr;
    char (MediaDescriptor::*text)[17] = nullptr;
    char (MediaDescriptor::*host_text)[FILE_PATH_SIZE] = nullptr;
};

constexpr InfoField info_fields[] = {
    {.name = "format", .number = &MediaDescriptor::format},
    {.name = "size", .number = &MediaDescriptor::size},
    {.name = "msus", .host_text = &MediaDescriptor::msus},
    {.name = "access", .number = &MediaDescriptor::access},
    {.name = "magic", .word = &MediaDescriptor::magic},
    {.name = "date", .date = &MediaDescriptor::date},
    {.name = "label", .text = &MediaDescriptor::label},
    {.name = "dir_id", .word = &MediaDescriptor::dir_id},
    {.name = "version", .word = &MediaDescriptor::version},
    {.name = "interleave", .word = &MediaDescriptor::interleave},
    {.name = "cylinders", .number = &MediaDescriptor::cylinders},
    {.name = "heads", .number = &MediaDescriptor::heads},
    {.name = "sectors", .number = &MediaDescriptor::sectors},
    {.name = "records", .number = &MediaDescriptor::records},
    {.name = "system_tracks", .number = &MediaDescriptor::system_tracks},
    {.name = "data_tracks", .number = &MediaDescriptor::data_tracks},
    {.name = "dir_start", .number = &MediaDescriptor::dir_start},
    {.name = "dir_size", .number = &MediaDescriptor::dir_size},
    {.name = "dir_entry_size", .number = &MediaDescriptor::dir_entry_size},
    {.name = "alloc_start", .number = &MediaDescriptor::alloc_start},
    {.name = "alloc_size", .number = &MediaDescriptor::alloc_size},
    {.name = "alloc_entry_size", .number = &MediaDescriptor::alloc_entry_size},
    {.name = "spare_dir_start", .number = &MediaDescriptor::spare_dir_start},
    {.name = "spare_alloc_start", .number = &MediaDescriptor::spare_alloc_start},
    {.name = "file_area_start", .number = &MediaDescriptor::file_area_start},
    {.name = "data_size", .number = &MediaDescriptor::data_size},
    {.name = "needs_check", .number = &MediaDescriptor::needs_check},
    {.name = "backup_date", .date = &MediaDescriptor::backup_date},
    {.name = "block_size", .number = &MediaDescriptor::block_size},
    {.name = "boot_start", .number = &MediaDescriptor::boot_start},
    {.name = "boot_size", .number = &MediaDescriptor::boot_size},
    {.name = "fat_start", .number = &MediaDescriptor::fat_start},
    {.name = "largest_block", .number = &MediaDescriptor::largest_block},
    {.name = "password", .text = &MediaDescriptor::password},
    {.name = "inode_count", .number = &MediaDescriptor::inode_count},
    {.name = "hfs_present", .number = &MediaDescriptor::hfs_present},
    {.name = "hfs_record", .number = &MediaDescriptor::hfs_record},
    {.name = "used_bytes", .number = &MediaDescriptor::used_bytes},
    {.name = "free_bytes", .number = &MediaDescriptor::free_bytes},
    {.name = "use_type_names", .number = &MediaDescriptor::use_type_names},
    {.name = "use_typed_extensions", .number = &MediaDescriptor::use_typed_extensions},
    {.name = "use_file_conversion", .number = &MediaDescriptor::use_file_conversion},
    {.name = "use_file_headers", .number = &MediaDescriptor::use_file_headers},
    {.name = "prefer_hfs", .number = &MediaDescriptor::prefer_hfs},
    {.name = "show_purged", .number = &MediaDescriptor::show_purged},
};

void write_field(JsonObject *object, const MediaDescriptor *md, const InfoField &field)
{
    if (field.number != nullptr) object->number(field.name, md->*field.number);
    if (field.word != nullptr) object->number(field.name, md->*field.word);
    if (field.date != nullptr) object->date(field.name, md->*field.date);
    if (field.text != nullptr) object->roman8(field.name, field_text(md->*field.text));
    if (field.host_text != nullptr) object->host_text(field.name, field_text(md->*field.host_text));
}

void write_info(const MediaDescriptor *md)
{
    Json json;
    JsonObject object(&json);
    for (const InfoField &field : info_fields) {
        write_field(&object, md, field);
        object.pass_on();
    }
    object.close();
    output_text("\n");
}
}

int run_ls(const Arguments &arguments)
{
    Reading reading = open_for_reading(arguments);
    if (reading.medium == nullptr) return exit_failed;
    MediaDescriptor *md = reading.medium.get();
    const std::vector<Choice> choices = choices_of(md, arguments.words);
    const Request request = {groups_of(choices), arguments.recursive};
    begin_data();
    uint32_t count = arguments.json ? write_catalogue(md, request) : print_catalogue(md, request);
    auto is_whole = [](const Choice &choice) { return choice.whole; };
    bool found = count != 0 || md->root == nullptr || std::any_of(choices.begin(), choices.end(), is_whole);
    md->root = nullptr; // the entries go with the heap, all at once
    int code = report_reading(reading, finish_data(exit_done));
    if (found) return code;
    set_error(file_not_found, "");
    return report_failure();
}

int run_info(const Arguments &arguments)
{
    Reading reading = open_for_reading(arguments);
    if (reading.medium == nullptr) return exit_failed;
    begin_data();
    if (arguments.json) {
        write_info(reading.medium.get());
    } else {
        print_media_info(reading.medium.get());
    }
    return report_reading(reading, finish_data(exit_done));
}
