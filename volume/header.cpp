// The two forms of a file's header on the host. HPBASIC is a LIF volume of two records for the one file; HPCALC is the
// file's directory entry alone. Fields of the entry in their order: name, type, start, length, date, implementation.
#include "volume/header.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

#include "base/convert.h"

namespace
{
constexpr char workspace_name[] = "WS_FILE   ";
constexpr uint8_t volume_mark[] = {0x80, 0x00, 'H', 'F', 'S', 'L', 'I', 'F'};
constexpr uint32_t name_bytes = 10;
constexpr uint32_t type_offset = 10;
constexpr uint32_t start_offset = 12;
constexpr uint32_t length_offset = 16;
constexpr uint32_t date_offset = 20;
constexpr uint32_t implementation_offset = 26;
constexpr uint32_t entry_bytes = 32;
constexpr uint32_t basic_bytes = 2 * RECORD_SIZE;
constexpr uint32_t records_ahead = 2;

void put_entry(const FileInfo *info, uint32_t records, uint8_t *entry)
{
    set_word(entry + type_offset, info->type);
    set_dword(entry + length_offset, records);
    tm2datetime(entry + date_offset, &info->date);
    std::memcpy(entry + implementation_offset, info->lif_impl, sizeof info->lif_impl);
}

void take_entry(const uint8_t *entry, FileInfo *info)
{
    info->type = get_word(entry + type_offset);
    info->size = get_dword(entry + length_offset) * RECORD_SIZE;
    datetime2tm(&info->date, entry + date_offset);
    std::memcpy(info->lif_impl, entry + implementation_offset, sizeof info->lif_impl);
}

struct HeaderField {
    uint32_t offset;
    uint32_t value;
};

// Double words of the volume's record: directory start, version, three of its geometry as a volume of one track.
constexpr HeaderField volume_fields[] = {{8, 1}, {16, 1}, {20, 0}, {24, 1}, {28, 1}};
constexpr uint32_t id_offset = 12;
constexpr uint16_t id = 0x1000;
constexpr uint32_t total_offset = 32;
constexpr uint32_t date_offsets[] = {36, 248}; // of six bytes without a date
constexpr uint8_t no_date = 0x11;
constexpr uint32_t next_entry_type = RECORD_SIZE + entry_bytes + type_offset;
constexpr uint16_t end_mark = 0xFFFF;

void compose_basic(const FileInfo *info, uint32_t records, uint8_t *bytes)
{
    std::copy(std::begin(volume_mark), std::end(volume_mark), bytes);
    for (const HeaderField &field : volume_fields) set_dword(bytes + field.offset, field.value);
    set_word(bytes + id_offset, id);
    set_dword(bytes + total_offset, records + records_ahead);
    for (uint32_t offset : date_offsets) std::memset(bytes + offset, no_date, 6);
    uint8_t *entry = bytes + RECORD_SIZE;
    std::memcpy(entry, workspace_name, name_bytes);
    set_dword(entry + start_offset, records_ahead);
    put_entry(info, records, entry);
    set_word(bytes + next_entry_type, end_mark);
}

bool parse_basic(const uint8_t *bytes, FileInfo *info)
{
    const uint8_t *entry = bytes + RECORD_SIZE;
    if (!std::equal(std::begin(volume_mark), std::end(volume_mark), bytes)) return false;
    if (std::memcmp(entry, workspace_name, name_bytes) != 0) return false;
    take_entry(entry, info);
    return true;
}

void compose_calc(const FileInfo *info, uint32_t records, uint8_t *bytes)
{
    std::memcpy(bytes, info->name, strnlen(info->name, name_bytes));
    put_entry(info, records, bytes);
}

bool parse_calc(const uint8_t *bytes, FileInfo *info)
{
    take_entry(bytes, info);
    return true;
}

constexpr std::array<FileHeader, 3> rows = {{
    {.name = "none", .bytes = 0, .compose = nullptr, .parse = nullptr},
    {.name = "hpbasic",
     .bytes = basic_bytes,
     .compose = compose_basic,
     .parse = parse_basic,
     .checked = true,
     .taken_off = basic_bytes},
    {.name = "hpcalc", .bytes = entry_bytes, .compose = compose_calc, .parse = parse_calc},
}};
static_assert(basic_bytes == most_header_bytes);
}

const FileHeader *file_header(uint32_t form)
{
    return form < rows.size() && rows[form].bytes != 0 ? &rows[form] : nullptr;
}

int32_t header_form(const char *name)
{
    for (size_t form = 0; form < rows.size(); form++) {
        if (std::string_view(name) == rows[form].name) return static_cast<int32_t>(form);
    }
    return -1;
}
