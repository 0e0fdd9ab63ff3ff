// Files out of a medium: all that can be refused is refused before the first one is copied, what fails after that
// costs one file.
#include "console/get.h"

#include <functional>
#include <map>

#include "console/get_items.h"
#include "console/host_file.h"
#include "console/medium.h"
#include "console/progress_bar.h"
#include "console/report.h"
#include "console/tally.h"
#include "platform/platform.h"
#include "volume/access.h"
#include "volume/content/content.h"
#include "volume/extract_transfer.h"
#include "volume/region.h"

namespace
{
constexpr uint32_t file_not_found = 207;
constexpr uint32_t target_exists = 210;
constexpr uint32_t errors_in_content = 214;
constexpr char output_path[] = "-"; // standard output

// What is copied, and what has gone wrong so far.
struct GetRun {
    const Arguments &arguments;
    MediaDescriptor *md;
    std::vector<Choice> choices;
    std::vector<GetItem> items = {};
    std::string folder = {}; // of the host, made last
    std::string barred = {}; // one that can't be made, with a separator behind it: nothing goes into it
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

GetPlace place_in(const GetRun &run, const GetItem &item)
{
    return place_of(run.md, item, run.arguments, extraction_flags(run.arguments));
}

// ---- one file ------------------------------------------------------------------------------------------

struct Copy {
    MediaDescriptor *md;
    const FileInfo *info;
    const GetPlace &place;
    ExtractOrder order;
};

// The engine fills up with zeros what the medium lacks.
void warn_of_zeros(const Copy &copy)
{
    const Region region = file_region(copy.info);
    const uint64_t end = end_record(copy.md);
    if (end == 0 || region.start + region.length <= end) return;
    report_warning_of(copy.place.name.c_str(),
                      "it reaches behind the end of the medium; zeros take the place of the rest");
}

// From an image the engine takes a file's records in one piece, from the record whose number is its first block.
void warn_of_extents(const Copy &copy)
{
    ExtentList list;
    if (copy.md->access != ACCESS_IMAGE || find_extents(copy.md, copy.info, &list) < 0) return;
    const char *name = copy.place.name.c_str();
    if (list.count > 1) report_warning_of(name, "it has several extents, of which an image gives only the first");
    if (list.count == 0 || list.extents[0].start == copy.info->location) return;
    report_warning_of(name, "blocks of this volume aren't records, and the copy doesn't begin where the file does");
}

Extraction extract_item(const Copy &copy)
{
    if (copy.place.path != output_path) return extract_file(copy.md, copy.info, copy.order);
    return extract_to_handle(copy.md, copy.info, file_stdout(), copy.place.name.c_str(), copy.order.flags,
                             copy.order.progress);
}

// An October of a volume has a month that is none on the host, so that the engine could give the file no date.
void set_october(const Copy &copy)
{
    constexpr int32_t october_of_bcd = 15;
    constexpr int32_t october = 9;
    if (copy.md->format != FORMAT_LIF || copy.place.path == output_path) return;
    TimeRecord date = copy.info->date;
    if (date.tm_mon != october_of_bcd) return;
    date.tm_mon = october;
    file_set_time(copy.place.path.c_str(), &date);
}

// An empty file is what was asked for when a file of unknown content is forced into text.
bool has_arrived(const Copy &copy, const Extraction &extraction)
{
    const bool forced =
        (copy.order.flags & EXTRACT_FORCE) != 0 && find_converter(copy.md->format, copy.info->type) == nullptr;
    return extraction.result >= 0 && (extraction.whole || forced);
}

// Runs one copy. False when not all of the file has arrived; the last error says why.
bool run_copy(const Copy &copy)
{
    warn_of_zeros(copy);
    warn_of_extents(copy);
    global_error = 0;
    platform_set_last_error(0);
    const Extraction extraction = extract_item(copy);
    if (has_arrived(copy, extraction)) {
        set_october(copy);
        return true;
    }
    if (global_error == 0) set_error(errors_in_content, "file \"%s\"", copy.place.name.c_str());
    return false;
}

// The same with a bar, which is gone when this returns. False with the words of the failure.
bool copy_with_bar(Copy *copy, ErrorWords *ret_words)
{
    const ProgressBar bar(copy->place.name.c_str(), copy->info->size);
    // Where the file itself goes to the terminal, a bar would run through it.
    const bool disturbs = copy->place.path == output_path && platform_is_terminal(file_stdout());
    if (!disturbs) copy->order.progress = bar.callback();
    if (run_copy(*copy)) return true;
    take_error(ret_words);
    return false;
}

void fail_item(GetRun *run, const GetPlace &place, const ErrorWords &words)
{
    report_error_of(place.name.c_str(), words);
    run->tally.failed.push_back(place.name);
}

// Makes a folder of the tree. False, with the item counted as failed, when it can't be; that is told once, and not of
// all that would go into it.
bool enter_folder(GetRun *run, const GetPlace &place, const std::string &folder)
{
    if (folder.empty() || folder == run->folder) return true;
    if (!run->barred.empty() && (folder + platform_separator()).starts_with(run->barred)) {
        run->tally.failed.push_back(place.name);
        return false;
    }
    if (make_host_folder(folder)) {
        run->folder = folder;
        return true;
    }
    ErrorWords words;
    take_error(&words);
    fail_item(run, place, words);
    run->barred = folder + platform_separator();
    return false;
}

bool copy_item(GetRun *run, const GetItem &item, const GetPlace &place)
{
    if (item.info->is_directory != 0) return enter_folder(run, place, place.path);
    if (!enter_folder(run, place, place.folder)) return false;
    Copy copy = {run->md, item.info, place, {}};
    copy.order.flags = extraction_flags(run->arguments);
    if (!place.folder.empty()) copy.order.destination = place.folder.c_str();
    if (!run->arguments.output.empty()) copy.order.to_file = run->arguments.output.c_str();
    ErrorWords words;
    if (copy_with_bar(&copy, &words)) return true;
    fail_item(run, place, words);
    return false;
}

void get_item(GetRun *run, const GetItem &item)
{
    const GetPlace place = place_in(*run, item);
    if (!copy_item(run, item, place)) return;
    run->tally.done++;
    if (run->arguments.verbose) file_printf(file_stderr(), "%s -> %s\n", place.name.c_str(), place.path.c_str());
}

// ---- ahead of the first one ----------------------------------------------------------------------------

void report_idle_word(GetRun *run, const std::string &word, const char *more)
{
    set_error(file_not_found, "\"%s\"%s", word.c_str(), more);
    report_failure();
    run->tally.failed.push_back(word);
}

// Words that mean no file count as files that failed.
void report_idle_words(GetRun *run)
{
    const bool recursive = run->arguments.recursive;
    for (const std::string &word : idle_words(run->md, run->choices, recursive)) report_idle_word(run, word, "");
    for (const Choice &choice : run->choices) {
        if (!recursive && choice.directory != nullptr && choice.whole) {
            report_idle_word(run, choice.word, " is a directory");
        }
    }
}

bool is_one_file(const GetRun &run)
{
    return run.items.empty() || (run.items.size() == 1 && run.items[0].info->is_directory == 0);
}

// The item that goes to the same path; nothing keeps these paths, since they would fill the memory.
const GetItem *find_rival(const GetRun &run, const std::multimap<size_t, const GetItem *> &seen,
                          const std::string &path)
{
    const auto [first, last] = seen.equal_range(std::hash<std::string>{}(path));
    for (auto other = first; other != last; ++other) {
        if (place_in(run, *other->second).path == path) return other->second;
    }
    return nullptr;
}

bool target_is_free(const GetRun &run, const GetPlace &place, const GetItem *rival)
{
    if (rival != nullptr) {
        set_error(target_exists, "file \"%s\" of %s", place.path.c_str(), place_in(run, *rival).name.c_str());
    } else if (host_file_exists(place.path.c_str())) {
        set_error(target_exists, "file \"%s\"", place.path.c_str());
    } else {
        return true;
    }
    report_failure_of(place.name.c_str());
    return false;
}

// False, after saying so of each file, when one would take the place of another. Directories take nobody's.
bool targets_are_free(const GetRun &run)
{
    if (run.arguments.overwrite || to_output(run.arguments)) return true;
    std::multimap<size_t, const GetItem *> seen;
    bool free = true;
    for (const GetItem &item : run.items) {
        if (item.info->is_directory != 0) continue;
        const GetPlace place = place_in(run, item);
        const GetItem *rival = find_rival(run, seen, place.path);
        free = target_is_free(run, place, rival) && free;
        if (rival == nullptr) seen.emplace(std::hash<std::string>{}(place.path), &item);
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
    run->items = items_of(run->md, run->choices, run->arguments.recursive);
    if (!run->arguments.output.empty() && !is_one_file(*run)) {
        return report_usage(("Only one file can go there, " + std::to_string(run->items.size()) + " match").c_str());
    }
    report_idle_words(run);
    if (!targets_are_free(*run)) {
        file_printf(file_stderr(), "[tarvo] Nothing was copied.\n");
        return exit_failed;
    }
    if (!prepare_folder(*run)) return exit_failed;
    for (const GetItem &item : run->items) get_item(run, item);
    return finish_tally(run->tally);
}

int get_from(const Arguments &arguments)
{
    const Reading reading = open_for_copying(arguments);
    if (reading.medium == nullptr) return exit_failed;
    MediaDescriptor *md = reading.medium.get();
    GetRun run = {arguments, md, choices_of(md, arguments.words)};
    return report_reading(reading, get_items(&run));
}
}

int run_get(const Arguments &arguments)
{
    if (!arguments.output.empty() && !arguments.folder.empty()) return report_usage("-o and -d exclude each other");
    return get_from(arguments);
}

int run_cat(const Arguments &arguments)
{
    Arguments one_file = arguments;
    one_file.words = {arguments.word};
    one_file.output = output_path;
    one_file.text = !arguments.raw;
    return get_from(one_file);
}
