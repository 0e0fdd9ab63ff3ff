// The directory slot by slot, and its names.
#include <unordered_map>

#include "base/convert.h"
#include "base/error.h"
#include "console/inspection.h"
#include "console/matches.h"
#include "console/roman8.h"
#include "volume/access.h"
#include "volume/allocation.h"
#include "volume/entries.h"
#include "volume/format.h"

namespace
{
constexpr uint32_t lif_date = 20; // of an entry
constexpr uint8_t october_as_16 = 0x16;

struct Slot {
    uint64_t record;
    uint32_t number; // in its record
    const uint8_t *bytes;
};

// What the engine says of an entry, in UTF-8.
std::string error_words()
{
    char words[ERROR_TEXT_SIZE];
    char text[ERROR_TEXT_SIZE * utf8_bytes];
    get_error(words);
    return {text, roman8_to_utf8(text, words)};
}

bool is_bcd_between(uint8_t value, uint8_t least, uint8_t most)
{
    return (value & 0x0F) <= 9 && value >= least && value <= most;
}

bool is_date(const uint8_t *bcd)
{
    return is_bcd_between(bcd[0], 0x00, 0x99) && is_bcd_between(bcd[1], 0x01, 0x12) &&
           is_bcd_between(bcd[2], 0x01, 0x31) && is_bcd_between(bcd[3], 0x00, 0x23) &&
           is_bcd_between(bcd[4], 0x00, 0x59) && is_bcd_between(bcd[5], 0x00, 0x59);
}

// An entry without a date has none at all, which is usual.
bool is_blank(const uint8_t *bcd)
{
    return (bcd[0] | bcd[1] | bcd[2] | bcd[3] | bcd[4] | bcd[5]) == 0;
}

void inspect_date(const MediaDescriptor *md, const FileInfo &info, const uint8_t *bcd, Findings *findings)
{
    if (is_blank(bcd) || is_date(bcd)) return;
    const std::string name = visible_name(md, &info);
    uint8_t october[6] = {bcd[0], 0x10, bcd[2], bcd[3], bcd[4], bcd[5]};
    if (bcd[1] == october_as_16 && is_date(october)) {
        add_note(findings, FindingKind::october, "%s: the October of its date is stored as month 16", name.c_str());
        return;
    }
    add_note(findings, FindingKind::date, "%s: its date is none (%02X %02X %02X %02X %02X %02X)", name.c_str(),
             unsigned{bcd[0]}, unsigned{bcd[1]}, unsigned{bcd[2]}, unsigned{bcd[3]}, unsigned{bcd[4]},
             unsigned{bcd[5]});
}

// False at the end of the directory.
bool inspect_slot(MediaDescriptor *md, const Slot &slot, Findings *findings)
{
    FileInfo info = {};
    uint32_t size = 0;
    const int32_t result = get_file_info(md, &info, slot.bytes, &size);
    if (result == 0) return false;
    const bool is_left_over = info.deleted != 0 && info.name[0] == '\0'; // of a purged file, whose name has gone
    if (result < 0 && !is_left_over) {
        add_fault(findings, FindingKind::entry, "entry %lu in record %llu of the directory: %s",
                  static_cast<unsigned long>(slot.number), static_cast<unsigned long long>(slot.record),
                  error_words().c_str());
    } else if (result > 0 && md->format == FORMAT_LIF && info.deleted == 0) {
        inspect_date(md, info, slot.bytes + lif_date, findings);
    }
    return true;
}
}

bool inspect_entries(MediaDescriptor *md, Findings *findings)
{
    const uint64_t end = end_record(md);
    for (uint32_t index = 0; index < md->dir_size; index++) {
        const uint64_t record = uint64_t{md->dir_start} + index;
        if (record >= end) {
            add_fault(findings, FindingKind::entry, "the directory reaches behind the end of the medium, record %llu",
                      static_cast<unsigned long long>(end));
            return true;
        }
        uint8_t bytes[RECORD_SIZE];
        if (read_record(md, static_cast<uint32_t>(record), bytes) < 0) return false;
        uint32_t offset = index == 0 ? volume_format(md->format).first_entry : 0;
        for (uint32_t number = 0; offset + md->dir_entry_size <= RECORD_SIZE; offset += md->dir_entry_size, number++) {
            if (!inspect_slot(md, {record, number, bytes + offset}, findings)) return true;
        }
    }
    return true;
}

void inspect_names(const MediaDescriptor *md, Findings *findings)
{
    std::unordered_map<std::string_view, const FileInfo *> first;
    for (const FileInfo *info = md->root; info != nullptr; info = info->next) {
        if (info->deleted != 0) continue;
        const auto [other, is_first] = first.emplace(info->name, info);
        if (is_first) continue;
        add_fault(findings, FindingKind::name, "%s at record %lu bears the name of %s at record %lu",
                  visible_name(md, info).c_str(), static_cast<unsigned long>(info->location),
                  visible_name(md, other->second).c_str(), static_cast<unsigned long>(other->second->location));
    }
}

bool inspect_volume(MediaDescriptor *md, Findings *findings)
{
    // The opening goes on without a table that it couldn't read.
    if (get_alloc_table(md, 0) < 0 || !inspect_entries(md, findings)) return false;
    inspect_names(md, findings);
    inspect_places(md, findings);
    return inspect_spares(md, findings);
}
