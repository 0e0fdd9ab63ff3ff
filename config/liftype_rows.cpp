// Lines of the section [liftypes]: type = name, or type = name,,system.
#include <algorithm>
#include <cstring>
#include <iterator>

#include "base/convert.h"
#include "base/error.h"
#include "config/config_inner.h"
#include "config/custom_tables.h"

namespace
{

constexpr size_t name_token = 2;
constexpr size_t system_token = 4;

template <size_t size> void store_text(char (&target)[size], const char *text)
{
    const size_t length = strnlen(text, size - 1);
    std::memcpy(target, text, length);
    std::memset(target + length, '\0', size - length);
}

}

bool read_liftype_line(const ConfigValues &, const ConfigLine &line)
{
    // Kept: another word stands for the sign as well.  [KeepsAnyWordForTheAssignmentOfAType]
    int32_t type = 0;
    if (line.tokens.size() <= name_token || safe_strtoi(line.token(0), &type) < 0) {
        set_error(config_error, "bad liftype assignment in line %d", line.number);
        return false;
    }
    const auto wanted = static_cast<uint32_t>(type);
    LifType *end = custom_liftype_table + MOST_CUSTOM_LIFTYPES;
    auto is_row_for = [wanted](const LifType &row) { return row.type == wanted || row.name[0] == '\0'; };
    LifType *row = std::find_if(custom_liftype_table, end, is_row_for);
    if (row == end) {
        set_error(config_error, "max. number of custom definable LIF types (%d) exceed", MOST_CUSTOM_LIFTYPES);
        return false;
    }
    const char *system = line.token(system_token);
    row->type = wanted;
    store_text(row->name, line.token(name_token));
    store_text(row->system, system != nullptr ? system : "");
    return true;
}
