// Another name for a file: only its entry changes. What has the name already gives way, or is in the way.
#include "console/rename.h"

#include <cstring>

#include "console/matches.h"
#include "console/new_name.h"
#include "console/question.h"
#include "console/stored_entry.h"
#include "console/tables.h"
#include "volume/navigate.h"
#include "volume/operations.h"

namespace
{
constexpr uint32_t more_than_one = 206;
constexpr uint32_t target_exists = 210;
constexpr uint32_t bad_filename = 212;
constexpr char nothing_renamed[] = "Nothing was renamed.";

struct Renaming {
    MediaDescriptor *md;
    ChangeItem item;
    FileInfo renamed; // the entry as it will be
    FileInfo *old;    // has that name; null for none
};

// False with the error set.
bool plan(Renaming *renaming, const std::string &name)
{
    MediaDescriptor *md = renaming->md;
    renaming->renamed = *renaming->item.info;
    if (!rename_entry(md, &renaming->renamed, name)) return false;
    FileInfo stored;
    if (!entry_as_stored(md, &renaming->renamed, &stored) || std::strcmp(stored.name, renaming->renamed.name) != 0) {
        set_error(bad_filename, "file \"%s\"", name.c_str());
        return false;
    }
    renaming->old = image_find_file(md, md->root, renaming->renamed.name, 0);
    return true;
}

bool is_named_so(const Renaming &renaming)
{
    return std::strcmp(renaming.renamed.name, renaming.item.info->name) == 0;
}

// What stands against it without being asked about.
void find_obstacle(const Arguments &arguments, Renaming *renaming)
{
    if (renaming->old == nullptr || is_named_so(*renaming)) return;
    if (!arguments.overwrite && !arguments.interactive) {
        set_error(target_exists, "file \"%s\"", renaming->old->name);
        renaming->item.obstacle = error_words();
    } else if (is_protected(renaming->old) && !arguments.force) {
        renaming->item.obstacle = "file \"" + std::string(renaming->old->name) + "\" is protected; --force replaces it";
    }
}

Answer ask(const Arguments &arguments, const Renaming &renaming)
{
    if (!arguments.interactive || renaming.old == nullptr) return Answer::yes;
    const std::string file = visible_name(renaming.md, renaming.old);
    return Questions().ask("File \"" + file + "\" already exists. Overwrite");
}

int carry_out(const Arguments &arguments, const Renaming &renaming, Tally *tally)
{
    MediaDescriptor *md = renaming.md;
    if (!back_up(arguments, md)) return exit_failed;
    const char *what = renaming.old == nullptr ? "" : ", in place of the old file";
    tell(arguments, renaming.item.shown + " -> " + visible_name(md, &renaming.renamed) + what);
    if (renaming.old != nullptr) image_delete_file(md, renaming.old, 0);
    std::memcpy(renaming.item.info->name, renaming.renamed.name, sizeof renaming.renamed.name);
    tally->done++;
    if (!arguments.dry_run && !commit_tables(md, nothing_renamed)) return exit_failed;
    return end_change(arguments, *tally, "renamed");
}

int refuse(const Arguments &arguments, const Renaming &renaming)
{
    return run_told(arguments, [&] {
        refuse_items(arguments, {&renaming.item}, nothing_renamed);
        return int{exit_failed};
    });
}

int rename_one(const Arguments &arguments, Renaming *renaming, const std::string &name, Tally *tally)
{
    if (plan(renaming, name)) {
        find_obstacle(arguments, renaming);
    } else {
        renaming->item.obstacle = error_words();
    }
    if (!renaming->item.obstacle.empty()) return refuse(arguments, *renaming);
    const Answer answer = is_named_so(*renaming) ? Answer::no : ask(arguments, *renaming);
    if (answer == Answer::cancel) {
        file_printf(file_stderr(), "[tarvo] %s\n", nothing_renamed);
        return exit_failed;
    }
    if (answer == Answer::no) {
        tally->done++;
        return finish_tally(*tally, "renamed");
    }
    return run_told(arguments, [&] { return carry_out(arguments, *renaming, tally); });
}
}

int rename_item(const Arguments &arguments, MediaDescriptor *md, std::vector<ChangeItem> items, const std::string &name,
                Tally tally)
{
    if (items.empty()) return finish_tally(tally, "renamed");
    if (items.size() > 1) {
        set_error(more_than_one, "%lu files and the name \"%s\"", static_cast<unsigned long>(items.size()),
                  name.c_str());
        return report_failure();
    }
    Renaming renaming = {.md = md, .item = std::move(items.front()), .renamed = {}, .old = nullptr};
    return rename_one(arguments, &renaming, name, &tally);
}
