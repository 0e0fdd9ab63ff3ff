// Each line stands in a block of its own that ends with its NUL, so that the sanitizer sees a step beyond.
#include "tests/volume/content/inward_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "tests/support/medium.h"

namespace tests::insertion
{

namespace
{

bool collect(void *context, const uint8_t *bytes, uint32_t count)
{
    auto *collected = static_cast<Bytes *>(context);
    collected->insert(collected->end(), bytes, bytes + count);
    return true;
}

void give_line(const ContentConverter &row, InwardState *state, const std::string &line)
{
    const std::unique_ptr<char[]> text(new char[line.size() + 1]);
    std::copy_n(line.c_str(), line.size() + 1, text.get());
    state->line++;
    row.line(state, text.get(), static_cast<uint32_t>(line.size()));
}

void put_head(const ContentConverter &row, const InwardState &state, Bytes *content)
{
    if (row.head == nullptr) return;
    uint8_t head[most_head_bytes] = {};
    const uint32_t count = row.head(&state, head);
    ASSERT_LE(count, most_head_bytes);
    ASSERT_LE(count, content->size());
    std::copy_n(head, count, content->begin());
}

Bytes through_buffer(const ContentConverter &row, const Lines &lines, const InwardOrder &order, uint32_t buffer_bytes)
{
    Bytes content;
    const std::unique_ptr<uint8_t[]> buffer(new uint8_t[buffer_bytes]);
    Sink sink{.hand_over = collect, .context = &content, .buffer = buffer.get(), .size = buffer_bytes};
    const FileInfo file = named("FILE");
    InwardState state{
        .sink = &sink, .source_name = order.source_name, .info = order.info == nullptr ? &file : order.info};
    if (row.begin != nullptr) row.begin(&state);
    for (const std::string &line : lines) give_line(row, &state, line);
    if (row.end != nullptr) row.end(&state);
    flush(&sink);
    EXPECT_FALSE(sink.failed);
    EXPECT_EQ(sink.total, content.size());
    put_head(row, state, &content);
    return content;
}

}

Bytes inward(const ContentConverter &row, const Lines &lines, const InwardOrder &order)
{
    Bytes content = through_buffer(row, lines, order, 4096);
    for (const uint32_t buffer_bytes : {2u, 97u}) {
        EXPECT_TRUE(through_buffer(row, lines, order, buffer_bytes) == content) << "buffer of " << buffer_bytes;
    }
    return content;
}

Bytes bytes_of(std::string_view text)
{
    return Bytes(text.begin(), text.end());
}

Bytes repeated(uint8_t byte, size_t count)
{
    return Bytes(count, byte);
}

Bytes joined(std::initializer_list<Bytes> parts)
{
    Bytes whole;
    for (const Bytes &part : parts) whole.insert(whole.end(), part.begin(), part.end());
    return whole;
}

Bytes part_of(const Bytes &bytes, size_t from, size_t count)
{
    const size_t begin = std::min(from, bytes.size());
    const size_t end = std::min(begin + count, bytes.size());
    return Bytes(bytes.begin() + static_cast<std::ptrdiff_t>(begin), bytes.begin() + static_cast<std::ptrdiff_t>(end));
}

std::string text_of(const Bytes &bytes)
{
    return std::string(bytes.begin(), bytes.end());
}

}
