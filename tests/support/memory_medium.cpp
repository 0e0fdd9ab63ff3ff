// The row's functions are plain ones, so the media in being are found by the address of their record.
#include "tests/support/memory_medium.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "base/error.h"
#include "base/memory.h"
#include "volume/open.h"

namespace tests
{

namespace
{

std::vector<MemoryMedium *> present;

MemoryMedium &medium_of(const MediaDescriptor *md)
{
    const auto found =
        std::find_if(present.begin(), present.end(), [md](const MemoryMedium *medium) { return &medium->md == md; });
    return **found; // end() here is a fault of this file
}

int32_t fail(uint32_t error)
{
    set_error(error, "");
    return -1;
}

int32_t read_one(MediaDescriptor *md, uint32_t number, uint8_t *buffer)
{
    const MemoryMedium &medium = medium_of(md);
    if (number >= medium.records || medium.unreadable.count(number) != 0) return fail(302);
    const Bytes bytes = medium.record(number);
    std::memcpy(buffer, bytes.data(), record_bytes);
    return 0;
}

int32_t write_one(MediaDescriptor *md, uint32_t number, const uint8_t *buffer)
{
    MemoryMedium &medium = medium_of(md);
    if (number >= medium.records || medium.unwritable.count(number) != 0) return fail(303);
    medium.written.push_back(number);
    medium.stored[number].assign(buffer, buffer + record_bytes);
    return 0;
}

int32_t open_one(MediumStream *stream)
{
    MemoryMedium &medium = medium_of(stream->md);
    if (medium.failing_open == stream->writing) return fail(stream->writing ? 303 : 302);
    medium.streams.push_back((stream->writing ? "write " : "read ") + std::to_string(stream->first) + '+' +
                             std::to_string(stream->records));
    EXPECT_TRUE(medium.open_streams.insert(stream->writing).second) << "a second stream of one kind";
    return 0;
}

int32_t read_on(MediumStream *stream, uint8_t *buffer, uint32_t count)
{
    MemoryMedium &medium = medium_of(stream->md);
    EXPECT_EQ(medium.open_streams.count(false), 1u) << "reading from no stream";
    for (uint32_t i = 0; i < count; ++i) {
        const uint32_t number = stream->first + stream->next + i;
        if (read_one(stream->md, number, buffer + size_t{i} * record_bytes) == 0) continue;
        return i == 0 ? -1 : static_cast<int32_t>(i);
    }
    return static_cast<int32_t>(count);
}

int32_t write_on(MediumStream *stream, const uint8_t *buffer, uint32_t count, bool ends)
{
    MemoryMedium &medium = medium_of(stream->md);
    EXPECT_EQ(medium.open_streams.count(true), 1u) << "writing to no stream";
    for (uint32_t i = 0; i < count; ++i) {
        const uint32_t number = stream->first + stream->next + i;
        if (write_one(stream->md, number, buffer + size_t{i} * record_bytes) == 0) continue;
        return static_cast<int32_t>(i);
    }
    if (ends) medium.last_end = stream->next + count - 1;
    return static_cast<int32_t>(count);
}

int32_t close_one(MediumStream *stream)
{
    MemoryMedium &medium = medium_of(stream->md);
    medium.streams.emplace_back("close");
    EXPECT_EQ(medium.open_streams.erase(stream->writing), 1u) << "closing no stream";
    return medium.failing_close == stream->writing ? fail(303) : 0;
}

uint64_t end_of(MediaDescriptor *md)
{
    return medium_of(md).records;
}

int32_t make_it_blank(MediaDescriptor *md)
{
    ++medium_of(md).blank_makings;
    return 7; // what a drive's command gives is handed on
}

constexpr MediumAccess unlimited = {
    .name = "memory",
    .open = nullptr,
    .read_record = read_one,
    .write_record = write_one,
    .open_stream = open_one,
    .read_stream = read_on,
    .write_stream = write_on,
    .close_stream = close_one,
    .end_record = end_of,
    .make_blank = make_it_blank,
};

constexpr MediumAccess limited = [] {
    MediumAccess row = unlimited;
    row.hardware_records = end_of;
    return row;
}();

}

MemoryMedium::MemoryMedium(uint32_t number_of_records) : records(number_of_records)
{
    state.access = &unlimited;
    md.access = ACCESS_GPIB;
    md.size = records * record_bytes;
    md.state = &state;
    present.push_back(this);
}

MemoryMedium::MemoryMedium(const Bytes &image) : MemoryMedium(static_cast<uint32_t>(image.size() / record_bytes))
{
    for (uint32_t number = 0; number < records; ++number) {
        const auto from = image.begin() + static_cast<std::ptrdiff_t>(size_t{number} * record_bytes);
        stored[number].assign(from, from + record_bytes);
    }
}

MemoryMedium::~MemoryMedium()
{
    EXPECT_TRUE(open_streams.empty()) << "a stream was left open";
    image_free_directory(&md, nullptr);
    my_free(md.inode_table);
    std::erase(present, this);
}

void MemoryMedium::limit_to_hardware()
{
    state.access = &limited;
}

Bytes MemoryMedium::record(uint32_t number) const
{
    const auto found = stored.find(number);
    return found == stored.end() ? Bytes(record_bytes) : found->second;
}

Bytes MemoryMedium::image() const
{
    Bytes bytes;
    for (uint32_t number = 0; number < records; ++number) {
        const Bytes one = record(number);
        bytes.insert(bytes.end(), one.begin(), one.end());
    }
    return bytes;
}

}
