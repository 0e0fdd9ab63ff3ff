// Files off a medium: their entries go, all at once, and their records become free.
#include "console/change.h"
#include "console/change_verbs.h"
#include "console/medium.h"
#include "console/question.h"
#include "console/tables.h"
#include "volume/operations.h"

namespace
{
constexpr char nothing_removed[] = "Nothing was removed.";

struct RmRun {
    const Arguments &arguments;
    Medium medium;
    Tally tally = {};
    std::vector<ChangeItem> items = {};
};

// Whether somebody is asked about a file: where that was wanted, and about a protected one where somebody is there.
bool is_asked_about(const Arguments &arguments, const ChangeItem &item)
{
    return arguments.interactive || (is_protected(item.info) && !arguments.force && input_is_terminal());
}

// False when the user wants none of it.
bool ask(RmRun *run)
{
    Questions questions;
    std::vector<ChangeItem> wanted;
    for (ChangeItem &item : run->items) {
        const std::string file = "File \"" + item.shown + "\" is protected. Remove";
        const std::string text = is_protected(item.info) ? file : "Remove file \"" + item.shown + "\"";
        const bool asked = is_asked_about(run->arguments, item);
        const Answer answer = asked ? questions.ask_or_all(text) : Answer::yes;
        if (answer == Answer::cancel) return false;
        if (answer == Answer::yes) wanted.push_back(std::move(item));
    }
    run->items = std::move(wanted);
    return true;
}

bool refuse_protected(RmRun *run)
{
    std::vector<const ChangeItem *> items;
    for (ChangeItem &item : run->items) {
        const bool stays = is_protected(item.info) && !run->arguments.force && !is_asked_about(run->arguments, item);
        if (stays) item.obstacle = "it is protected; --force removes it";
        items.push_back(&item);
    }
    return refuse_items(run->arguments, items, nothing_removed);
}

void remove_item(RmRun *run, const ChangeItem &item)
{
    tell(run->arguments, item.shown + ": removed, " + size_and_place(item.info));
    image_delete_file(run->medium.get(), item.info, 0);
    run->tally.done++;
}

int remove_items(RmRun *run)
{
    MediaDescriptor *md = run->medium.get();
    if (!run->items.empty() && !back_up(run->arguments, md)) return exit_failed;
    for (const ChangeItem &item : run->items) remove_item(run, item);
    const bool changed = !run->items.empty() && !run->arguments.dry_run;
    if (changed && !commit_tables(md, nothing_removed)) return exit_failed;
    return end_change(run->arguments, run->tally, "removed");
}
}

int run_rm(const Arguments &arguments)
{
    RmRun run = {arguments, open_for_change(arguments)};
    if (run.medium == nullptr) return exit_failed;
    run.items = choose_items(run.medium.get(), arguments.words, &run.tally);
    const int refused = run_told(arguments, [&run] { return int{refuse_protected(&run) ? exit_failed : exit_done}; });
    if (refused != exit_done) return refused;
    if (!ask(&run)) {
        file_printf(file_stderr(), "[tarvo] %s\n", nothing_removed);
        return exit_failed;
    }
    return run_told(arguments, [&run] { return remove_items(&run); });
}
