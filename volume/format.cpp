// The rows of the file systems, and the order in which they are asked.
#include "volume/format.h"

#include <array>
#include <cstddef>

#include "volume/lif/lif.h"
#include "volume/sdf/sdf.h"
#include "volume/system45/system45.h"

namespace
{
void set_default_length(FileInfo *info)
{
    info->record_len = 128;
}

constexpr VolumeFormat unknown_format = {.name = "unknown", .complete_info = set_default_length, .may_hold_hfs = true};
constexpr VolumeFormat hfs_format = {.name = "HFS", .complete_info = set_default_length};

constinit const std::array<const VolumeFormat *, 6> rows = {
    &unknown_format, &disk45_format, &tape45_format, &lif_format, &sdf_format, &hfs_format,
};
static_assert(FORMAT_DISK45 == 1 && FORMAT_TAPE45 == 2 && FORMAT_LIF == 3 && FORMAT_SDF == 4 && FORMAT_HFS == 5,
              "the rows stand in this order");

// The tape form comes last: its test goes by record 1, whose first word then counts as the medium's magic.
constexpr std::array<int32_t, 4> asked = {FORMAT_LIF, FORMAT_DISK45, FORMAT_SDF, FORMAT_TAPE45};
}

const VolumeFormat &volume_format(uint32_t format)
{
    return format < rows.size() ? *rows[format] : unknown_format;
}

int32_t recognise_format(MediaDescriptor *md, const uint8_t *record)
{
    for (int32_t format : asked) {
        int32_t answer = rows[static_cast<size_t>(format)]->claims(md, record);
        if (answer != 0) return answer < 0 ? -1 : format;
    }
    return FORMAT_UNKNOWN;
}
