// What the verbs that change a medium share: the files that they mean, what is said of each, and what is refused.
#pragma once

#include <string>
#include <vector>

#include "base/error.h"
#include "console/report.h"
#include "console/tally.h"
#include "console/verbs.h"
#include "volume/media.h"

struct ChangeItem {
    FileInfo *info;            // in the list of its medium
    std::string shown;         // as messages call it
    std::string obstacle = {}; // why nothing is changed because of this file, empty for no reason
};

// The files that the patterns mean, in the order of the directory. A pattern that means none is reported, and counts as
// a file that failed.
std::vector<ChangeItem> choose_items(MediaDescriptor *md, const std::vector<std::string> &patterns, Tally *tally);

bool is_protected(const FileInfo *info);

// The words of the last error, for an obstacle.
std::string error_words();

// Whether something is in the way of one of the items. Then each is told why it stays as it is, and `nothing`, a
// sentence, ends it.
bool refuse_items(const Arguments &arguments, const std::vector<const ChangeItem *> &items, const char *nothing);

// What becomes of a file: a dry run's data, with --verbose a line on standard error, otherwise nothing.
void tell(const Arguments &arguments, const std::string &line);

// A file that failed, with the words for it.
void fail_item(const Arguments &arguments, const std::string &shown, const ErrorWords &words, Tally *tally);

// Where --backup asks for it, and it isn't a dry run: the copy ahead of the first change. False, with what failed
// reported.
bool back_up(const Arguments &arguments, const MediaDescriptor *md);

// How the run ends: what failed is told once more.
int end_change(const Arguments &arguments, const Tally &tally, const char *done);

std::string type_name(const FileInfo *info);
std::string type_word(const FileInfo *info);      // "ASCII (#0001)"
std::string size_and_place(const FileInfo *info); // "300 bytes, at record 12"

// Runs the step whose words are the data of a dry run.
template <class Step> int run_told(const Arguments &arguments, Step step)
{
    if (!arguments.dry_run) return step();
    begin_data();
    return finish_data(step());
}
