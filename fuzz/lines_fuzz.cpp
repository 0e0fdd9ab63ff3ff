// Gives any lines to the kinds of content on their way in, and what comes of them back out. Where the two directions
// mirror each other, the same lines come back.
//
// The input: the number of a kind, then the lines as a file of the host would hold them.
#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/support.h"
#include "volume/content/content.h"
#include "volume/content/sink.h"

namespace
{

using fuzz::Bytes;
using fuzz::demand;
using Lines = std::vector<std::string>;

constexpr size_t longest_line = 65534; // as it is read from the host
constexpr uint32_t buffer_bytes = 64;

struct Text {
    Bytes bytes;
    std::array<uint8_t, buffer_bytes> buffer{};
    Sink sink{};
};

bool keep(void *context, const uint8_t *bytes, uint32_t count)
{
    auto *text = static_cast<Text *>(context);
    text->bytes.insert(text->bytes.end(), bytes, bytes + count);
    return true;
}

Sink *sink_of(Text *text)
{
    text->sink.hand_over = keep;
    text->sink.context = text;
    text->sink.buffer = text->buffer.data();
    text->sink.size = buffer_bytes;
    return &text->sink;
}

const Bytes &finished(Text *text)
{
    flush(&text->sink);
    demand(!text->sink.failed && text->sink.total == text->bytes.size());
    return text->bytes;
}

// Without line ends, and no further than a NUL.
Lines lines_of(std::span<const uint8_t> source)
{
    Lines lines;
    while (!source.empty()) {
        const auto feed = std::find(source.begin(), source.end(), '\n');
        const auto length = std::min(static_cast<size_t>(feed - source.begin()) + 1, source.size());
        const auto line = source.first(std::min(length, longest_line));
        source = source.subspan(line.size());
        std::string text(line.begin(), std::find(line.begin(), line.end(), '\0'));
        text.resize(without_line_end(text.data(), static_cast<uint32_t>(text.size())));
        lines.push_back(std::move(text));
    }
    return lines;
}

Bytes content_of(const ContentConverter &converter, const Lines &lines)
{
    Text content;
    const FileInfo info{.name = "LINES", .date = {.tm_mday = 15, .tm_mon = 2, .tm_year = 84}};
    InwardState state;
    state.sink = sink_of(&content);
    state.source_name = "lines";
    state.info = &info;
    converter.begin(&state);
    for (const std::string &line : lines) {
        state.line++;
        Bytes own(line.begin(), line.end()); // it may be changed, and has no NUL behind it
        converter.line(&state, reinterpret_cast<char *>(own.data()), static_cast<uint32_t>(own.size()));
    }
    converter.end(&state);
    Bytes bytes = finished(&content);
    std::array<uint8_t, most_head_bytes> head{};
    const uint32_t count = converter.head == nullptr ? 0 : converter.head(&state, head.data());
    demand(count <= head.size() && count <= bytes.size());
    std::copy_n(head.begin(), count, bytes.begin());
    return bytes;
}

Bytes text_of(const ContentConverter &converter, const Bytes &content)
{
    Text text;
    OutwardState state;
    state.sink = sink_of(&text);
    for (size_t i = size_t{converter.skipped_blocks} * RECORD_SIZE; i < content.size(); i += RECORD_SIZE) {
        const size_t length = std::min<size_t>(RECORD_SIZE, content.size() - i);
        const Bytes block(content.begin() + static_cast<ptrdiff_t>(i),
                          content.begin() + static_cast<ptrdiff_t>(i + length));
        const ContentStep step = converter.outward(&state, block.data(), static_cast<uint32_t>(length));
        demand(step == ContentStep::more || step == ContentStep::end);
        state.first_block = false;
        if (step == ContentStep::end) break;
    }
    return finished(&text);
}

bool is_printable(const std::string &line)
{
    return std::all_of(line.begin(), line.end(), [](char character) { return character >= ' ' && character <= '~'; });
}

bool all_printable(const Lines &lines)
{
    return std::all_of(lines.begin(), lines.end(), is_printable);
}

// What must come back; false where the way back is another.
using Mirror = bool (*)(const Lines &lines, const Bytes &content, std::string *ret_text);

bool mirror_items(const Lines &lines, const Bytes &, std::string *ret_text)
{
    if (!all_printable(lines)) return false;
    for (const std::string &line : lines) *ret_text += line + "\r\n";
    return true;
}

// A record of no length leaves no line.
bool mirror_records(const Lines &lines, const Bytes &, std::string *ret_text)
{
    if (!all_printable(lines)) return false;
    for (const std::string &line : lines) *ret_text += line.empty() ? "" : line + "\r\n";
    return true;
}

// Indentations that a byte holds, lines that a page holds; and no mark of one stands last in a block, since its count
// then begins the next.
bool mirror_pages(const Lines &lines, const Bytes &content, std::string *ret_text)
{
    constexpr size_t most_indentation = 223;
    constexpr size_t most_text = 1021;
    constexpr uint8_t indentation_mark = 16;
    if (!all_printable(lines)) return false;
    for (size_t i = RECORD_SIZE - 1; i < content.size(); i += RECORD_SIZE) {
        if (content[i] == indentation_mark) return false;
    }
    for (const std::string &line : lines) {
        const size_t indentation = std::min(line.find_first_not_of(' '), line.size());
        if (indentation > most_indentation || line.size() - indentation > most_text) return false;
        *ret_text += line + "\r\n";
    }
    return true;
}

// Line numbers of four digits, in one block: the head of a line never crosses into another.
bool mirror_numbered(const Lines &lines, const Bytes &content, std::string *ret_text)
{
    constexpr size_t longest = 96;
    if (content.size() != RECORD_SIZE) return false;
    for (const std::string &line : lines) {
        const std::string text = line.substr(std::min(line.find_first_not_of(' '), line.size()));
        const size_t digits = std::min(text.find_first_not_of("0123456789"), text.size());
        if (text.size() > longest || digits > 4) return false;
        std::array<char, 16> number{};
        snprintf(number.data(), number.size(), "%4d ", digits == 0 ? 0 : std::stoi(text.substr(0, digits)));
        *ret_text += number.data() + text.substr(std::min(digits + 1, text.size())) + "\r\n";
    }
    return true;
}

struct Row {
    uint32_t kind;
    Mirror mirror;
};

constexpr Row rows[] = {
    {.kind = 1, .mirror = mirror_items},
    {.kind = 3, .mirror = mirror_records},
    {.kind = 4, .mirror = mirror_pages},
    {.kind = 7, .mirror = mirror_numbered},
};

}

extern "C" int LLVMFuzzerInitialize(int *, char ***)
{
    return fuzz::prepare();
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    fuzz::Input input(data, size);
    const uint8_t kind = input.take_byte();
    const auto *row = std::find_if(std::begin(rows), std::end(rows), [kind](const Row &r) { return r.kind == kind; });
    const auto converters = content_converters();
    const auto converter = std::find_if(converters.begin(), converters.end(),
                                        [kind](const ContentConverter *c) { return c->kind == kind; });
    if (row == std::end(rows) || converter == converters.end()) return -1; // of no use to the fuzzer
    const Lines lines = lines_of(input.rest());
    const Bytes content = content_of(**converter, lines);
    const Bytes text = text_of(**converter, content);
    std::string expected;
    if (row->mirror(lines, content, &expected)) demand(std::string(text.begin(), text.end()) == expected);
    return 0;
}
