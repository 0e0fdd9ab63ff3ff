// The markers of Pascal and other types, one row each.
#include "volume/marker.h"

#include <cstring>

namespace
{
constexpr int32_t marked_length = 10;

struct Marker {
    uint16_t type;
    char marker;
    const char *text;
    bool given_by_text; // a name of this text gets the marker
    bool any_type;      // whatever its type
};

constexpr Marker markers[] = {
    // type  marker text    given  any type
    {0x0001, 'A', "ASC", true, false},  {0xE942, 'S', "SYSTM", false, false}, {0xE94B, 'T', "HP-UX", false, false},
    {0xEA32, 'C', "CODE", true, false}, {0xEA3E, 'T', "TEXT", true, false},   {0xEA32, 'U', "UX", true, true},
    {0xEA3E, 'U', "UX", true, true},    {0xEA32, 'B', "BAD", true, true},     {0xEA3E, 'B', "BAD", true, true},
};
}

int32_t marker_position(const char *name)
{
    if (std::strlen(name) != marked_length) return -1;
    int32_t position = marked_length - 1;
    while (position >= 0 && name[position] == '_') position--;
    return position;
}

const char *marked_type(uint16_t type, const char *name)
{
    int32_t position = marker_position(name);
    if (position < 0) return nullptr;
    for (const Marker &row : markers) {
        if (row.type == type && row.marker == name[position]) return row.text;
    }
    return nullptr;
}

char marker_of(const char *type_text, uint16_t type)
{
    for (const Marker &row : markers) {
        if (row.given_by_text && (row.any_type || row.type == type) && std::strcmp(row.text, type_text) == 0) {
            return row.marker;
        }
    }
    return 0;
}

bool marker_belongs(uint16_t type, const char *type_text, char marker)
{
    if (type == 1 && std::strcmp(type_text, "ASC") != 0) return false;
    for (const Marker &row : markers) {
        if (row.type == type && row.marker == marker) return true;
    }
    return false;
}
