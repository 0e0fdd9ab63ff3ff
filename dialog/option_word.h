// The plug-in's option word as the dialog's controls show it.
#pragma once

#include <cstdint>

enum : uint32_t { // the dialog's bits; all others belong to the plug-in
    option_typed_extensions = 1u << 1,
    option_file_conversion = 1u << 2,
    option_show_purged = 1u << 3,
    option_headers_mask = 3u << 4
};
constexpr uint32_t option_headers_shift = 4;

enum class FileHeaders : uint8_t { none, hpbasic, hpcalc };

struct ShownOptions {
    bool typed_extensions = false;
    bool file_conversion = false;
    bool show_purged = false;
    FileHeaders headers = FileHeaders::none;
};

// What the controls show for a word. A kind of header that isn't known shows as none.
ShownOptions shown_options(uint32_t word);

// The word with the dialog's bits as the controls stand; its other bits stay as they are.
uint32_t changed_word(uint32_t word, const ShownOptions &shown);
