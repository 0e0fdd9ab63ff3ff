// The kinds of content that are known: which files have it, and how it turns into text and back. One row a kind, one
// file a kind; nothing else knows a kind by its number.
#pragma once

#include <cstdint>
#include <span>

#include "volume/content/sink.h"
#include "volume/media.h"

struct ServedType { // files of this format whose type word has this value where the mask has ones
    uint32_t format;
    uint16_t mask;
    uint16_t value;
};

// ---- out of a medium: a block after the other becomes text ------------------------------------------------

struct OutwardState {
    Sink *sink = nullptr;
    uint32_t pending = 0;     // characters of a record or line that began in an earlier block
    bool first_block = true;  // none has been seen
    bool padding_next = true; // Pascal TEXT: a zero byte here is padding
};

enum class ContentStep : uint8_t {
    more,     // the next block, please
    end,      // the content has ended; blocks that are left don't belong to it
    rejected, // something in it isn't what it should be
    foreign   // none of it is of this kind, and nothing comes of it
};

// ---- onto a medium: a line after the other becomes content --------------------------------------------------

struct InwardState {
    Sink *sink = nullptr;
    const char *source_name = "";   // for messages
    const FileInfo *info = nullptr; // the file as it will stand in the directory
    uint32_t line = 0;              // number of the present line, from 1
    bool cut = false;               // some text was left out
    uint32_t written = 0;           // bytes of a page, a block or the whole, as the kind counts
};

constexpr uint32_t most_head_bytes = 32;

struct ContentConverter {
    uint32_t kind; // as messages and tests call it
    const char *name;
    std::span<const ServedType> serves;
    uint32_t skipped_blocks = 0; // at the front of a file
    // length is 0 to 256 bytes; nothing of the block behind it is looked at.
    ContentStep (*outward)(OutwardState *state, const uint8_t *block, uint32_t length);
    // Absent, all of them: there is no way back. A line has no NUL in it and no line end; it may be changed in place.
    void (*begin)(InwardState *state) = nullptr;
    void (*line)(InwardState *state, char *text, uint32_t length) = nullptr;
    void (*end)(InwardState *state) = nullptr;
    // Bytes that replace the first ones once all is written. Returns how many. Absent: none.
    uint32_t (*head)(const InwardState *state, uint8_t *ret_head) = nullptr;
};

std::span<const ContentConverter *const> content_converters();

// The row that serves a file; null for unknown content.
const ContentConverter *find_converter(uint32_t format, uint16_t type);

// Takes carriage returns and line feeds off the end of a line, at most two. Returns what is left of the length.
uint32_t without_line_end(const char *text, uint32_t length);

// Notes and says that a line is too long for its kind and is cut.
void cut_line(InwardState *state);

// ---- the rows, from their files
extern const ContentConverter data_items;    // kind 1, typed DATA
extern const ContentConverter ascii_records; // kind 3, LIF ASCII
extern const ContentConverter pascal_text;   // kind 4, Pascal TEXT
extern const ContentConverter sdf_records;   // kind 5, SDF DATA
extern const ContentConverter bdat_items;    // kind 6, BDAT
extern const ContentConverter hp75_text;     // kind 7, HP 75 TEXT
