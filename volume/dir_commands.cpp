// What each command of image_dir_ops does, one row for each. What is printed ends in blanks, so that it covers the line
// of progress before it.
#include <algorithm>
#include <cstring>
#include <iterator>
#include <string_view>
#include <utility>

#include "base/convert.h"
#include "base/error.h"
#include "base/log.h"
#include "base/output.h"
#include "volume/catalogue_inner.h"
#include "volume/dir_walk.h"
#include "volume/entries.h"
#include "volume/extract_inner.h"
#include "volume/filetypes.h"
#include "volume/format.h"
#include "volume/insert.h"
#include "volume/names.h"
#include "volume/type_text.h"

namespace
{
constexpr uint32_t exists = 210;
constexpr uint32_t invalid_data = 214;
constexpr uint16_t empty_file_pattern = 60;
constexpr int32_t yes_no_cancel = 3;
constexpr int32_t yes = 1;
constexpr int32_t cancel = 3;

void say(std::string_view text)
{
    if (loglevel <= 0) return;
    output_text(text);
    output_flush();
}

void say_what(const char *what, const std::string &name)
{
    say(what + (" " + name) + "          \n");
}

void wipe_progress()
{
    say("\t\t\t\t\t\t\t\r");
}

const char *text_or(const char *text, const std::string &otherwise)
{
    return text != nullptr ? text : otherwise.c_str();
}

// After a failure: whether the user lets a file that exists be overwritten. Every other failure ends the walk.
int32_t ask_about_existing(Walk *walk, const char *name)
{
    if (global_error != exists || walk->confirm == nullptr) {
        walk->go_on = false;
        return 0;
    }
    return walk->confirm(yes_no_cancel, "File \"%s\" already exists. Overwrite", name);
}

uint16_t transfer_flags(const Walk *walk)
{
    const int overwrite = walk->confirm == nullptr ? EXTRACT_OVERWRITE : 0;
    const int convert = walk->md->use_file_conversion != 0 ? EXTRACT_CONVERT : 0;
    return static_cast<uint16_t>(EXTRACT_TXT | overwrite | convert);
}
static_assert(int{EXTRACT_OVERWRITE} == int{INSERT_OVERWRITE} && int{EXTRACT_CONVERT} == int{INSERT_CONVERT} &&
              int{EXTRACT_TXT} == int{INSERT_TXT});

void list_entry(Walk *walk, FileInfo *entry)
{
    walk->matched = true;
    const auto deeper = static_cast<uint32_t>(walk->entered.size());
    print_list_entry(walk->md, entry, walk->recursive ? walk->start_level + deeper : 0);
}

void extract_again(Walk *walk, FileInfo *entry)
{
    const auto flags = static_cast<uint16_t>(transfer_flags(walk) | EXTRACT_OVERWRITE);
    // Kept: what is repeated goes to the first folder.  [KeepsRepeatedFileInFirstFolder]
    const ExtractOrder order = {.destination = walk->dest_path,
                                .to_file = walk->dest_file,
                                .flags = flags,
                                .progress = standard_progress_callback};
    if (extract_file(walk->md, entry, order).result >= 0) {
        wipe_progress();
    } else {
        walk->go_on = false;
    }
}

void extract_entry(Walk *walk, FileInfo *entry)
{
    walk->matched = true;
    if (entry->is_directory != 0) {
        say_what("Creating directory", "\"" + walk->name + "\"");
    } else {
        say_what("Extracting", walk->name);
    }
    const bool placed = walk->recursive || walk->dest_path != nullptr;
    const ExtractOrder order = {.destination = placed ? walk->host_path.c_str() : nullptr,
                                .to_file = walk->dest_file,
                                .flags = transfer_flags(walk),
                                .progress = standard_progress_callback};
    if (extract_file(walk->md, entry, order).result >= 0) {
        wipe_progress();
    } else if (global_error == invalid_data) {
        log_file(1, "File \"%s\" contains invalid data.\n", walk->name.c_str());
    } else if (ask_about_existing(walk, walk->name.c_str()) == yes) {
        extract_again(walk, entry);
    }
}

bool copy_once(Walk *walk, FileInfo *entry, bool overwrite)
{
    if (image_copy_file(walk->md, entry, walk->target, walk->dest_file, overwrite ? 1 : 0) < 0) return false;
    wipe_progress();
    return true;
}

// True when the copy is there.
bool copy_to_target(Walk *walk, FileInfo *entry)
{
    if (copy_once(walk, entry, walk->confirm == nullptr)) {
        (on_one_volume(walk) ? walk->source_changed : walk->target_changed) = true;
        return true;
    }
    if (ask_about_existing(walk, text_or(walk->dest_file, walk->name)) != yes) return false;
    const bool copied = copy_once(walk, entry, true);
    if (copied) walk->target_changed = true;
    if (copied && on_one_volume(walk)) walk->source_changed = true;
    if (!copied) walk->go_on = false;
    return copied;
}

std::string target_text(const Walk *walk)
{
    std::string text = walk->dest_path != nullptr ? walk->dest_path : "";
    if (!text.empty() && text.back() != ':') text += ':';
    return text + text_or(walk->dest_file, walk->name);
}

void copy_entry(Walk *walk, FileInfo *entry)
{
    walk->matched = true;
    log_file(2, "Copying %s -> %s          \n", walk->name.c_str(), target_text(walk).c_str());
    // Kept: on one volume the walk comes to the copy too, and stops at it.  [KeepsCopyMetByItsOwnPattern]
    copy_to_target(walk, entry);
}

void delete_entry(Walk *walk, FileInfo *entry)
{
    walk->behind = entry->prev;
    walk->deleted = true;
    walk->source_changed = true;
    image_delete_file(walk->md, entry, 0);
}

void remove_entry(Walk *walk, FileInfo *entry)
{
    walk->matched = true;
    say_what("Removing", walk->name);
    delete_entry(walk, entry);
}

void rename_entry(Walk *walk, FileInfo *entry)
{
    const uint32_t format = walk->md->format;
    const char *name = walk->dest_file;
    // Kept: where no names are written nothing changes, and still counts as a change.  [KeepsRenameOnSdfWithoutEffect]
    walk->source_changed = true;
    if (name == nullptr || volume_format(format).write_entry == nullptr) return;
    if (!may_be_called(walk->md, entry, name)) {
        walk->go_on = false;
        return;
    }
    // Kept: a file of that name stays beside this one.  [KeepsTwoFilesOfOneNameAfterRename]
    std::memset(entry->name, 0, sizeof entry->name);
    encode_filename(entry, format, name);
    entry->name[volume_format(format).name_limit] = '\0';
}

void move_entry(Walk *walk, FileInfo *entry)
{
    say_what("Moving", walk->name + " -> " + target_text(walk));
    if (on_one_volume(walk)) {
        walk->matched = true;
        rename_entry(walk, entry);
        return;
    }
    // Kept: a move to another volume ends in "not found" where files are left.  [KeepsMoveToAnotherVolumeNotFound]
    if (copy_to_target(walk, entry)) delete_entry(walk, entry);
}

// Where an entry says logical records, longer ones are fewer: it would claim records of other files. False when they
// don't come out even.
bool take_record_length(const MediaDescriptor *md, uint32_t record_len, FileInfo *entry)
{
    const uint32_t old_length = std::exchange(entry->record_len, record_len);
    if (!volume_format(md->format).says_logical_records || record_len <= old_length) return true;
    const uint64_t room = (uint64_t{entry->size} + RECORD_SIZE - 1) / RECORD_SIZE * RECORD_SIZE;
    const uint64_t length = uint64_t{record_len} * 2;
    const uint64_t records = (entry->size + length - 1) / length;
    if (records * length > room) {
        set_error(211, "file \"%s\"", entry->name);
        return false;
    }
    entry->records = static_cast<uint32_t>(records);
    return true;
}

// False when the new type is none, or the new length has no room; nothing is written then.
bool take_attributes(const MediaDescriptor *md, const FileInfo *from, uint8_t mask, FileInfo *entry)
{
    char text[type_text_size];
    char system[type_text_size];
    if ((mask & CHANGE_TYPE) != 0) {
        type_text(from, text);
        set_type_text(entry, text);
        entry->attributes = from->attributes;
    }
    if ((mask & CHANGE_SYSTEM) != 0) {
        std::memcpy(entry->system_string, from->system_string, sizeof entry->system_string);
        std::memcpy(entry->lif_impl, from->lif_impl, sizeof entry->lif_impl);
    }
    if ((mask & CHANGE_RECORD_LENGTH) != 0 && !take_record_length(md, from->record_len, entry)) return false;
    if ((mask & CHANGE_DATE) != 0) entry->date = from->date;
    if ((mask & (CHANGE_TYPE | CHANGE_SYSTEM)) == 0) return true;
    type_text(entry, text);
    std::memcpy(system, entry->system_string, sizeof entry->system_string);
    system[sizeof entry->system_string] = '\0';
    return set_filetype(md->format, text, system, &entry->type) == 0;
}

void change_attributes(Walk *walk, FileInfo *entry)
{
    walk->matched = true;
    say_what("Changing attributes for", walk->name);
    walk->source_changed = true;
    // Kept: a type that is none leaves the changes of earlier files unwritten.  [KeepsChangesUnwrittenAfterABadType]
    if (take_attributes(walk->md, walk->info, walk->attributes, entry)) return;
    walk->go_on = false;
    walk->at_once = true;
}

struct Command {
    int32_t number;
    void (*act)(Walk *walk, FileInfo *entry);
};

constexpr Command commands[] = {
    {COMMAND_LIST, list_entry},     {COMMAND_EXTRACT, extract_entry}, {COMMAND_COPY, copy_entry},
    {COMMAND_DELETE, remove_entry}, {COMMAND_MOVE, move_entry},       {COMMAND_ATTRIBUTES, change_attributes},
};

bool add_once(Walk *walk, const char *name, uint16_t flags)
{
    FileInfo info = *walk->info;
    if (image_add_file(walk->md, &info, name, flags, standard_progress_callback) < 0) return false;
    walk->source_changed = true;
    wipe_progress();
    return true;
}
}

