// File by file: what the directory says, and the bytes.
#include "console/pack_compare.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "console/inspection.h"
#include "console/matches.h"
#include "volume/access.h"
#include "volume/region.h"

namespace
{
constexpr uint32_t piece_records = 256;

bool same_date(const TimeRecord &left, const TimeRecord &right)
{
    return std::memcmp(&left, &right, sizeof left) == 0;
}

// Which of a file's fields differs; null for none.
const char *differing_field(const FileInfo *old, const FileInfo *packed)
{
    if (std::strcmp(old->name, packed->name) != 0) return "its name";
    if (old->type != packed->type) return "its type";
    if (old->attributes != packed->attributes) return "its protection";
    if (old->records != packed->records || old->record_len != packed->record_len) return "its records";
    return same_date(old->date, packed->date) ? nullptr : "its date";
}

struct Pieces {
    std::vector<uint8_t> old = std::vector<uint8_t>(size_t{piece_records} * RECORD_SIZE);
    std::vector<uint8_t> packed = old;
};

// A file in both places.
struct Pair {
    MediaDescriptor *old_medium;
    const FileInfo *old;
    MediaDescriptor *packed_medium;
    const FileInfo *packed;
};

bool read_piece(MediumStream *stream, uint32_t records, uint8_t *bytes)
{
    for (uint32_t done = 0; done < records;) {
        const int32_t count = read_stream(stream, bytes + size_t{done} * RECORD_SIZE, records - done);
        if (count <= 0) return false;
        done += static_cast<uint32_t>(count);
    }
    return true;
}

bool same_records(MediumStream *old, MediumStream *packed, uint64_t bytes, Pieces *ret_pieces)
{
    Pieces &pieces = *ret_pieces;
    while (old->next < old->records) {
        const uint64_t left = bytes - uint64_t{old->next} * RECORD_SIZE;
        const uint32_t records = std::min(old->records - old->next, piece_records);
        if (!read_piece(old, records, pieces.old.data()) || !read_piece(packed, records, pieces.packed.data()))
            return false;
        const size_t length = std::min<uint64_t>(left, uint64_t{records} * RECORD_SIZE);
        if (std::memcmp(pieces.old.data(), pieces.packed.data(), length) != 0) return false;
    }
    return true;
}

bool same_bytes(const Pair &pair, Pieces *pieces)
{
    const auto records = static_cast<uint32_t>(file_region(pair.old).length);
    MediumStream from;
    MediumStream to;
    if (records == 0) return true;
    if (open_stream(&from, pair.old_medium, pair.old->location, records, false) < 0) return false;
    bool same = open_stream(&to, pair.packed_medium, pair.packed->location, records, false) == 0;
    if (same) {
        from.unkept = to.unkept = true; // each record is read once
        same = same_records(&from, &to, pair.old->size, pieces);
        close_stream(&to);
    }
    close_stream(&from);
    return same;
}

std::string words_for_pair(const Pair &pair, Pieces *pieces)
{
    const char *field = differing_field(pair.old, pair.packed);
    if (field != nullptr) return std::string("packing would change ") + field;
    const uint32_t part = pair.old->size % RECORD_SIZE;
    if (part != 0) return "packing would lose its last " + std::to_string(part) + " bytes, a part of a record";
    return same_bytes(pair, pieces) ? "" : "packing would change its bytes";
}

uint64_t count_live(const MediaDescriptor *md)
{
    uint64_t count = 0;
    for (const FileInfo *info = next_live(md->root); info != nullptr; info = next_live(info->next)) count++;
    return count;
}

bool copy_is_sound(MediaDescriptor *packed, PackDifference *ret_difference)
{
    Findings findings;
    if (inspect_volume(packed, &findings) && !has_faults(findings)) return true;
    *ret_difference = {packed->msus, has_faults(findings) ? findings.faults[0].text : "it can't be read"};
    return false;
}
}

const FileInfo *next_live(const FileInfo *info)
{
    while (info != nullptr && info->deleted != 0) info = info->next;
    return info;
}

bool packed_is_same(MediaDescriptor *old, MediaDescriptor *packed, ProgressCallback progress,
                    PackDifference *ret_difference)
{
    constexpr uint64_t before = 60; // percent that packing counts for
    const uint64_t files = std::max<uint64_t>(count_live(old), 1);
    const FileInfo *other = next_live(packed->root);
    Pieces pieces;
    uint64_t done = 0;
    for (const FileInfo *info = next_live(old->root); info != nullptr; info = next_live(info->next), done++) {
        if (other == nullptr) {
            *ret_difference = {visible_name(old, info), "it isn't on the packed copy"};
            return false;
        }
        const std::string words = words_for_pair({old, info, packed, other}, &pieces);
        if (!words.empty()) {
            *ret_difference = {visible_name(old, info), words};
            return false;
        }
        other = next_live(other->next);
        const auto percent = static_cast<uint32_t>(before + (100 - before) * (done + 1) / files);
        if (progress != nullptr) progress(nullptr, 0, percent);
    }
    return copy_is_sound(packed, ret_difference);
}
