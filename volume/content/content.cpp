// The table of known contents.
#include "volume/content/content.h"

#include <algorithm>
#include <array>

#include "base/log.h"

namespace
{
constexpr std::array<const ContentConverter *, 6> rows = {&data_items,  &ascii_records, &pascal_text,
                                                          &sdf_records, &bdat_items,    &hp75_text};

bool serves(const ContentConverter &row, uint32_t format, uint16_t type)
{
    auto is_served = [format, type](const ServedType &served) {
        return served.format == format && (type & served.mask) == served.value;
    };
    return std::any_of(row.serves.begin(), row.serves.end(), is_served);
}

bool is_line_end(char character)
{
    return character == '\r' || character == '\n';
}
}

std::span<const ContentConverter *const> content_converters()
{
    return rows;
}

const ContentConverter *find_converter(uint32_t format, uint16_t type)
{
    for (const ContentConverter *row : rows) {
        if (serves(*row, format, type)) return row;
    }
    return nullptr;
}

uint32_t without_line_end(const char *text, uint32_t length)
{
    for (int taken = 0; taken < 2 && length > 0 && is_line_end(text[length - 1]); taken++) length--;
    return length;
}

void cut_line(InwardState *state)
{
    state->cut = true;
    log_file(1, "File %s exceeds max. line length for TEXT files in line %d (truncated).\n", state->source_name,
             static_cast<int>(state->line));
}
