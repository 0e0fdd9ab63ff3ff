// Lines of the sections [fsinfo] and [driveinfo]: a row of a table of media or drives.
//
//     name = description, code, ten numbers
//     name = description, protocol, eleven numbers
//
// Both kinds of rows begin with name and description; what follows is told field by field.
#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>

#include "base/convert.h"
#include "base/error.h"
#include "config/config_inner.h"
#include "config/custom_inner.h"

namespace
{

constexpr size_t longest_name = 16;
constexpr size_t longest_description = 256;
constexpr size_t first_field = 2; // among the tokens, behind name and "="

enum class Stored : uint8_t { yes, bad_number, refused }; // refused: the error is set

struct Field {
    Stored (*store)(const char *text, void *place, int32_t line);
    size_t offset; // in the row
};

struct NamedTable {
    std::byte *rows;
    size_t row_bytes;
    int32_t most_rows;
    const char *kind;
    std::span<const Field> fields;
    size_t least_fields;
};

// What both kinds of rows begin with.
struct RowHead {
    const char *name;
    const char *description;
};

static_assert(offsetof(MediaTableRow, name) == offsetof(RowHead, name) &&
              offsetof(GpibDriveInfo, name) == offsetof(RowHead, name));
static_assert(offsetof(MediaTableRow, description) == offsetof(RowHead, description) &&
              offsetof(GpibDriveInfo, description) == offsetof(RowHead, description));

// ---- fields --------------------------------------------------------------------------------------------

Stored stored_number(int32_t result)
{
    return result < 0 ? Stored::bad_number : Stored::yes;
}

Stored store_dword(const char *text, void *place, int32_t)
{
    return stored_number(safe_strtoul(text, static_cast<uint32_t *>(place)));
}

Stored store_word(const char *text, void *place, int32_t)
{
    return stored_number(safe_strtoui(text, static_cast<uint16_t *>(place)));
}

Stored store_byte(const char *text, void *place, int32_t)
{
    return stored_number(safe_strtouc(text, static_cast<uint8_t *>(place)));
}

Stored store_signed(const char *text, void *place, int32_t)
{
    int32_t value = 0;
    const Stored stored = stored_number(safe_strtoi(text, &value));
    if (stored == Stored::yes) *static_cast<uint32_t *>(place) = static_cast<uint32_t>(value);
    return stored;
}

Stored store_letter(const char *text, void *place, int32_t)
{
    *static_cast<uint32_t *>(place) = static_cast<uint8_t>(text[0]);
    return Stored::yes;
}

Stored store_description(const char *text, void *place, int32_t)
{
    const char *kept = keep_row_text(text, longest_description);
    if (kept == nullptr) return Stored::refused;
    *static_cast<const char **>(place) = kept;
    return Stored::yes;
}

struct Protocol {
    const char *name;
    uint32_t number;
};

constexpr Protocol protocols[] = {{"AMIGO", PROTOCOL_AMIGO}, {"CS80", PROTOCOL_CS80}, {"SS80", PROTOCOL_SS80}};

// Kept: unlike other words, a protocol in lower case isn't known.  [KeepsProtocolsInUpperCase]
Stored store_protocol(const char *text, void *place, int32_t line)
{
    auto is_named = [text](const Protocol &row) { return std::strcmp(row.name, text) == 0; };
    const auto *row = std::find_if(std::begin(protocols), std::end(protocols), is_named);
    if (row == std::end(protocols)) {
        set_error(config_error, "bad protocol assignment in line %d", line);
        return Stored::refused;
    }
    *static_cast<uint32_t *>(place) = row->number;
    return Stored::yes;
}

constexpr Field media_fields[] = {
    {store_description, offsetof(MediaTableRow, description)},
    {store_letter, offsetof(MediaTableRow, letter)},
    {store_dword, offsetof(MediaTableRow, heads)},
    {store_dword, offsetof(MediaTableRow, sectors)},
    {store_dword, offsetof(MediaTableRow, tracks)},
    {store_dword, offsetof(MediaTableRow, system_tracks)},
    {store_dword, offsetof(MediaTableRow, data_tracks)},
    {store_dword, offsetof(MediaTableRow, spare_track)},
    {store_dword, offsetof(MediaTableRow, dir_start)},
    {store_dword, offsetof(MediaTableRow, alloc_start)},
    {store_dword, offsetof(MediaTableRow, alloc_end)},
    {store_dword, offsetof(MediaTableRow, interleave)},
};

constexpr Field drive_fields[] = {
    {store_description, offsetof(GpibDriveInfo, description)},
    {store_protocol, offsetof(GpibDriveInfo, protocol)},
    {store_word, offsetof(GpibDriveInfo, identify)},
    {store_byte, offsetof(GpibDriveInfo, status_mask)},
    {store_byte, offsetof(GpibDriveInfo, status_value)},
    {store_dword, offsetof(GpibDriveInfo, device_number)},
    {store_byte, offsetof(GpibDriveInfo, units)},
    {store_dword, offsetof(GpibDriveInfo, cylinders)},
    {store_dword, offsetof(GpibDriveInfo, heads)},
    {store_dword, offsetof(GpibDriveInfo, sectors)},
    {store_dword, offsetof(GpibDriveInfo, block_size)},
    {store_byte, offsetof(GpibDriveInfo, interleave)},
    {store_signed, offsetof(GpibDriveInfo, removable)},
};

// The last number of a row may be missing.
constexpr size_t least_media_fields = std::size(media_fields) - 1;
constexpr size_t least_drive_fields = std::size(drive_fields) - 1;
static_assert(least_media_fields == 11 && least_drive_fields == 12);

// ---- rows ----------------------------------------------------------------------------------------------

RowHead head_of(const std::byte *row)
{
    RowHead head;
    std::memcpy(&head, row, sizeof head);
    return head;
}

bool begin_row(std::byte *row, const char *name)
{
    char *kept = keep_row_text(name, longest_name);
    if (kept == nullptr) return false;
    to_uppercase(kept);
    const RowHead head = {kept, ""};
    std::memcpy(row, &head, sizeof head);
    return true;
}

// The row of that name, or a new one; null with the error set.
std::byte *row_for(const NamedTable &table, const char *name)
{
    std::byte *row = table.rows;
    for (int32_t i = 0; i < table.most_rows; i++, row += table.row_bytes) {
        const RowHead head = head_of(row);
        if (head.name == nullptr) return begin_row(row, name) ? row : nullptr;
        // Kept: a name in lower case is that of no row, and makes a second one.  [KeepsSecondRowOfANameInLowerCase]
        if (std::strcmp(head.name, name) == 0) return row;
    }
    set_error(config_error, "max. number of custom %s (%d) exceed", table.kind, table.most_rows);
    return nullptr;
}

// Fills the row as far as the line has fields.
bool store_fields(const NamedTable &table, std::byte *row, const ConfigLine &line)
{
    int32_t bad_numbers = 0;
    for (size_t i = 0; i < table.fields.size(); i++) {
        const char *text = line.token(first_field + i);
        if (text == nullptr) break;
        if (text[0] == '\0') {
            set_error(config_error, "empty parameter in line %d", line.number);
            return false;
        }
        const Field &field = table.fields[i];
        const Stored stored = field.store(text, row + field.offset, line.number);
        if (stored == Stored::refused) return false;
        if (stored == Stored::bad_number) bad_numbers++;
    }
    if (bad_numbers > 0) set_error(config_error, "%d bad parameter(s) in line %d", bad_numbers, line.number);
    return bad_numbers == 0;
}

bool read_named_line(const NamedTable &table, const ConfigLine &line)
{
    if (!is_assign(line.token(1))) {
        set_error(config_error, "bad drive assignment syntax in line %d", line.number);
        return false;
    }
    std::byte *row = row_for(table, line.token(0));
    if (row == nullptr || !store_fields(table, row, line)) return false;
    if (line.tokens.size() >= first_field + table.least_fields) return true;
    set_error(config_error, "bad parm count in line %d", line.number);
    return false;
}

}

bool read_media_line(const ConfigValues &, const ConfigLine &line)
{
    const NamedTable table = {reinterpret_cast<std::byte *>(custom_media_table),
                              sizeof custom_media_table[0],
                              MOST_CUSTOM_MEDIA,
                              "media",
                              media_fields,
                              least_media_fields};
    return read_named_line(table, line);
}

bool read_drive_line(const ConfigValues &, const ConfigLine &line)
{
    const NamedTable table = {reinterpret_cast<std::byte *>(custom_drive_table),
                              sizeof custom_drive_table[0],
                              MOST_CUSTOM_DRIVES,
                              "drives",
                              drive_fields,
                              least_drive_fields};
    return read_named_line(table, line);
}
