// The row of the Structured Directory Format, a tree of directories whose files are told by inodes. It is read only.
#include "volume/sdf/sdf.h"

#include "volume/sdf/sdf_inner.h"

namespace
{
constexpr uint16_t sdf_magic = 0x0700;

int32_t claims_sdf(MediaDescriptor *md, const uint8_t *)
{
    return md->magic == sdf_magic ? 1 : 0;
}
}

const VolumeFormat sdf_format = {
    .name = "SDF",
    .claims = claims_sdf,
    .read_header = read_sdf_header,
    .read_entry = read_sdf_entry,
    .locate_directory = locate_sdf_directory,
    .locate_file = locate_sdf_file,
    .complete_info = complete_sdf_info,
    .name_limit = 16,
    .header_tells_free_space = true,
};
