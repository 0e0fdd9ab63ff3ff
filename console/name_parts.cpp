// Takes names apart: each full stop is looked for among the last seven characters.
#include "console/name_parts.h"

namespace
{
constexpr size_t searched = longest_type_ending + 1; // the full stop is one of them

size_t find_ending(const std::string &name, const char *mark)
{
    const size_t position = name.rfind(mark);
    return position != std::string::npos && position + searched >= name.size() ? position : std::string::npos;
}
}

NameParts take_apart(const std::string &name)
{
    NameParts parts = {name, "", ""};
    const size_t dot = find_ending(name, ".");
    if (dot != std::string::npos && dot > 0 && name[dot + 1] != '&') {
        parts.type = name.substr(dot + 1);
        parts.stem = name.substr(0, dot);
    }
    const size_t mark = find_ending(parts.stem, ".&");
    if (mark != std::string::npos) {
        parts.record = parts.stem.substr(mark + 2);
        parts.stem.resize(mark);
    }
    return parts;
}
