// Spare tables, held against the main ones entry by entry up to the end mark: what stands behind that is never read.
#include <algorithm>
#include <cstring>
#include <vector>

#include "base/convert.h"
#include "console/inspection.h"
#include "volume/access.h"
#include "volume/format.h"

namespace
{
struct Table {
    const char *name;
    uint32_t main;
    uint32_t spare;
    uint32_t records;
    uint32_t head; // bytes ahead of the first entry
    uint32_t entry_size;
    bool (*ends)(const uint8_t *entry);
};

bool ends_disk_directory(const uint8_t *entry)
{
    return get_word(entry) == 0;
}

bool ends_with_ones(const uint8_t *entry)
{
    return get_word(entry) == 0xFFFF;
}

constexpr uint32_t piece_records = 64;

struct Piece { // of both tables
    uint32_t first = 0;
    uint32_t count = 0;
    std::vector<uint8_t> main = std::vector<uint8_t>(size_t{piece_records} * RECORD_SIZE);
    std::vector<uint8_t> spare = main;
};

enum class Comparison : uint8_t { same, ended, differs };

Comparison compare_records(const Table &table, const uint8_t *main, const uint8_t *spare, uint32_t head)
{
    if (std::memcmp(main, spare, head) != 0) return Comparison::differs;
    for (uint32_t offset = head; offset + table.entry_size <= RECORD_SIZE; offset += table.entry_size) {
        const bool end = table.ends(main + offset);
        if (end != table.ends(spare + offset)) return Comparison::differs;
        if (end) return Comparison::ended;
        if (std::memcmp(main + offset, spare + offset, table.entry_size) != 0) return Comparison::differs;
    }
    return Comparison::same;
}

// Many records at once, since the two tables stand apart. False with the error of a failed read.
bool read_piece(MediaDescriptor *md, uint32_t first, uint32_t count, uint8_t *bytes)
{
    MediumStream stream;
    if (open_stream(&stream, md, first, count, false) < 0) return false;
    bool good = true;
    while (good && stream.next < count)
        good = read_stream(&stream, bytes + size_t{stream.next} * RECORD_SIZE, count) > 0;
    return close_stream(&stream) == 0 && good;
}

// What stands behind the end of the medium is told elsewhere.
uint32_t readable_records(MediaDescriptor *md, const Table &table)
{
    const uint64_t start = std::max(table.main, table.spare);
    const uint64_t end = end_record(md);
    return static_cast<uint32_t>(std::min<uint64_t>(table.records, end - std::min(end, start)));
}

Comparison compare_piece(const Table &table, const Piece &piece, Findings *findings)
{
    for (uint32_t index = 0; index < piece.count; index++) {
        const size_t offset = size_t{index} * RECORD_SIZE;
        const uint32_t head = piece.first + index == 0 ? table.head : 0;
        const Comparison result = compare_records(table, &piece.main[offset], &piece.spare[offset], head);
        if (result == Comparison::differs) {
            add_fault(findings, FindingKind::spare, "the spare %s differs from the main one, first in record %lu",
                      table.name, static_cast<unsigned long>(table.spare) + piece.first + index);
        }
        if (result != Comparison::same) return result;
    }
    return Comparison::same;
}

bool inspect_table(MediaDescriptor *md, const Table &table, Findings *findings)
{
    if (table.main == table.spare) return true;
    const uint32_t records = readable_records(md, table);
    Piece piece;
    for (Comparison result = Comparison::same; result == Comparison::same && piece.first < records;) {
        piece.count = std::min(records - piece.first, piece_records);
        if (!read_piece(md, table.main + piece.first, piece.count, piece.main.data()) ||
            !read_piece(md, table.spare + piece.first, piece.count, piece.spare.data()))
            return false;
        result = compare_piece(table, piece, findings);
        piece.first += piece.count;
    }
    return true;
}
}

bool inspect_spares(MediaDescriptor *md, Findings *findings)
{
    const VolumeFormat &format = volume_format(md->format);
    if (!format.has_spare_directory) return true;
    const bool is_disk = format.has_allocation_table;
    const Table directory = {"directory",
                             md->dir_start,
                             md->spare_dir_start,
                             md->dir_size,
                             format.first_entry,
                             md->dir_entry_size,
                             is_disk ? ends_disk_directory : ends_with_ones};
    if (!inspect_table(md, directory, findings)) return false;
    if (!is_disk) return true;
    return inspect_table(md,
                         {"availability table", md->alloc_start, md->spare_alloc_start, md->alloc_size, 0,
                          md->alloc_entry_size, ends_with_ones},
                         findings);
}
