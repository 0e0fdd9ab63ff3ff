// The Structured Directory Format: recognised, and refused.
#include "volume/sdf/sdf.h"

#include "base/error.h"
#include "volume/filetypes_inner.h"
#include "volume/type_text.h"

namespace
{
constexpr uint16_t sdf_magic = 0x0700;
constexpr uint32_t default_record_len = 128;

int32_t claims_sdf(MediaDescriptor *md, const uint8_t *)
{
    return md->magic == sdf_magic ? 1 : 0;
}

int32_t refuse_sdf(MediaDescriptor *, const uint8_t *)
{
    set_error(109, "SDF volume");
    return -1;
}

void complete_sdf(FileInfo *info)
{
    if ((info->type & 0xFF80) != 0xE980) {
        const char *system = find_type_name(LIF_system, info->type >> 8);
        if (system != nullptr) set_system_text(info, system);
    }
    if (info->record_len == 0) info->record_len = default_record_len;
}
}

const VolumeFormat sdf_format = {
    .name = "SDF",
    .claims = claims_sdf,
    .read_header = refuse_sdf,
    .complete_info = complete_sdf,
    .name_limit = 16,
};
