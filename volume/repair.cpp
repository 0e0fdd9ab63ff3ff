// Checks a volume, and joins the free space of a System 45 disk.
#include "volume/repair.h"

#include "volume/open.h"
#include "volume/repack.h"
#include "volume/state.h"

namespace
{
constexpr uint16_t check_flags = OPEN_READ_VOLUME | OPEN_CHECK | OPEN_SORT;
}

int32_t image_check(const char *target, int32_t repair)
{
    const auto flags = static_cast<uint16_t>(check_flags | (repair != 0 ? OPEN_REPAIR : 0));
    MediaDescriptor *md = image_open(target, nullptr, flags);
    if (md == nullptr) return -1;
    const int32_t result = md->state == nullptr ? 0 : md->state->table_result;
    image_close(md);
    return result;
}

int32_t image_defrag(const char *target)
{
    MediaDescriptor *md = image_open(target, nullptr, check_flags);
    if (md == nullptr) return -1;
    const int32_t result = repack(md);
    image_close(md);
    return result;
}