void carry_out(Walk *walk, FileInfo *entry)
{
    const Command *command = std::find_if(std::begin(commands), std::end(commands),
                                          [walk](const Command &row) { return row.number == walk->command; });
    if (command != std::end(commands)) {
        command->act(walk, entry);
        return;
    }
    set_error(209, "");
    walk->go_on = false;
}

void create_file(Walk *walk)
{
    FileInfo *info = walk->info;
    char text[type_text_size];
    type_text(info, text);
    char system[sizeof info->system_string + 1] = {};
    std::memcpy(system, info->system_string, sizeof info->system_string);
    walk->at_once = walk->go_on = false;
    if (set_filetype(walk->md->format, text, system, &info->type) < 0) return;
    get_current_datetime(&info->date);
    add_file_info(walk->md->format, info);
    if (image_create_file(walk->md, info, 1, empty_file_pattern) < 0) return;
    walk->go_on = walk->source_changed = true;
}

void add_files(Walk *walk)
{
    if (walk->filespec == nullptr) return;
    for (const char *const *name = walk->filespec; *name != nullptr && walk->go_on; name++) {
        say_what("Adding", *name);
        if (add_once(walk, *name, transfer_flags(walk))) continue;
        const int32_t answer = ask_about_existing(walk, *name);
        if (answer == cancel) return;
        if (answer != yes) continue;
        if (!add_once(walk, *name, static_cast<uint16_t>(transfer_flags(walk) | INSERT_OVERWRITE))) walk->go_on = false;
    }
}
