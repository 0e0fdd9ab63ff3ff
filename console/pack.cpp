// Joins the free space of a disk. Moving files before tables are written costs files whenever it breaks off; so a
// packed copy is made, which is compared file by file and takes the image's place in one step.
#include "console/pack.h"

#include "base/file_inner.h"
#include "base/output.h"
#include "console/backup.h"
#include "console/matches.h"
#include "console/medium.h"
#include "console/new_file.h"
#include "console/pack_compare.h"
#include "console/progress_bar.h"
#include "console/report.h"
#include "volume/format.h"
#include "volume/open.h"
#include "volume/repack.h"

namespace
{
constexpr uint16_t sorted_reading = OPEN_READ_VOLUME | OPEN_SORT | OPEN_READ_ONLY;
constexpr uint32_t packed_percent = 60;
constexpr uint32_t not_supported = 109;
constexpr uint32_t unknown_format = 203;
constexpr uint32_t unreadable_medium = 215;
constexpr uint32_t changed_meanwhile = 208;

struct PackRun {
    const Arguments &arguments;
    Medium medium;
    FileFacts facts = {}; // of the image file when it was opened
    std::string moves = {};
};

int fail(const PackRun &run)
{
    if (!run.arguments.dry_run) file_printf(file_stderr(), "[tarvo] The image is as it was.\n");
    return exit_failed;
}

int fail_with_error(const PackRun &run)
{
    report_failure();
    return fail(run);
}

// ---- what stands in the way ------------------------------------------------------------------------------

bool may_be_packed(const PackRun &run, const Reading &reading)
{
    const MediaDescriptor *md = run.medium.get();
    if (!is_changeable(md)) return false;
    if (!volume_format(md->format).has_allocation_table) {
        set_error(unknown_format, "no free list");
    } else if (!reading.whole) {
        report_reading(reading, exit_partly);
        set_error(unreadable_medium, "directory not read whole; tarvo check tells more");
    } else {
        return true;
    }
    return false;
}

// Whoever has changed the image since it was opened must not lose that.
bool is_unchanged(const PackRun &run)
{
    FileFacts now;
    if (!file_calls->facts(run.medium->file, &now)) return false;
    if (now.written == run.facts.written && now.bytes == run.facts.bytes) return true;
    set_error(changed_meanwhile, "file \"%s\", which has changed meanwhile", run.medium->msus);
    return false;
}

// ---- the copy --------------------------------------------------------------------------------------------

bool make_packed_copy(const PackRun &run, NewFile *copy, ProgressCallback progress)
{
    if (!(run.arguments.dry_run ? copy->make_elsewhere() : copy->make())) return false;
    if (repack_to(run.medium.get(), copy->path().c_str()) < 0) return false;
    if (progress != nullptr) progress(nullptr, 0, packed_percent);
    return true;
}

void note_moves(PackRun *run, const MediaDescriptor *packed)
{
    const FileInfo *other = next_live(packed->root);
    const MediaDescriptor *md = run->medium.get();
    for (const FileInfo *info = next_live(md->root); info != nullptr; info = next_live(info->next)) {
        if (info->location != other->location) {
            run->moves += visible_name(md, info) + ": record " + std::to_string(info->location) + " -> " +
                          std::to_string(other->location) + "\n";
        }
        other = next_live(other->next);
    }
    const AllocEntry *free = packed->alloc_list;
    if (free == nullptr) return;
    run->moves +=
        "free: " + std::to_string(free->size) + " records from record " + std::to_string(free->location) + " on\n";
}

// The words of a failure come behind the bar.
bool compare_with_copy(PackRun *run, const NewFile &copy, ProgressCallback progress, PackDifference *ret_difference)
{
    const Medium packed(image_open(copy.path().c_str(), run->medium.get(), sorted_reading));
    if (packed == nullptr) return false;
    if (!packed_is_same(run->medium.get(), packed.get(), progress, ret_difference)) return false;
    note_moves(run, packed.get());
    return true;
}

enum class Packing : uint8_t { done, failed, differs };

Packing pack_copy(PackRun *run, NewFile *copy, PackDifference *ret_difference)
{
    const ProgressBar bar(run->medium->msus, run->medium->size);
    if (!make_packed_copy(*run, copy, bar.callback())) return Packing::failed;
    if (compare_with_copy(run, *copy, bar.callback(), ret_difference)) return Packing::done;
    return ret_difference->words.empty() ? Packing::failed : Packing::differs;
}

// ---- the image -------------------------------------------------------------------------------------------

bool back_up(const PackRun &run)
{
    std::string path;
    if (!run.arguments.backup) return true;
    if (!make_backup(run.medium.get(), &path)) return false;
    if (run.arguments.verbose) file_printf(file_stderr(), "%s -> %s\n", run.medium->msus, path.c_str());
    return true;
}

int replace_image(PackRun *run, NewFile *copy)
{
    if (!is_unchanged(*run) || !back_up(*run)) return fail_with_error(*run);
    run->medium.reset();
    if (!copy->take_place(true)) return fail_with_error(*run);
    if (run->arguments.verbose) file_printf(file_stderr(), "%s", run->moves.c_str());
    return exit_done;
}

int pack_image(PackRun *run)
{
    NewFile copy(path_behind_links(run->medium->msus));
    PackDifference difference;
    switch (pack_copy(run, &copy, &difference)) {
    case Packing::failed: return fail_with_error(*run);
    case Packing::differs: report_error_text(difference.name.c_str(), difference.words.c_str()); return fail(*run);
    case Packing::done: break;
    }
    if (!run->arguments.dry_run) return replace_image(run, &copy);
    begin_data();
    output_text(run->moves);
    return finish_data(exit_done);
}
}

int run_pack(const Arguments &arguments)
{
    if (names_a_directory(arguments)) return exit_failed;
    const QuietLog quiet;
    Reading reading = open_for_inspection(arguments, OPEN_SORT);
    if (reading.medium == nullptr) return exit_failed;
    PackRun run = {arguments, std::move(reading.medium)};
    if (!may_be_packed(run, reading)) return report_failure();
    if (!file_calls->facts(run.medium->file, &run.facts) || !run.facts.plain) {
        set_error(not_supported, "packing of what is no image file");
        return report_failure();
    }
    return pack_image(&run);
}
