// What the verbs that change a medium share.
#include "console/change.h"

#include <cstdio>

#include "base/output.h"
#include "console/backup.h"
#include "console/matches.h"
#include "volume/type_text.h"

namespace
{
constexpr uint32_t file_not_found = 207;

void report_idle_patterns(const MediaDescriptor *md, const std::vector<std::string> &patterns, Tally *tally)
{
    for (const std::string &pattern : idle_patterns(md, patterns)) {
        set_error(file_not_found, "\"%s\"", pattern.c_str());
        report_failure();
        tally->failed.push_back(pattern);
    }
}
}

std::vector<ChangeItem> choose_items(MediaDescriptor *md, const std::vector<std::string> &patterns, Tally *tally)
{
    report_idle_patterns(md, patterns, tally);
    std::vector<ChangeItem> items;
    const std::vector<const FileInfo *> files = matching_files(md, patterns);
    auto wanted = files.begin();
    for (FileInfo *info = md->root; info != nullptr && wanted != files.end(); info = info->next) {
        if (info != *wanted) continue;
        items.push_back({.info = info, .shown = visible_name(md, info)});
        ++wanted;
    }
    return items;
}

bool is_protected(const FileInfo *info)
{
    return (info->attributes & ATTRIBUTE_READ_ONLY) != 0;
}

std::string error_words()
{
    ErrorWords words;
    take_error(&words);
    return words.text;
}

bool refuse_items(const Arguments &arguments, const std::vector<const ChangeItem *> &items, const char *nothing)
{
    bool refused = false;
    for (const ChangeItem *item : items) refused = refused || !item->obstacle.empty();
    if (!refused) return false;
    for (const ChangeItem *item : items) {
        if (arguments.dry_run) {
            const char *words = item->obstacle.empty() ? "stays, since others are refused" : item->obstacle.c_str();
            output_format("%s: %s\n", item->shown.c_str(), words);
        } else if (!item->obstacle.empty()) {
            report_error_text(item->shown.c_str(), item->obstacle.c_str());
        }
    }
    if (!arguments.dry_run) file_printf(file_stderr(), "[tarvo] %s\n", nothing);
    return true;
}

void tell(const Arguments &arguments, const std::string &line)
{
    if (arguments.dry_run) {
        output_text(line + "\n");
    } else if (arguments.verbose) {
        file_printf(file_stderr(), "%s\n", line.c_str());
    }
}

void fail_item(const Arguments &arguments, const std::string &shown, const ErrorWords &words, Tally *tally)
{
    tally->failed.push_back(shown);
    if (arguments.dry_run) {
        output_format("%s: %s\n", shown.c_str(), words.text);
    } else {
        report_error_of(shown.c_str(), words);
    }
}

bool back_up(const Arguments &arguments, const MediaDescriptor *md)
{
    if (!arguments.backup || arguments.dry_run) return true;
    std::string path;
    if (!make_backup(md, &path)) {
        report_failure_of("backup");
        return false;
    }
    if (arguments.verbose) file_printf(file_stderr(), "%s -> %s\n", md->msus, path.c_str());
    return true;
}

int end_change(const Arguments &arguments, const Tally &tally, const char *done)
{
    return arguments.dry_run ? tally_code(tally) : finish_tally(tally, done);
}

std::string type_name(const FileInfo *info)
{
    char text[type_text_size];
    type_text(info, text);
    return text;
}

std::string type_word(const FileInfo *info)
{
    char number[8];
    snprintf(number, sizeof number, "#%04x", info->type);
    const std::string name = type_name(info);
    return name[0] == '#' ? name : name + " (" + number + ")";
}

std::string size_and_place(const FileInfo *info)
{
    return std::to_string(info->size) + " bytes, at record " + std::to_string(info->location);
}
