// Type words to texts and back.
#include "volume/filetypes.h"

#include <charconv>
#include <cstring>

#include "base/error.h"
#include "volume/filetypes_inner.h"
#include "volume/marker.h"
#include "volume/names.h"

namespace
{
constexpr uint16_t default_system45 = 0xC0;    // 9845
constexpr uint16_t default_lif_class = 0xE900; // 98X6

struct TextType {
    const char *text;
    uint16_t type;
};

constexpr TextType pascal_types[] = {
    {"CODE", 0xEA32}, {"TEXT", 0xEA3E}, {"UX", 0xEA0A}, {"BAD", 0xEA0A}, {"ASC", 1},
};

bool is_system45(uint32_t format)
{
    return format == FORMAT_DISK45 || format == FORMAT_TAPE45;
}

bool has_types(uint32_t format)
{
    return format >= FORMAT_DISK45 && format <= FORMAT_SDF;
}

void write_hexadecimal(char *ret_string, uint16_t type)
{
    constexpr char digits[] = "0123456789abcdef";
    *ret_string++ = '#';
    for (int shift = 12; shift >= 0; shift -= 4) *ret_string++ = digits[(type >> shift) & 15];
    *ret_string = '\0';
}

const char *find_system45_type(uint32_t format, uint16_t type)
{
    uint16_t key = type & 0x1E00;
    if (format == FORMAT_TAPE45) {
        key = static_cast<uint16_t>(type << 8) & 0x1E00;
    } else if ((type & 0x1C00) == 0x1C00) {
        key = type & 0x1F80;
    }
    return find_type_name((type & 0xE000) == 0x6000 ? Sys250_filetype : Sys45_filetype, key);
}

const char *find_lif_type(uint16_t type, const char *name)
{
    const char *text = pascal_mode != 0 && name != nullptr ? marked_type(type, name) : nullptr;
    if (text != nullptr) return text;
    for (const LifType *row = liftype_table; row->name[0] != '\0'; row++) {
        if (row->type == type) return row->name;
    }
    return nullptr;
}

bool find_word(const TypeName *table, const char *text, uint16_t *ret_word)
{
    for (; table->name != nullptr; table++) {
        if (std::strcmp(table->name, text) == 0) {
            *ret_word = table->word;
            return true;
        }
    }
    return false;
}

bool find_system_word(uint32_t format, const char *system_string, uint16_t *ret_system)
{
    bool system45 = is_system45(format);
    *ret_system = system45 ? default_system45 : default_lif_class;
    if (system_string == nullptr || system_string[0] == '\0') return true;
    uint16_t word = 0;
    if (!find_word(system45 ? Sys45_system : LIF_system, system_string, &word) || word == 0) {
        set_error(201, "\"%s\"", system_string);
        return false;
    }
    *ret_system = system45 ? word : static_cast<uint16_t>(word << 8);
    return true;
}

bool find_system45_word(uint32_t format, const char *text, uint16_t system, uint16_t *ret_type)
{
    uint16_t word = 0;
    if (!find_word(Sys45_filetype, text, &word)) return false;
    if (format == FORMAT_TAPE45) {
        word = static_cast<uint16_t>(word >> 8);
        *ret_type = static_cast<uint16_t>(word | (word < 5 ? 32 : system));
    } else {
        *ret_type = static_cast<uint16_t>(word | (word > 1024 ? system << 8 : 32 << 8));
    }
    return true;
}

bool find_lif_word(const char *text, uint16_t system, uint16_t *ret_type)
{
    if (pascal_mode != 0) {
        for (const TextType &row : pascal_types) {
            if (std::strcmp(row.text, text) == 0) {
                *ret_type = row.type;
                return true;
            }
        }
    }
    const LifType *found = nullptr;
    for (const LifType *row = liftype_table; row->name[0] != '\0'; row++) {
        if (std::strcmp(row->name, text) != 0) continue;
        uint32_t row_class = row->type & 0xFF80;
        if (row_class == 0 || row_class == system) {
            found = row;
            break;
        }
        if (found == nullptr) found = row; // a type of another system, if none of this one follows
    }
    if (found == nullptr) return false;
    *ret_type = static_cast<uint16_t>(found->type);
    return true;
}

bool take_hexadecimal(const char *text, uint16_t *ret_type)
{
    size_t length = std::strlen(text);
    if (length < 2 || length > 5 || text[0] != '#') return false;
    uint16_t type = 0;
    std::from_chars_result result = std::from_chars(text + 1, text + length, type, 16);
    if (result.ec != std::errc() || result.ptr != text + length) return false;
    *ret_type = type;
    return true;
}
}

const char *find_type_name(const TypeName *table, uint32_t word)
{
    for (; table->name != nullptr; table++) {
        if (table->word == word) return table->name;
    }
    return nullptr;
}

void get_filetype(const MediaDescriptor *md, char *ret_string, uint16_t type, const char *name)
{
    const char *text = nullptr;
    if (md->use_type_names != 0 && has_types(md->format)) {
        text = is_system45(md->format) ? find_system45_type(md->format, type) : find_lif_type(type, name);
    }
    if (text == nullptr) {
        write_hexadecimal(ret_string, type);
        return;
    }
    size_t length = std::strlen(text);
    if (length >= TYPE_TEXT_SIZE) length = TYPE_TEXT_SIZE - 1;
    std::memcpy(ret_string, text, length);
    ret_string[length] = '\0';
}

int32_t set_filetype(uint32_t format, const char *type_string, const char *system_string, uint16_t *ret_type)
{
    if (type_string == nullptr || ret_type == nullptr) {
        set_error(103, "Null pointer");
        return -1;
    }
    bool found = false;
    if (has_types(format)) {
        uint16_t system = 0;
        if (!find_system_word(format, system_string, &system)) return -1;
        found = is_system45(format) ? find_system45_word(format, type_string, system, ret_type)
                                    : find_lif_word(type_string, system, ret_type);
    }
    if (found || take_hexadecimal(type_string, ret_type)) return 0;
    set_error(200, "\"%s\"", type_string);
    return -1;
}
