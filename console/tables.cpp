// Writes the tables of a volume so that a write that fails leaves them as they were.
#include "console/tables.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "base/error.h"
#include "console/report.h"
#include "volume/access.h"
#include "volume/format.h"
#include "volume/operations_inner.h"
#include "volume/region.h"

namespace
{
struct SavedTable {
    Region region;
    std::vector<uint8_t> bytes = {};
};

std::vector<SavedTable> tables_of(MediaDescriptor *md)
{
    const VolumeFormat &format = volume_format(md->format);
    std::vector<SavedTable> tables = {{{md->dir_start, md->dir_size}}};
    if (format.has_spare_directory) tables.push_back({{md->spare_dir_start, md->dir_size}});
    if (format.has_allocation_table) {
        tables.push_back({{md->alloc_start, md->alloc_size}});
        tables.push_back({{md->spare_alloc_start, md->alloc_size}});
    }
    return tables;
}

// What a table claims behind the end of the medium is none of it; the engine refuses to write there.
bool save(MediaDescriptor *md, SavedTable *table)
{
    const uint64_t end = end_record(md);
    const uint64_t last = std::min(table->region.start + table->region.length, end);
    table->region.length = last > table->region.start ? last - table->region.start : 0;
    table->bytes.resize(table->region.length * RECORD_SIZE);
    for (uint64_t i = 0; i < table->region.length; i++) {
        const auto record = static_cast<uint32_t>(table->region.start + i);
        if (read_record(md, record, &table->bytes[i * RECORD_SIZE]) < 0) return false;
    }
    return true;
}

bool put_record_back(MediaDescriptor *md, uint32_t record, const uint8_t *bytes)
{
    uint8_t present[RECORD_SIZE];
    const bool same = read_record(md, record, present) >= 0 && std::memcmp(present, bytes, RECORD_SIZE) == 0;
    return same || write_record(md, record, bytes) >= 0;
}

bool put_back(MediaDescriptor *md, const SavedTable &table)
{
    bool all = true;
    for (uint64_t i = 0; i < table.region.length; i++) {
        const auto record = static_cast<uint32_t>(table.region.start + i);
        all = put_record_back(md, record, &table.bytes[i * RECORD_SIZE]) && all;
    }
    return all;
}

// The words of the failure that led here stay the last error's.
TablesEnd put_all_back(MediaDescriptor *md, const std::vector<SavedTable> &tables)
{
    const uint32_t number = global_error;
    const std::string detail = global_error_info;
    bool all = true;
    refresh_medium(md);
    for (const SavedTable &table : tables) all = put_back(md, table) && all;
    set_error(number, "%s", detail.c_str());
    return all ? TablesEnd::as_before : TablesEnd::torn;
}
}

TablesEnd write_tables_whole(MediaDescriptor *md)
{
    std::vector<SavedTable> tables = tables_of(md);
    auto is_saved = [md](SavedTable &table) { return save(md, &table); };
    if (!std::all_of(tables.begin(), tables.end(), is_saved)) return TablesEnd::as_before;
    return update_tables(md) == 0 ? TablesEnd::written : put_all_back(md, tables);
}

bool commit_tables(MediaDescriptor *md, const char *nothing)
{
    const TablesEnd end = write_tables_whole(md);
    if (end == TablesEnd::written) return true;
    report_failure_of("directory");
    if (end == TablesEnd::as_before) {
        file_printf(file_stderr(), "[tarvo] %s\n", nothing);
    } else {
        file_printf(file_stderr(), "[tarvo] The directory of %s couldn't be put back: it is damaged.\n", md->msus);
    }
    return false;
}
