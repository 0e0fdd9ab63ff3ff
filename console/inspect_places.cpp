// Where everything stands on a volume. All places go into one list by their first record; a walk along it knows, for
// each kind, how far what came before reaches, so that no number of places costs more than their sorting.
#include <algorithm>

#include "console/inspection.h"
#include "console/matches.h"
#include "volume/access.h"
#include "volume/format.h"
#include "volume/region.h"

namespace
{
enum class PlaceKind : uint8_t { table, spare, file, purged, run };
constexpr size_t kinds = 5;

struct Place {
    uint64_t start; // record
    uint64_t end;   // first record behind it
    PlaceKind kind;
    const FileInfo *info = nullptr; // of a file
    const char *name = "";          // of a table
};
using Places = std::vector<Place>;

struct Area { // of files: what free space is counted in
    uint64_t start;
    uint64_t end;
};

Area file_area(const MediaDescriptor *md)
{
    return {md->file_area_start, uint64_t{md->file_area_start} + md->data_size / RECORD_SIZE};
}

// The first record that no file may reach: what the header says, or the image, where that ends earlier.
uint64_t end_of_volume(MediaDescriptor *md)
{
    const uint64_t end = end_record(md);
    return md->records == 0 ? end : std::min<uint64_t>(md->records, end);
}

// ---- the list --------------------------------------------------------------------------------------------

void add_table(Places *places, PlaceKind kind, const char *name, Region region)
{
    if (region.length != 0) places->push_back({region.start, region.start + region.length, kind, nullptr, name});
}

void add_tables(const MediaDescriptor *md, Places *places)
{
    add_table(places, PlaceKind::table, "the head of the volume", {0, 1});
    add_table(places, PlaceKind::table, "the directory", {md->dir_start, md->dir_size});
    add_table(places, PlaceKind::table, "the availability table", {md->alloc_start, md->alloc_size});
    if (!volume_format(md->format).has_spare_directory || md->spare_dir_start == md->dir_start) return;
    add_table(places, PlaceKind::spare, "the spare directory", {md->spare_dir_start, md->dir_size});
    add_table(places, PlaceKind::spare, "the spare availability table", {md->spare_alloc_start, md->alloc_size});
}

void add_files(const MediaDescriptor *md, Places *places)
{
    for (const FileInfo *info = md->root; info != nullptr; info = info->next) {
        const uint64_t records = records_of_file(md, info);
        if (records == 0) continue;
        const PlaceKind kind = info->deleted != 0 ? PlaceKind::purged : PlaceKind::file;
        places->push_back({info->location, info->location + records, kind, info, ""});
    }
}

void add_runs(const MediaDescriptor *md, Places *places)
{
    for (const AllocEntry *run = md->alloc_list; run != nullptr; run = run->next) {
        if (run->size != 0)
            places->push_back({run->location, uint64_t{run->location} + run->size, PlaceKind::run, nullptr, ""});
    }
}

Places all_places(const MediaDescriptor *md)
{
    Places places;
    add_tables(md, &places);
    add_files(md, &places);
    add_runs(md, &places);
    std::stable_sort(places.begin(), places.end(),
                     [](const Place &left, const Place &right) { return left.start < right.start; });
    return places;
}

// ---- what overlaps ---------------------------------------------------------------------------------------

std::string words_for(const MediaDescriptor *md, const Place &place)
{
    if (place.info != nullptr) return visible_name(md, place.info);
    if (place.kind != PlaceKind::run) return place.name;
    return "the free run from record " + std::to_string(place.start) + " on";
}

// Two places that share records. Purged files are nobody's loss. Free runs over spare tables are what some media have
// from the start: whoever hands out records leaves these alone.
void report_overlap(const MediaDescriptor *md, const Place &left, const Place &right, Findings *findings)
{
    const bool with_run = left.kind == PlaceKind::run || right.kind == PlaceKind::run;
    const bool with_spare = left.kind == PlaceKind::spare || right.kind == PlaceKind::spare;
    const std::string words = words_for(md, left) + " and " + words_for(md, right) + " share records from " +
                              std::to_string(std::max(left.start, right.start)) + " to " +
                              std::to_string(std::min(left.end, right.end) - 1);
    if (with_run && with_spare) {
        add_note(findings, FindingKind::space, "%s", words.c_str());
    } else {
        add_fault(findings, with_run ? FindingKind::space : FindingKind::overlap, "%s", words.c_str());
    }
}

void inspect_overlaps(const MediaDescriptor *md, const Places &places, Findings *findings)
{
    const Place *furthest[kinds] = {};
    for (const Place &place : places) {
        if (place.kind == PlaceKind::purged) continue;
        for (const Place *other : furthest) {
            if (other != nullptr && other->end > place.start) report_overlap(md, *other, place, findings);
        }
        const Place *&mine = furthest[static_cast<size_t>(place.kind)];
        if (mine == nullptr || place.end > mine->end) mine = &place;
    }
}

// ---- what reaches too far --------------------------------------------------------------------------------

void inspect_ends(MediaDescriptor *md, const Places &places, Findings *findings)
{
    const uint64_t end = end_of_volume(md);
    for (const Place &place : places) {
        if (place.kind == PlaceKind::run || place.kind == PlaceKind::purged || place.end <= end) continue;
        add_fault(findings, FindingKind::end, "%s reaches to record %llu, the volume ends ahead of %llu",
                  words_for(md, place).c_str(), static_cast<unsigned long long>(place.end - 1),
                  static_cast<unsigned long long>(end));
    }
}

void inspect_run_ends(MediaDescriptor *md, const Places &places, Findings *findings)
{
    const Area area = file_area(md);
    const uint64_t end = end_of_volume(md);
    for (const Place &place : places) {
        if (place.kind != PlaceKind::run) continue;
        const std::string words = words_for(md, place);
        if (place.start < area.start || place.end > area.end) {
            add_fault(findings, FindingKind::space, "%s leaves the file area, records %llu to %llu", words.c_str(),
                      static_cast<unsigned long long>(area.start), static_cast<unsigned long long>(area.end - 1));
        } else if (place.end > end) {
            add_note(findings, FindingKind::space, "%s reaches behind the end of the volume, record %llu",
                     words.c_str(), static_cast<unsigned long long>(end));
        }
    }
}

// ---- what is nobody's ------------------------------------------------------------------------------------

uint64_t count_unclaimed(const Places &places, const Area &area)
{
    uint64_t unclaimed = 0;
    uint64_t reached = area.start;
    for (const Place &place : places) {
        if (place.start >= area.end) break;
        if (place.start > reached) unclaimed += place.start - reached;
        reached = std::max(reached, place.end);
    }
    return unclaimed + (area.end > reached ? area.end - reached : 0);
}

void inspect_unclaimed(const MediaDescriptor *md, const Places &places, Findings *findings)
{
    const uint64_t records = count_unclaimed(places, file_area(md));
    if (records == 0) return;
    add_fault(findings, FindingKind::space, "%llu records belong to no file and aren't free",
              static_cast<unsigned long long>(records));
}
}

// Where logical records are counted, the product may be more than a size in 32 bits can say.
uint64_t records_of_file(const MediaDescriptor *md, const FileInfo *info)
{
    if (md->format == FORMAT_LIF) return file_region(info).length;
    return (uint64_t{info->records} * info->record_len * 2 + RECORD_SIZE - 1) / RECORD_SIZE;
}

void inspect_places(MediaDescriptor *md, Findings *findings)
{
    const Places places = all_places(md);
    inspect_overlaps(md, places, findings);
    inspect_ends(md, places, findings);
    if (!volume_format(md->format).has_allocation_table) return;
    inspect_run_ends(md, places, findings);
    inspect_unclaimed(md, places, findings);
}
