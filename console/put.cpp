// Files to a medium. The tables of the medium are written once, behind the last file; ahead of a file that takes the
// place of an old one they are written too, so that whatever fails then costs at most that one. A file that fails
// leaves no entry behind.
#include "console/put.h"

#include <string_view>
#include <unordered_map>

#include "base/output.h"
#include "console/change.h"
#include "console/matches.h"
#include "console/medium.h"
#include "console/progress_bar.h"
#include "console/put_names.h"
#include "console/put_source.h"
#include "console/report.h"
#include "console/tally.h"
#include "platform/platform.h"
#include "volume/allocation.h"
#include "volume/content/content.h"
#include "volume/navigate.h"
#include "volume/operations.h"
#include "volume/region.h"
#include "volume/table.h"
#include "volume/type_text.h"

namespace
{
constexpr uint32_t not_supported = 109;
constexpr uint32_t target_exists = 210;

struct PutItem {
    const std::string &source; // as it was given
    const char *shown;         // as messages call it
    std::string name;          // from which the engine makes the entry
    std::string stored;        // in the directory
    std::string obstacle = {}; // why nothing is copied because of this file, empty for no reason
    bool done = false;
};

struct PutRun {
    const Arguments &arguments;
    Medium medium;
    std::vector<PutItem> items = {};
    Tally tally = {};
    ListSurvey survey = {};
    bool dirty = false;  // the list has files that the tables on the medium don't know
    bool backed = false; // the copy of the image has been made
    bool broken = false; // nothing more can be done
    bool torn = false;   // the tables couldn't be written
};

// ---- what is said --------------------------------------------------------------------------------------

void tell_failure(PutRun *run, const PutItem &item, const ErrorWords &words)
{
    run->tally.failed.push_back(item.shown);
    if (!run->arguments.dry_run) {
        report_error_of(item.shown, words);
        return;
    }
    const char *between = words.system[0] == '\0' ? "" : ": ";
    output_format("%s: %s%s%s\n", item.shown, words.text, between, words.system);
}

bool becomes_content(const PutRun &run, const PutItem &item, const FileInfo *entry)
{
    const bool wanted = run.arguments.text || has_text_ending(run.arguments, item.name);
    const ContentConverter *converter = find_converter(run.medium->format, entry->type);
    return wanted && converter != nullptr && converter->line != nullptr;
}

void tell_success(const PutRun &run, const PutItem &item, const Insertion &insertion)
{
    const FileInfo *entry = insertion.entry;
    const std::string name = visible_name(run.medium.get(), entry);
    if (!run.arguments.dry_run) {
        if (run.arguments.verbose) file_printf(file_stderr(), "%s -> %s\n", item.shown, name.c_str());
        return;
    }
    char type[type_text_size];
    type_text(entry, type);
    output_format("%s -> %s: type %s, %lu bytes%s, at record %lu%s%s\n", item.shown, name.c_str(), type,
                  static_cast<unsigned long>(entry->size), becomes_content(run, item, entry) ? " made of text" : "",
                  static_cast<unsigned long>(entry->location),
                  insertion.deleted_old ? ", in place of the old file" : "", insertion.whole ? "" : ", not all of it");
}

// ---- the medium ----------------------------------------------------------------------------------------

// What fails here ends everything.
bool fail_run(PutRun *run, const char *name)
{
    report_failure_of(name);
    run->broken = true;
    return false;
}

bool write_tables(PutRun *run)
{
    MediaDescriptor *md = run->medium.get();
    if (!run->dirty || run->arguments.dry_run) return true;
    const bool written = update_file_table(md, 0) == 0 && update_file_table(md, 1) == 0 &&
                         update_alloc_table(md, 0) == 0 && update_alloc_table(md, 1) == 0;
    run->dirty = false;
    run->torn = !written;
    return written || fail_run(run, "directory, where files that were copied may be missing");
}

bool back_up(PutRun *run)
{
    if (run->backed) return true;
    run->backed = back_up(run->arguments, run->medium.get());
    run->broken = !run->backed;
    return run->backed;
}

// ---- one file ------------------------------------------------------------------------------------------

uint16_t insertion_flags(const Arguments &arguments)
{
    uint32_t flags = arguments.overwrite ? INSERT_OVERWRITE : 0;
    if (arguments.text) flags |= INSERT_CONVERT | INSERT_FORCE;
    if (arguments.txt) flags |= INSERT_CONVERT | INSERT_TXT;
    return static_cast<uint16_t>(flags);
}

Insertion insert_item(PutRun *run, const PutItem &item, PutSource *source, ProgressCallback progress)
{
    FileInfo entry = new_entry(run->arguments);
    entry.date = source->date;
    InsertOrder order;
    order.name = item.name.c_str();
    order.flags = insertion_flags(run->arguments);
    order.progress = progress;
    order.survey = &run->survey;
    order.only_plan = run->arguments.dry_run;
    global_error = 0;
    platform_set_last_error(0);
    return insert_from(run->medium.get(), &entry, &source->source, order);
}

// Copies, or plans to. False when the file isn't there then, with the words of the failure.
bool try_item(PutRun *run, PutItem *item, PutSource *source, Insertion *ret_insertion, ErrorWords *ret_words)
{
    const ProgressBar bar(item->shown, source->source.size);
    *ret_insertion = insert_item(run, *item, source, bar.callback());
    if (ret_insertion->result >= 0 && ret_insertion->entry != nullptr) {
        run->dirty = item->done = true;
        return true;
    }
    take_error(ret_words);
    return false;
}

// What is said of a file that is there, and not quite as it should be.
void warn_of_losses(PutRun *run, const PutItem &item, const Insertion &insertion)
{
    const int32_t record = run->arguments.record;
    const char *name = item.shown;
    if (record != 0 && insertion.entry->record_len * 2 != static_cast<uint32_t>(record)) {
        report_warning_of(name, "its type has no length of records");
    }
    if (insertion.whole) return;
    if (!run->arguments.dry_run) report_warning_of(name, "not all of it was copied");
    run->tally.cut++;
}

// What was planned before goes into the list that was read anew.
void plan_again(PutRun *run)
{
    for (PutItem &item : run->items) {
        PutSource source;
        Insertion insertion;
        ErrorWords words;
        if (item.done && open_source(item.source, &source)) try_item(run, &item, &source, &insertion, &words);
    }
}

// The engine gives back as many records as the file has of its own length; what it got was counted in those of 256
// bytes.
void remove_entry(MediaDescriptor *md, FileInfo *entry)
{
    entry->records = static_cast<uint32_t>(file_region(entry).length);
    image_delete_file(md, entry, 0);
}

// Nothing of a failed file stays in the list, and the file whose place it was to take is in it again.
void take_back(PutRun *run, const Insertion &insertion)
{
    run->survey = {};
    if (!insertion.deleted_old) {
        if (insertion.entry != nullptr) remove_entry(run->medium.get(), insertion.entry);
        return;
    }
    run->medium.reset();
    run->medium = open_again(run->arguments);
    run->dirty = false;
    if (run->medium == nullptr) {
        run->broken = true;
    } else if (run->arguments.dry_run) {
        plan_again(run);
    }
}

bool takes_a_place(const PutRun &run, const PutItem &item)
{
    MediaDescriptor *md = run.medium.get();
    return run.arguments.overwrite && image_find_file(md, md->root, item.stored.c_str(), 0) != nullptr;
}

void put_item(PutRun *run, PutItem *item)
{
    PutSource source;
    ErrorWords words;
    if (!open_source(item->source, &source)) {
        take_error(&words);
        tell_failure(run, *item, words);
        return;
    }
    if (!back_up(run) || (takes_a_place(*run, *item) && !write_tables(run))) {
        run->tally.failed.push_back(item->shown);
        return;
    }
    Insertion insertion;
    if (try_item(run, item, &source, &insertion, &words)) {
        tell_success(*run, *item, insertion);
        warn_of_losses(run, *item, insertion);
        run->tally.done++;
        return;
    }
    tell_failure(run, *item, words);
    take_back(run, insertion);
}

// ---- all files -----------------------------------------------------------------------------------------

PutItem item_for(const PutRun &run, const std::string &source)
{
    const MediaDescriptor *md = run.medium.get();
    PutItem item = {.source = source,
                    .shown = source == "-" ? "standard input" : source.c_str(),
                    .name = name_for_engine(md, run.arguments, source),
                    .stored = ""};
    item.stored = stored_name(md, run.arguments, item.name);
    return item;
}

// What is in the way of a name: a file of the volume, or one that is copied before. Empty for nothing.
std::string find_obstacle(const PutRun &run, const PutItem &item, const PutItem *other)
{
    MediaDescriptor *md = run.medium.get();
    if (other != nullptr) {
        set_error(target_exists, "file \"%s\" of %s", item.stored.c_str(), other->shown);
    } else if (!run.arguments.overwrite && image_find_file(md, md->root, item.stored.c_str(), 0) != nullptr) {
        set_error(target_exists, "file \"%s\"", item.stored.c_str());
    } else if (!can_be_listed(md, run.arguments, item.name)) {
        set_error(not_supported, "file \"%s\" of this type", item.stored.c_str());
    } else {
        return "";
    }
    ErrorWords words;
    take_error(&words);
    return words.text;
}

bool find_obstacles(PutRun *run)
{
    std::unordered_map<std::string_view, const PutItem *> first;
    first.reserve(run->items.size());
    bool found = false;
    for (PutItem &item : run->items) {
        const auto [place, is_first] = first.emplace(item.stored, &item);
        item.obstacle = find_obstacle(*run, item, is_first ? nullptr : place->second);
        found = found || !item.obstacle.empty();
    }
    return found;
}

// Says of each file why it isn't copied.
int refuse_all(const PutRun &run)
{
    for (const PutItem &item : run.items) {
        if (run.arguments.dry_run) {
            const char *words = item.obstacle.empty() ? "not copied, since others can't be" : item.obstacle.c_str();
            output_format("%s: %s\n", item.shown, words);
        } else if (!item.obstacle.empty()) {
            report_error_text(item.shown, item.obstacle.c_str());
        }
    }
    if (!run.arguments.dry_run) file_printf(file_stderr(), "[tarvo] Nothing was copied.\n");
    return exit_failed;
}

int put_items(PutRun *run)
{
    run->items.reserve(run->arguments.words.size());
    for (const std::string &source : run->arguments.words) run->items.push_back(item_for(*run, source));
    if (find_obstacles(run)) return refuse_all(*run);
    for (PutItem &item : run->items) {
        if (run->broken) {
            run->tally.failed.push_back(item.shown);
        } else {
            put_item(run, &item);
        }
    }
    if (!run->broken) write_tables(run);
    const int code = run->arguments.dry_run ? tally_code(run->tally) : finish_tally(run->tally);
    return run->torn ? int{exit_failed} : code;
}

int dry_run(PutRun *run)
{
    begin_data();
    return finish_data(put_items(run));
}
}

int run_put(const Arguments &arguments)
{
    const std::string fault = put_usage_fault(arguments);
    if (!fault.empty()) return report_usage(fault.c_str());
    PutRun run = {arguments, open_for_change(arguments)};
    if (run.medium == nullptr) return exit_failed;
    if (!type_is_known(run.medium.get(), arguments)) return report_failure();
    return arguments.dry_run ? dry_run(&run) : put_items(&run);
}
