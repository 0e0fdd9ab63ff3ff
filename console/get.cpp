// Files out of a medium: all that can be refused is refused before the first one is copied, what fails after that
// costs one file.
#include "console/get.h"

#include <algorithm>
#include <map>

#include "console/host_file.h"
#include "console/matches.h"
#include "console/medium.h"
#include "console/progress_bar.h"
#include "console/report.h"
#include "console/tally.h"
#include "platform/platform.h"
#include "volume/access.h"
#include "volume/content/content.h"
#include "volume/extract_inner.h"
#include "volume/region.h"

namespace
{
constexpr uint32_t file_not_found = 207;
constexpr uint32_t target_exists = 210;
constexpr uint32_t errors_in_content = 214;
constexpr char output_path[] = "-"; // standard output

struct GetItem {
    const FileInfo *info;
    std::string name; // on the volume
    std::string path; // on the host
};

// What is copied, and what has gone wrong so far.
struct GetRun {
    const Arguments &arguments;
    MediaDescriptor *md;
    std::vector<GetItem> items = {};
    Tally tally = {};
};

bool to_output(const Arguments &arguments)
{
    return arguments.output == output_path;
}

// A name given by -o stays as it stands, whatever the copy turns out to be.
uint16_t extraction_flags(const Arguments &arguments)
{
    uint32_t flags = arguments.overwrite ? EXTRACT_OVERWRITE : 0;
    if (arguments.text || arguments.force_text || arguments.txt) flags |= EXTRACT_CONVERT;
    if (arguments.force_text) flags |= EXTRACT_FORCE;
    if (arguments.txt && arguments.output.empty()) flags |= EXTRACT_TXT;
    return static_cast<uint16_t>(flags);
}

ExtractOrder order_of(const Arguments &arguments)
{
    ExtractOrder order;
    order.flags = extraction_flags(arguments);
    if (!arguments.folder.empty()) order.destination = arguments.folder.c_str();
    if (!arguments.output.empty()) order.to_file = arguments.output.c_str();
    return order;
}

// ---- one file ------------------------------------------------------------------------------------------

// The engine fills up with zeros what the medium lacks.
void warn_of_zeros(MediaDescriptor *md, const GetItem &item)
{
    const Region region = file_region(item.info);
    const uint64_t end = end_record(md);
    if (end == 0 || region.start + region.length <= end) return;
    report_warning_of(item.name.c_str(), "it reaches behind the end of the medium; zeros take the place of the rest");
}

Extraction extract_item(MediaDescriptor *md, const GetItem &item, const ExtractOrder &order)
{
    if (item.path != output_path) return extract_file(md, item.info, order);
    return extract_to_handle(md, item.info, file_stdout(), item.name.c_str(), order.flags, order.progress);
}

// An October of a volume has a month that is none on the host, so that the engine could give the file no date.
void set_october(const MediaDescriptor *md, const GetItem &item)
{
    constexpr int32_t october_of_bcd = 15;
    constexpr int32_t october = 9;
    if (md->format != FORMAT_LIF || item.path == output_path || item.info->date.tm_mon != october_of_bcd) return;
    TimeRecord date = item.info->date;
    date.tm_mon = october;
    file_set_time(item.path.c_str(), &date);
}

// An empty file is what was asked for when a file of unknown content is forced into text.
bool has_arrived(const MediaDescriptor *md, const GetItem &item, uint16_t flags, const Extraction &extraction)
{
    const bool forced = (flags & EXTRACT_FORCE) != 0 && find_converter(md->format, item.info->type) == nullptr;
    return extraction.result >= 0 && (extraction.whole || forced);
}

// Runs one copy. False when not all of the file has arrived; the last error says why.
bool copy_item(MediaDescriptor *md, const GetItem &item, const ExtractOrder &order)
{
    warn_of_zeros(md, item);
    global_error = 0;
    platform_set_last_error(0);
    const Extraction extraction = extract_item(md, item, order);
    if (has_arrived(md, item, order.flags, extraction)) {
        set_october(md, item);
        return true;
    }
    if (global_error == 0) set_error(errors_in_content, "file \"%s\"", item.name.c_str());
    return false;
}

// The same with a bar, which is gone when this returns. False with the words of the failure.
bool copy_with_bar(MediaDescriptor *md, const GetItem &item, ExtractOrder *order, ErrorWords *ret_words)
{
    const ProgressBar bar(item.name.c_str(), item.info->size);
    // Where the file itself goes to the terminal, a bar would run through it.
    const bool disturbs = item.path == output_path && platform_is_terminal(file_stdout());
    if (!disturbs) order->progress = bar.callback();
    if (copy_item(md, item, *order)) return true;
    take_error(ret_words);
    return false;
}

void get_item(GetRun *run, const GetItem &item)
{
    ExtractOrder order = order_of(run->arguments);
    ErrorWords words;
    if (!copy_with_bar(run->md, item, &order, &words)) {
        report_error_of(item.name.c_str(), words);
        run->tally.failed.push_back(item.name);
        return;
    }
    run->tally.done++;
    if (run->arguments.verbose) file_printf(file_stderr(), "%s -> %s\n", item.name.c_str(), item.path.c_str());
}

// ---- ahead of the first one ----------------------------------------------------------------------------

void choose_items(GetRun *run)
{
    const ExtractOrder order = order_of(run->arguments);
    for (const FileInfo *info : matching_files(run->md, run->arguments.words)) {
        std::string path = to_output(run->arguments) ? output_path : extraction_path(run->md, info, order);
        run->items.push_back({info, visible_name(run->md, info), path});
    }
}

// Patterns that mean nothing count as files that failed.
void report_idle_patterns(GetRun *run)
{
    for (const std::string &pattern : idle_patterns(run->md, run->arguments.words)) {
        set_error(file_not_found, "\"%s\"", pattern.c_str());
        report_failure();
        run->tally.failed.push_back(pattern);
    }
}

// False, after saying so of each file, when one would take the place of another.
bool targets_are_free(const GetRun &run)
{
    if (run.arguments.overwrite || to_output(run.arguments)) return true;
    std::map<std::string, const GetItem *> first;
    bool free = true;
    for (const GetItem &item : run.items) {
        const auto [other, is_first] = first.emplace(item.path, &item);
        if (is_first && !host_file_exists(item.path.c_str())) continue;
        free = false;
        if (is_first) {
            set_error(target_exists, "file \"%s\"", item.path.c_str());
        } else {
            set_error(target_exists, "file \"%s\" of %s", item.path.c_str(), other->second->name.c_str());
        }
        report_failure_of(item.name.c_str());
    }
    return free;
}

bool prepare_folder(const GetRun &run)
{
    if (run.arguments.folder.empty() || run.items.empty() || make_host_folder(run.arguments.folder)) return true;
    report_failure();
    return false;
}

int get_items(GetRun *run)
{
    choose_items(run);
    if (!run->arguments.output.empty() && run->items.size() > 1) {
        return report_usage(("Only one file can go there, " + std::to_string(run->items.size()) + " match").c_str());
    }
    report_idle_patterns(run);
    if (!targets_are_free(*run)) {
        file_printf(file_stderr(), "[tarvo] Nothing was copied.\n");
        return exit_failed;
    }
    if (!prepare_folder(*run)) return exit_failed;
    for (const GetItem &item : run->items) get_item(run, item);
    return finish_tally(run->tally);
}
}

int run_get(const Arguments &arguments)
{
    if (!arguments.output.empty() && !arguments.folder.empty()) return report_usage("-o and -d exclude each other");
    const Reading reading = open_for_copying(arguments);
    if (reading.medium == nullptr) return exit_failed;
    GetRun run = {arguments, reading.medium.get()};
    return report_reading(reading, get_items(&run));
}

int run_cat(const Arguments &arguments)
{
    const Reading reading = open_for_copying(arguments);
    if (reading.medium == nullptr) return exit_failed;
    Arguments one_file = arguments;
    one_file.words = {arguments.word};
    one_file.output = output_path;
    one_file.text = !arguments.raw;
    GetRun run = {one_file, reading.medium.get()};
    return report_reading(reading, get_items(&run));
}
