// Files of a medium to another one, or under another name on their own. Records go to free places only, and an old file
// keeps its entry until all is copied: the tables, written once at the end, are what makes the change. What fails
// before leaves the medium as it was.
#include "console/change_verbs.h"

#include <cstring>

#include "console/copy_plan.h"
#include "console/matches.h"
#include "console/progress_bar.h"
#include "console/question.h"
#include "console/rename.h"
#include "console/stored_entry.h"
#include "console/tables.h"
#include "platform/platform.h"
#include "volume/entries.h"
#include "volume/format.h"
#include "volume/names.h"
#include "volume/operations_inner.h"
#include "volume/region.h"
#include "volume/type_text.h"

namespace
{
constexpr uint32_t not_supported = 109;
constexpr uint32_t more_than_one = 206;

const char *done_word(const CopyRun &run)
{
    return run.moving ? "moved" : "copied";
}

const char *nothing_done(const CopyRun &run)
{
    return run.moving ? "Nothing was moved." : "Nothing was copied.";
}

// ---- what is said --------------------------------------------------------------------------------------

std::string place_of(const CopyRun &run)
{
    std::string place;
    if (run.other != nullptr) place.append(run.other->msus).append(":");
    return place;
}

// "type ASCII", or what another format makes of it.
std::string type_of_copy(const CopyItem &item)
{
    const FileInfo *from = item.file.info;
    if (item.entry->type == from->type) return "type " + type_name(from);
    return "type " + type_word(from) + " becomes " + type_word(item.entry);
}

void tell_copy(const CopyRun &run, const CopyItem &item)
{
    std::string line = item.file.shown + " -> " + place_of(run) + visible_name(target_of(run), item.entry);
    line += ": " + type_of_copy(item) + ", " + size_and_place(item.entry);
    if (item.old != nullptr) line += ", in place of the old file";
    tell(run.arguments, line);
}

// A name that another format has no room for, or has other letters for.
void warn_of_name(const CopyRun &run, const CopyItem &item)
{
    if (!run.destination.name.empty() || run.arguments.dry_run) return;
    char before[VISIBLE_NAME_SIZE];
    char after[VISIBLE_NAME_SIZE];
    decode_filename(item.file.info, run.source.medium->format, before);
    decode_filename(item.entry, target_of(run)->format, after);
    if (std::strcmp(before, after) == 0) return;
    const std::string words = "its name becomes " + visible_name(target_of(run), item.entry);
    report_warning_of(item.file.shown.c_str(), words.c_str());
}

// ---- one file ------------------------------------------------------------------------------------------

// The old file is in nobody's way under a name that no file has. It keeps its records until the end.
void hide_old(const CopyItem &item)
{
    if (item.old != nullptr) item.old->name[0] = '\0';
}

void show_old(CopyItem *item)
{
    if (item->old != nullptr) std::memcpy(item->old->name, item->old_name.c_str(), item->old_name.size() + 1);
}

// Another format keeps length of records and the like in places of its own, and may have no room for all of a type. The
// entry becomes what will be read of it.
bool settle_entry(const CopyRun &run, FileInfo *entry)
{
    MediaDescriptor *md = target_of(run);
    if (md->format == run.source.medium->format) return true;
    add_file_info(md->format, entry);
    FileInfo stored;
    bool read = entry_as_stored(md, entry, &stored);
    if (read && stored.record_len != entry->record_len) {
        const uint64_t length = uint64_t{stored.record_len} * 2;
        entry->record_len = stored.record_len;
        entry->records = static_cast<uint32_t>((entry->size + length - 1) / length);
        read = entry_as_stored(md, entry, &stored);
    }
    if (!read || file_region(&stored).length != file_region(entry).length) {
        set_error(not_supported, "files like this on a %s volume", volume_format(md->format).name);
        return false;
    }
    char type[type_text_size];
    type_text(&stored, type);
    set_type_text(entry, type);
    entry->type = stored.type;
    return true;
}

// False with the words of the failure as the last error, nothing of the copy left in the list.
bool copy_item(const CopyRun &run, CopyItem *item)
{
    const ProgressBar bar(item->file.shown.c_str(), item->from.size);
    const CopyOrder order = {.to_file = item->to_file.empty() ? nullptr : item->to_file.c_str(),
                             .progress = bar.callback(),
                             .only_plan = run.arguments.dry_run};
    platform_set_last_error(0);
    const Copying copying = copy_file(run.source.medium.get(), &item->from, target_of(run), order);
    if (copying.result >= 0 && copying.entry != nullptr && settle_entry(run, copying.entry)) {
        item->entry = copying.entry;
        return true;
    }
    if (copying.entry != nullptr) image_delete_file(target_of(run), copying.entry, 0);
    return false;
}

void take_item(CopyRun *run, CopyItem *item)
{
    hide_old(*item);
    if (copy_item(*run, item)) {
        tell_copy(*run, *item);
        warn_of_name(*run, *item);
        run->tally.done++;
        return;
    }
    ErrorWords words;
    take_error(&words);
    show_old(item);
    fail_item(run->arguments, item->file.shown, words, &run->tally);
}

// ---- all files -----------------------------------------------------------------------------------------

void remove_old_files(CopyRun *run)
{
    for (CopyItem &item : run->items) {
        if (item.entry == nullptr || item.old == nullptr) continue;
        show_old(&item);
        image_delete_file(target_of(*run), item.old, 0);
        item.old = nullptr;
    }
}

// Once the copies are safe. What can't be removed is on both media then.
bool remove_originals(CopyRun *run)
{
    MediaDescriptor *md = run->source.medium.get();
    for (const CopyItem &item : run->items) {
        if (item.entry != nullptr) image_delete_file(md, item.file.info, 0);
    }
    return commit_tables(md, "The files were copied, and are on both media.");
}

bool back_up_media(const CopyRun &run)
{
    return back_up(run.arguments, target_of(run)) && (!run.moving || back_up(run.arguments, run.source.medium.get()));
}

int write_changes(CopyRun *run)
{
    if (run->tally.done != 0 && !run->arguments.dry_run) {
        remove_old_files(run);
        if (!commit_tables(target_of(*run), nothing_done(*run))) return exit_failed;
        if (run->moving && !remove_originals(run)) return exit_partly;
    }
    return end_change(run->arguments, run->tally, done_word(*run));
}

int take_items(CopyRun *run)
{
    std::vector<const ChangeItem *> files;
    for (const CopyItem &item : run->items) files.push_back(&item.file);
    if (refuse_items(run->arguments, files, nothing_done(*run))) return exit_failed;
    if (!run->items.empty() && !back_up_media(*run)) return exit_failed;
    for (CopyItem &item : run->items) {
        if (item.wanted) take_item(run, &item);
    }
    return write_changes(run);
}

// False when the user wants none of it.
bool ask(CopyRun *run)
{
    Questions questions;
    for (CopyItem &item : run->items) {
        if (!run->arguments.interactive || item.old == nullptr || !item.file.obstacle.empty()) continue;
        const std::string file = visible_name(target_of(*run), item.old);
        const Answer answer = questions.ask("File \"" + file + "\" already exists. Overwrite");
        if (answer == Answer::cancel) return false;
        item.wanted = answer == Answer::yes;
    }
    return true;
}

bool has_obstacle(const CopyRun &run)
{
    for (const CopyItem &item : run.items) {
        if (!item.file.obstacle.empty()) return true;
    }
    return false;
}

int copy_files(CopyRun *run, std::vector<ChangeItem> files)
{
    if (!run->destination.name.empty() && files.size() > 1) {
        set_error(more_than_one, "%lu files and the name \"%s\"", static_cast<unsigned long>(files.size()),
                  run->destination.name.c_str());
        return report_failure();
    }
    plan_copies(run, std::move(files));
    if (!has_obstacle(*run) && !ask(run)) {
        file_printf(file_stderr(), "[tarvo] %s\n", nothing_done(*run));
        return exit_failed;
    }
    return run_told(run->arguments, [run] { return take_items(run); });
}

// ---- the media -----------------------------------------------------------------------------------------

bool open_other(CopyRun *run)
{
    if (run->destination.medium.empty()) return true;
    Arguments arguments = run->arguments;
    arguments.medium = run->destination.medium;
    run->other = open_for_change(arguments);
    if (run->other != nullptr) return true;
    if (run->destination.guessed) {
        file_printf(file_stderr(), "[tarvo]        \"%s\" is a file of the host; \":%s\" is a name on the medium.\n",
                    arguments.medium.c_str(), arguments.medium.c_str());
    }
    return false;
}

// What only gives its files away is only read.
bool open_source(CopyRun *run)
{
    if (!run->moving && !run->destination.medium.empty()) {
        run->source = open_for_copying(run->arguments);
    } else {
        run->source.medium = open_for_change(run->arguments);
    }
    return run->source.medium != nullptr;
}

int run_copying(const Arguments &arguments, bool moving)
{
    if (arguments.words.size() < 2) return report_usage("DEST is required");
    CopyRun run = {.arguments = arguments, .moving = moving};
    const std::string fault = find_destination(arguments.words.back(), arguments.medium, &run.destination);
    if (!fault.empty()) return report_usage(fault.c_str());
    if (!open_source(&run) || !open_other(&run)) return exit_failed;
    const std::vector<std::string> names(arguments.words.begin(), arguments.words.end() - 1);
    std::vector<ChangeItem> files = choose_items(run.source.medium.get(), names, &run.tally);
    if (!moving || run.other != nullptr) return report_reading(run.source, copy_files(&run, std::move(files)));
    if (run.destination.name.empty()) { // each file is where it goes already
        run.tally.done = static_cast<uint32_t>(files.size());
        return finish_tally(run.tally, done_word(run));
    }
    return rename_item(arguments, run.source.medium.get(), std::move(files), run.destination.name, run.tally);
}
}

int run_cp(const Arguments &arguments)
{
    return run_copying(arguments, false);
}

int run_mv(const Arguments &arguments)
{
    return run_copying(arguments, true);
}
