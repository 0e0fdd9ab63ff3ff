// What the directory says of files besides their names and places. What an entry can't hold is refused: each is written
// and read again in memory first, and nothing is changed unless all files can be.
#include <cstring>
#include <string>
#include <unordered_set>

#include "base/convert.h"
#include "console/change.h"
#include "console/change_verbs.h"
#include "console/date_text.h"
#include "console/matches.h"
#include "console/medium.h"
#include "console/put_names.h"
#include "console/stored_entry.h"
#include "console/tables.h"
#include "volume/entries.h"
#include "volume/filetypes.h"
#include "volume/format.h"
#include "volume/names.h"
#include "volume/navigate.h"
#include "volume/region.h"
#include "volume/type_text.h"

namespace
{
constexpr uint32_t plain_words = 101;
constexpr uint32_t not_supported = 109;
constexpr uint32_t target_exists = 210;
constexpr char nothing_changed[] = "Nothing was changed.";
constexpr char on[] = "on";

struct AttrItem {
    ChangeItem file;
    FileInfo changed; // its entry as it will be
};

struct AttrRun {
    const Arguments &arguments;
    Medium medium;
    TimeRecord date = {};
    Tally tally = {};
    std::vector<AttrItem> items = {};
};

bool refuse(uint32_t number, const std::string &words)
{
    set_error(number, "%s", words.c_str());
    return false;
}

std::string volume_words(const MediaDescriptor *md)
{
    return "on a " + std::string(volume_format(md->format).name) + " volume";
}

// ---- the entry -----------------------------------------------------------------------------------------

bool take_type(const AttrRun &run, FileInfo *info)
{
    const Arguments &arguments = run.arguments;
    if (arguments.type.empty() && arguments.system.empty()) return true;
    const uint32_t format = run.medium->format;
    char name[VISIBLE_NAME_SIZE];
    decode_filename(info, format, name);
    const std::string type = arguments.type.empty() ? type_name(info) : arguments.type;
    if (set_filetype(format, type.c_str(), arguments.system.c_str(), &info->type) < 0) return false;
    set_type_text(info, type.c_str());
    if (type.size() < sizeof info->type_string) info->system_string[0] = '\0';
    encode_filename(info, format, name); // another type has another marker
    info->name[volume_format(format).name_limit] = '\0';
    return true;
}

// The file keeps its length, which these entries tell as so many records.
bool take_length(const AttrRun &run, FileInfo *info)
{
    const auto bytes = static_cast<uint32_t>(run.arguments.record);
    if (bytes == 0) return true;
    if (info->size % bytes != 0 && run.medium->format != FORMAT_LIF)
        return refuse(plain_words, "Its " + std::to_string(info->size) + " bytes aren't a number of such records");
    info->record_len = bytes / 2;
    info->records = info->size / bytes;
    return true;
}

void take_attribute(const std::string &asked, uint8_t bit, FileInfo *info)
{
    if (!asked.empty())
        info->attributes = static_cast<uint8_t>(asked == on ? info->attributes | bit : info->attributes & ~bit);
}

bool same_date(const TimeRecord &left, const TimeRecord &right)
{
    return left.tm_year == right.tm_year && left.tm_mon == right.tm_mon && left.tm_mday == right.tm_mday &&
           left.tm_hour == right.tm_hour && left.tm_min == right.tm_min && left.tm_sec == right.tm_sec;
}

// Whether a bit of the attributes comes back both set and clear.
bool keeps_attribute(const AttrRun &run, const FileInfo &info, uint8_t bit)
{
    MediaDescriptor *md = run.medium.get();
    FileInfo flipped = info;
    FileInfo stored;
    flipped.attributes ^= bit;
    return entry_as_stored(md, &info, &stored) && ((stored.attributes ^ info.attributes) & bit) == 0 &&
           entry_as_stored(md, &flipped, &stored) && ((stored.attributes ^ flipped.attributes) & bit) == 0;
}

// What is asked for must come back from the directory.
bool is_kept(const AttrRun &run, const FileInfo *info, const FileInfo &changed)
{
    const Arguments &arguments = run.arguments;
    MediaDescriptor *md = run.medium.get();
    FileInfo stored;
    const bool read = entry_as_stored(md, &changed, &stored);
    if (!read || stored.type != changed.type)
        return refuse(not_supported, "files of type " + type_name(&changed) + " " + volume_words(md));
    if (arguments.record != 0 && stored.record_len * 2 != static_cast<uint32_t>(arguments.record))
        return refuse(not_supported, "a length of records for type " + type_name(&changed));
    if (!arguments.date.empty() && !same_date(stored.date, date_as_stored(run.date)))
        return refuse(not_supported, "dates " + volume_words(md));
    if (!arguments.protect.empty() && !keeps_attribute(run, changed, ATTRIBUTE_READ_ONLY))
        return refuse(not_supported, "protection " + volume_words(md));
    if (!arguments.hide.empty() && !keeps_attribute(run, changed, ATTRIBUTE_HIDDEN))
        return refuse(not_supported, "hidden files " + volume_words(md));
    if (file_region(&stored).length == file_region(info).length) return true;
    return refuse(plain_words, "Its length would change; type " + type_name(&changed) + " has records of " +
                                   std::to_string(stored.record_len * 2) + " bytes");
}

bool name_is_free(MediaDescriptor *md, const FileInfo *info, const FileInfo &changed)
{
    const FileInfo *other = image_find_file(md, md->root, changed.name, 0);
    if (other == nullptr || other == info || std::strcmp(changed.name, info->name) == 0) return true;
    return refuse(target_exists, "file \"" + std::string(changed.name) + "\"");
}

bool change_entry(const AttrRun &run, const FileInfo *info, FileInfo *changed)
{
    *changed = *info;
    if (!take_type(run, changed) || !take_length(run, changed)) return false;
    take_attribute(run.arguments.protect, ATTRIBUTE_READ_ONLY, changed);
    take_attribute(run.arguments.hide, ATTRIBUTE_HIDDEN, changed);
    if (!run.arguments.date.empty()) changed->date = run.date;
    const uint8_t attributes = changed->attributes;
    add_file_info(run.medium->format, changed);
    changed->attributes = attributes;
    return is_kept(run, info, *changed) && name_is_free(run.medium.get(), info, *changed);
}

// ---- what is said --------------------------------------------------------------------------------------

void add_change(std::string *changes, const std::string &what, const std::string &before, const std::string &after)
{
    if (before == after) return;
    if (!changes->empty()) *changes += ", ";
    *changes += what + before + " becomes " + after;
}

void add_attribute(std::string *changes, const char *words)
{
    if (!changes->empty()) *changes += ", ";
    *changes += words;
}

std::string changes_of(const FileInfo *info, const FileInfo &changed)
{
    std::string changes;
    if (info->type != changed.type) add_change(&changes, "type ", type_word(info), type_word(&changed));
    add_change(&changes, "length of records ", std::to_string(info->record_len * 2),
               std::to_string(changed.record_len * 2));
    add_change(&changes, "date ", date_text(info->date), date_text(changed.date));
    const int differing = info->attributes ^ changed.attributes;
    if ((differing & ATTRIBUTE_READ_ONLY) != 0)
        add_attribute(&changes, is_protected(&changed) ? "protected" : "no longer protected");
    return changes.empty() ? "stays as it is" : changes;
}

// ---- all files -----------------------------------------------------------------------------------------

bool refuse_all(const AttrRun &run)
{
    std::vector<const ChangeItem *> files;
    for (const AttrItem &item : run.items) files.push_back(&item.file);
    return refuse_items(run.arguments, files, nothing_changed);
}

// Another type may give two files one name.
void find_twins(AttrRun *run)
{
    std::unordered_set<std::string> names;
    for (AttrItem &item : run->items) {
        if (names.insert(item.changed.name).second || std::strcmp(item.changed.name, item.file.info->name) == 0)
            continue;
        set_error(target_exists, "file \"%s\"", item.changed.name);
        item.file.obstacle = error_words();
    }
}

void plan_changes(AttrRun *run)
{
    for (ChangeItem &file : choose_items(run->medium.get(), run->arguments.words, &run->tally)) {
        AttrItem item = {.file = std::move(file), .changed = {}};
        if (!change_entry(*run, item.file.info, &item.changed)) item.file.obstacle = error_words();
        run->items.push_back(std::move(item));
    }
    find_twins(run);
}

int change_items(AttrRun *run)
{
    MediaDescriptor *md = run->medium.get();
    if (refuse_all(*run)) return exit_failed;
    if (!run->items.empty() && !back_up(run->arguments, md)) return exit_failed;
    for (const AttrItem &item : run->items) {
        tell(run->arguments, item.file.shown + ": " + changes_of(item.file.info, item.changed));
        *item.file.info = item.changed;
        run->tally.done++;
    }
    const bool changed = !run->items.empty() && !run->arguments.dry_run;
    if (changed && !commit_tables(md, nothing_changed)) return exit_failed;
    return end_change(run->arguments, run->tally, "changed");
}

std::string usage_fault(const Arguments &arguments, TimeRecord *ret_date)
{
    const bool nothing = arguments.type.empty() && arguments.system.empty() && arguments.record == 0 &&
                         arguments.date.empty() && arguments.protect.empty() && arguments.hide.empty();
    if (nothing) return "Nothing is to be changed; give --type, --record, --date or --protect";
    if (!arguments.date.empty() && !read_date(arguments.date, ret_date))
        return "--date: \"" + arguments.date + "\" is no date of 1946 to 2045, YYYY-MM-DD or YYYY-MM-DDThh:mm:ss";
    return type_usage_fault(arguments);
}
}

int run_attr(const Arguments &arguments)
{
    AttrRun run = {.arguments = arguments, .medium = nullptr};
    const std::string fault = usage_fault(arguments, &run.date);
    if (!fault.empty()) return report_usage(fault.c_str());
    run.medium = open_for_change(arguments);
    if (run.medium == nullptr) return exit_failed;
    plan_changes(&run);
    return run_told(arguments, [&run] { return change_items(&run); });
}
