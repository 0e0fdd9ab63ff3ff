// The three ways to reach a medium, and the record access that goes through them. A floppy or GPIB drive is refused
// from its own row.
#include "volume/access.h"

#include <algorithm>
#include <cstring>

#include "base/error.h"
#include "volume/image_access.h"

namespace
{
int32_t refuse_floppy(MediaDescriptor *, const OpenOrder &)
{
    set_error(109, "floppy drive");
    return -1;
}

int32_t refuse_gpib(MediaDescriptor *, const OpenOrder &)
{
    set_error(109, "GPIB drive");
    return -1;
}

constexpr MediumAccess floppy_access = {.name = "floppy", .open = refuse_floppy};
constexpr MediumAccess gpib_access = {.name = "GPIB", .open = refuse_gpib};

constinit const std::array<const MediumAccess *, 3> rows = {&image_access, &floppy_access, &gpib_access};
static_assert(ACCESS_IMAGE == 0 && ACCESS_FLOPPY == 1 && ACCESS_GPIB == 2, "the rows stand in this order");
}

const MediumAccess *medium_access(const MediaDescriptor *md)
{
    if (md->state != nullptr && md->state->access != nullptr) return md->state->access;
    if (md->access < rows.size()) return rows[md->access];
    set_error(202, "%lu", static_cast<unsigned long>(md->access));
    return nullptr;
}

int32_t read_record(MediaDescriptor *md, uint32_t record, uint8_t *buffer)
{
    const MediumAccess *access = medium_access(md);
    if (access == nullptr || access->read_record == nullptr) return -1;
    std::memset(buffer, 0, RECORD_SIZE);
    return access->read_record(md, record, buffer);
}

int32_t write_record(MediaDescriptor *md, uint32_t record, const uint8_t *buffer)
{
    const MediumAccess *access = medium_access(md);
    if (access == nullptr || access->write_record == nullptr) return -1;
    return access->write_record(md, record, buffer);
}

uint64_t end_record(MediaDescriptor *md)
{
    const MediumAccess *access = medium_access(md);
    if (access == nullptr || access->end_record == nullptr) return 0;
    return access->end_record(md);
}

int32_t open_stream(MediumStream *ret_stream, MediaDescriptor *md, uint32_t first, uint32_t records, bool writing)
{
    *ret_stream = {.md = md, .first = first, .records = records, .writing = writing};
    const MediumAccess *access = medium_access(md);
    if (access == nullptr) return -1;
    return access->open_stream == nullptr ? 0 : access->open_stream(ret_stream);
}

int32_t read_stream(MediumStream *stream, uint8_t *buffer, uint32_t records)
{
    const MediumAccess *access = medium_access(stream->md);
    if (access == nullptr || access->read_stream == nullptr) return -1;
    records = std::min(records, stream->records - stream->next);
    if (records == 0) return 0;
    const int32_t count = access->read_stream(stream, buffer, records);
    if (count > 0) stream->next += static_cast<uint32_t>(count);
    return count;
}

uint32_t write_stream(MediumStream *stream, const uint8_t *buffer, uint32_t records)
{
    const MediumAccess *access = medium_access(stream->md);
    if (access == nullptr || access->write_stream == nullptr) return 0;
    const bool ends = stream->next + records == stream->records;
    const int32_t count = access->write_stream(stream, buffer, records, ends);
    const uint32_t done = count > 0 ? static_cast<uint32_t>(count) : 0;
    stream->next += done;
    return done;
}

int32_t close_stream(MediumStream *stream)
{
    const MediumAccess *access = medium_access(stream->md);
    if (access == nullptr) return -1;
    return access->close_stream == nullptr ? 0 : access->close_stream(stream);
}

void refresh_medium(MediaDescriptor *md)
{
    const MediumAccess *access = medium_access(md);
    if (access != nullptr && access->refresh != nullptr) access->refresh(md);
}
