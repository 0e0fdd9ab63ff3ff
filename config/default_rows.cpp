// Lines of the section [defaults]: key = value.
#include <algorithm>
#include <cstring>
#include <iterator>
#include <span>

#include "base/convert.h"
#include "base/error.h"
#include "config/config_inner.h"

namespace
{

struct Choice {
    const char *word; // in any case
    int32_t value;
};

constexpr Choice switch_words[] = {{"TRUE", 0}, {"1", 0}, {"FALSE", 1}, {"0", 1}};
constexpr Choice volume_words[] = {{"DISK45", 1}, {"TAPE45", 2}, {"LIF", 3}};
constexpr Choice header_words[] = {{"NONE", 0}, {"0", 0}, {"FALSE", 0}, {"HPBASIC", 1}, {"HPCALC", 2}};

// A key has one of the three places; a number with choices is one of them.
struct Key {
    const char *name;
    const char *fault; // how an error calls it
    int32_t *ConfigValues::*number = nullptr;
    std::span<const Choice> choices{};
    uint32_t *ConfigValues::*address = nullptr;
    char *ConfigValues::*text = nullptr;
};

constexpr Key keys[] = {
    {.name = "loglevel", .fault = "loglevel", .number = &ConfigValues::loglevel},
    {.name = "board", .fault = "board", .number = &ConfigValues::board},
    {.name = "port", .fault = "port", .address = &ConfigValues::port},
    {.name = "nosleep", .fault = "nosleep", .number = &ConfigValues::nosleep, .choices = switch_words},
    {.name = "fastschedule", .fault = "fastschedule", .number = &ConfigValues::fastschedule, .choices = switch_words},
    {.name = "system", .fault = "system", .text = &ConfigValues::system},
    {.name = "filesystem", .fault = "file system", .number = &ConfigValues::filesystem, .choices = volume_words},
    {.name = "use_file_headers",
     .fault = "use_headers",
     .number = &ConfigValues::use_file_headers,
     .choices = header_words},
    {.name = "use_type_names", .fault = "use_typed_names", .number = &ConfigValues::use_type_names},
    {.name = "use_typed_extensions", .fault = "use_typed_extensions", .number = &ConfigValues::use_typed_extensions},
    {.name = "use_file_conversion", .fault = "use_file_conversion", .number = &ConfigValues::use_file_conversion},
};

bool choose(std::span<const Choice> choices, char *word, int32_t *ret_value)
{
    if (word == nullptr) return false;
    to_uppercase(word);
    auto is_word = [word](const Choice &choice) { return std::strcmp(choice.word, word) == 0; };
    const auto found = std::find_if(choices.begin(), choices.end(), is_word);
    if (found == choices.end()) return false;
    *ret_value = found->value;
    return true;
}

void store_system(char *place, const char *text)
{
    const size_t length = strnlen(text, CONFIG_SYSTEM_SIZE - 1);
    std::memcpy(place, text, length);
    place[length] = '\0';
    to_uppercase(place);
}

bool store_value(const ConfigValues &values, const Key &key, char *value)
{
    if (key.text != nullptr) {
        store_system(values.*key.text, value != nullptr ? value : "");
        return true;
    }
    if (key.address != nullptr) return safe_strtoul(value, values.*key.address) == 0;
    if (!key.choices.empty()) return choose(key.choices, value, values.*key.number);
    return safe_strtoi(value, values.*key.number) == 0;
}

}

bool read_default_line(const ConfigValues &values, const ConfigLine &line)
{
    if (!is_assign(line.token(1)) && line.tokens.size() <= 2) {
        set_error(config_error, "bad assignment in line %d", line.number);
        return false;
    }
    const char *name = line.tokens.front();
    auto is_named = [name](const Key &key) { return std::strcmp(key.name, name) == 0; };
    const Key *key = std::find_if(std::begin(keys), std::end(keys), is_named);
    if (key == std::end(keys) || store_value(values, *key, line.token(2))) return true;
    set_error(config_error, "bad %s assignment in line %d", key->fault, line.number);
    return false;
}
