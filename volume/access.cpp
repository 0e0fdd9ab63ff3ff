// The three ways to reach a medium, and the record access that goes through them. A floppy or GPIB drive is refused
// from its own row.
#include "volume/access.h"

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

void refresh_medium(MediaDescriptor *md)
{
    const MediumAccess *access = medium_access(md);
    if (access != nullptr && access->refresh != nullptr) access->refresh(md);
}
