// The verbs that look at a medium and change nothing: the catalogue and the summary, as text or as JSON.
#include "console/catalogue_verbs.h"

#include <vector>

#include "base/convert.h"
#include "console/json.h"
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

using Patterns = std::vector<const char *>; // as the engine takes it, ended by a null pointer

Patterns patterns_of(const Arguments &arguments)
{
    Patterns patterns;
    patterns.reserve(arguments.words.size() + 1);
    for (const std::string &pattern : arguments.words) patterns.push_back(pattern.c_str());
    patterns.push_back(nullptr);
    return patterns;
}

// ---- ls ------------------------------------------------------------------------------------------------

void print_line(void *, const MediaDescriptor *md, const FileInfo *info)
{
    print_list_entry(md, info, false);
}

uint32_t print_catalogue(const MediaDescriptor *md, const Patterns &patterns)
{
    print_list_header(md);
    return visit_matching(md, patterns.data(), print_line, nullptr);
}

void write_entry(void *context, const MediaDescriptor *md, const FileInfo *info)
{
    auto *json = static_cast<Json *>(context);
    char visible[VISIBLE_NAME_SIZE];
    char type[type_text_size];
    compose_filename(md, info, visible);
    type_text(info, type);
    std::string_view name = field_text(info->name, sizeof info->name);
    json_begin_object(json);
    json_roman8(json, "name", name);
    json_roman8(json, "visible", field_text(visible, sizeof visible));
    json_number(json, "type", info->type);
    json_roman8(json, "type_text", field_text(type, sizeof type));
    json_roman8(json, "system", field_text(info->system_string, sizeof info->system_string));
    json_number(json, "location", info->location);
    json_number(json, "size", info->size);
    json_number(json, "records", info->records);
    json_number(json, "record_length", uint64_t{info->record_len} * 2);
    json_date(json, "date", info->date);
    json_flag(json, "deleted", info->deleted != 0);
    json_flag(json, "directory", info->is_directory != 0);
    json_flag(json, "protected", (info->attributes & ATTRIBUTE_READ_ONLY) != 0);
    json_flag(json, "hidden", (info->attributes & ATTRIBUTE_HIDDEN) != 0);
    json_number(json, "level", info->level);
    json_hex(json, "name_hex", name);
    json_end_object(json);
}

uint32_t write_catalogue(const MediaDescriptor *md, const Patterns &patterns)
{
    Json json;
    json_begin_object(&json);
    json_host_text(&json, "medium", field_text(md->msus, sizeof md->msus));
    json_host_text(&json, "format", volume_format(md->format).name);
    json_roman8(&json, "label", field_text(md->label, sizeof md->label));
    json_name(&json, "entries");
    json.writer.StartArray();
    uint32_t count = visit_matching(md, patterns.data(), write_entry, &json);
    json.writer.EndArray();
    json_end_object(&json);
    json_end(&json);
    return count;
}

// ---- info ----------------------------------------------------------------------------------------------

void write_geometry(Json *json, const MediaDescriptor *md)
{
    json_number(json, "interleave", md->interleave);
    json_number(json, "cylinders", md->cylinders);
    json_number(json, "heads", md->heads);
    json_number(json, "sectors", md->sectors);
    json_number(json, "records", md->records);
    json_number(json, "system_tracks", md->system_tracks);
    json_number(json, "data_tracks", md->data_tracks);
}

void write_tables(Json *json, const MediaDescriptor *md)
{
    json_number(json, "dir_start", md->dir_start);
    json_number(json, "dir_size", md->dir_size);
    json_number(json, "dir_entry_size", md->dir_entry_size);
    json_number(json, "alloc_start", md->alloc_start);
    json_number(json, "alloc_size", md->alloc_size);
    json_number(json, "alloc_entry_size", md->alloc_entry_size);
    json_number(json, "spare_dir_start", md->spare_dir_start);
    json_number(json, "spare_alloc_start", md->spare_alloc_start);
    json_number(json, "file_area_start", md->file_area_start);
    json_number(json, "data_size", md->data_size);
}

void write_sdf_fields(Json *json, const MediaDescriptor *md)
{
    json_number(json, "needs_check", md->needs_check);
    json_date(json, "backup_date", md->backup_date);
    json_number(json, "block_size", md->block_size);
    json_number(json, "boot_start", md->boot_start);
    json_number(json, "boot_size", md->boot_size);
    json_number(json, "fat_start", md->fat_start);
    json_number(json, "largest_block", md->largest_block);
    json_roman8(json, "password", field_text(md->password, sizeof md->password));
    json_number(json, "inode_count", md->inode_count);
}

void write_options(Json *json, const MediaDescriptor *md)
{
    json_number(json, "use_type_names", md->use_type_names);
    json_number(json, "use_typed_extensions", md->use_typed_extensions);
    json_number(json, "use_file_conversion", md->use_file_conversion);
    json_number(json, "use_file_headers", md->use_file_headers);
    json_number(json, "prefer_hfs", md->prefer_hfs);
    json_number(json, "show_purged", md->show_purged);
}

void write_info(const MediaDescriptor *md)
{
    Json json;
    json_begin_object(&json);
    json_number(&json, "format", md->format);
    json_number(&json, "size", md->size);
    json_host_text(&json, "msus", field_text(md->msus, sizeof md->msus));
    json_number(&json, "access", md->access);
    json_number(&json, "magic", md->magic);
    json_date(&json, "date", md->date);
    json_roman8(&json, "label", field_text(md->label, sizeof md->label));
    json_number(&json, "dir_id", md->dir_id);
    json_number(&json, "version", md->version);
    write_geometry(&json, md);
    write_tables(&json, md);
    write_sdf_fields(&json, md);
    json_number(&json, "hfs_present", md->hfs_present);
    json_number(&json, "hfs_record", md->hfs_record);
    json_number(&json, "used_bytes", md->used_bytes);
    json_number(&json, "free_bytes", md->free_bytes);
    write_options(&json, md);
    json_end_object(&json);
    json_end(&json);
}
}

int run_ls(const Arguments &arguments)
{
    Patterns patterns = patterns_of(arguments);
    Reading reading = open_for_reading(arguments);
    if (reading.medium == nullptr) return exit_failed;
    const MediaDescriptor *md = reading.medium.get();
    begin_data();
    uint32_t count = arguments.json ? write_catalogue(md, patterns) : print_catalogue(md, patterns);
    int code = report_reading(reading, finish_data(exit_done));
    if (count != 0 || arguments.words.empty() || md->root == nullptr) return code;
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
