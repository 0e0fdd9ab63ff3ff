// Gives any text to whatever takes names, types, patterns and targets apart. The input: up to three texts, divided by
// line feeds; what is missing is empty. Each stands in memory of its own size, so that one byte too far is found.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <vector>

#include "base/convert.h"
#include "base/file.h"
#include "fuzz/support.h"
#include "volume/filetypes.h"
#include "volume/names.h"
#include "volume/navigate.h"
#include "volume/target.h"

namespace
{

using fuzz::demand;
using Text = std::vector<char>; // with its NUL

struct Input {
    Text first;
    Text second;
    Text third;
};

Text take_line(const uint8_t *&position, const uint8_t *end)
{
    const uint8_t *stop = std::find(position, end, '\n');
    Text text(position, stop);
    text.push_back('\0');
    position = stop == end ? end : stop + 1;
    return text;
}

template <size_t size> void demand_terminated(const char (&text)[size])
{
    demand(memchr(text, '\0', size) != nullptr);
}

void try_names(const Input &input, uint32_t format, uint32_t typed_extensions)
{
    MediaDescriptor md{};
    md.format = format;
    md.use_typed_extensions = typed_extensions;
    md.use_type_names = typed_extensions;

    std::array<char, NAME_MESSAGE_SIZE> message{};
    check_valid_filename(format, input.first.data(), input.second.data(), message.data());

    for (int32_t strip = 0; strip < 2; strip++) {
        FileInfo info{};
        process_filepath(&md, &info, input.first.data(), input.second.data(), strip);
        demand_terminated(info.name);
        std::array<char, VISIBLE_NAME_SIZE> visible{};
        compose_filename(&md, &info, visible.data());
        decode_filename(&info, format, visible.data());
    }

    FileInfo info{};
    encode_filename(&info, format, input.first.data());
    demand_terminated(info.name);
}

void try_types(const Input &input, uint32_t format)
{
    uint16_t type = 0;
    if (set_filetype(format, input.first.data(), input.second.data(), &type) != 0) return;
    MediaDescriptor md{};
    md.format = format;
    std::array<char, TYPE_TEXT_SIZE> text{};
    get_filetype(&md, text.data(), type, input.third.data());
}

void try_targets(const Input &input)
{
    std::array<char, FILE_PATH_SIZE> msus{};
    std::array<char, FILE_PATH_SIZE> filespec{};
    uint32_t access = 0;
    uint32_t address = 0;
    uint32_t unit = 0;
    uint32_t volume = 0;
    uint32_t drive = 0;
    parse_target(input.first.data(), msus.data(), filespec.data(), &access, &address, &unit, &volume, &drive);
    const int32_t taken = parse_gpib_msus(input.first.data(), &address, &unit, &volume);
    demand(taken <= static_cast<int32_t>(input.first.size()));
}

void try_patterns(const Input &input)
{
    const std::array<const char *, 2> filespec = {input.first.data(), nullptr};
    const int32_t found = match_filespec(filespec.data(), input.second.data(), input.third.data());
    demand(found >= 0 && found <= 5);
}

void try_conversions(const Input &input)
{
    uint32_t large = 0;
    uint16_t middle = 0;
    uint8_t small = 0;
    int32_t with_sign = 0;
    safe_strtoul(input.first.data(), &large);
    safe_strtoui(input.first.data(), &middle);
    safe_strtouc(input.first.data(), &small);
    safe_strtoi(input.first.data(), &with_sign);
    for (int32_t filter = 0; filter < 2; filter++) {
        Text target(input.first.size());
        string_hp2win(target.data(), input.first.data(), filter);
        string_win2hp(target.data(), input.first.data(), filter);
    }
    Text text = input.first;
    to_uppercase(text.data());
    trim(text.data());
}

}

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    return fuzz::prepare();
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const uint8_t *position = data;
    const uint8_t *end = data + size;
    Input input;
    input.first = take_line(position, end);
    input.second = take_line(position, end);
    input.third = take_line(position, end);
    for (uint32_t format = FORMAT_UNKNOWN; format <= FORMAT_HFS; format++) {
        for (uint32_t typed_extensions = 0; typed_extensions < 2; typed_extensions++) {
            pascal_mode = static_cast<int32_t>(size % 2);
            try_names(input, format, typed_extensions);
        }
        try_types(input, format);
    }
    try_targets(input);
    try_patterns(input);
    try_conversions(input);
    return 0;
}
