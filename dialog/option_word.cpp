// The bits of the option word.
#include "dialog/option_word.h"

namespace
{
uint32_t bits_if(bool set, uint32_t bits)
{
    return set ? bits : 0;
}
}

ShownOptions shown_options(uint32_t word)
{
    const uint32_t headers = (word & option_headers_mask) >> option_headers_shift;
    ShownOptions shown;
    shown.typed_extensions = (word & option_typed_extensions) != 0;
    shown.file_conversion = (word & option_file_conversion) != 0;
    shown.show_purged = (word & option_show_purged) != 0;
    if (headers <= static_cast<uint32_t>(FileHeaders::hpcalc)) shown.headers = static_cast<FileHeaders>(headers);
    return shown;
}

uint32_t changed_word(uint32_t word, const ShownOptions &shown)
{
    constexpr uint32_t own_bits =
        option_typed_extensions | option_file_conversion | option_show_purged | option_headers_mask;
    return (word & ~own_bits) | bits_if(shown.typed_extensions, option_typed_extensions) |
           bits_if(shown.file_conversion, option_file_conversion) | bits_if(shown.show_purged, option_show_purged) |
           static_cast<uint32_t>(shown.headers) << option_headers_shift;
}
