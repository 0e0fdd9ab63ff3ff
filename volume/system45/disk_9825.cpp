// The disks of the 9825: laid out like the others of the family, but without a magic word, so that three more words of
// record 0 tell them.
#include "base/convert.h"
#include "base/output.h"
#include "volume/system45/system45_inner.h"

namespace
{
constexpr uint16_t records_a_track = 30;
constexpr uint16_t directory_start = 1;
constexpr uint16_t availability_start = 23;

struct Rom {
    uint32_t tracks;
    const char *name;
};

constexpr Rom roms[] = {{67, "98217A"}, {77, "98288A"}};
}

bool is_disk9825(const MediaDescriptor *md, const uint8_t *record)
{
    return md->magic == magic_9825 && get_word(record + 2) == records_a_track &&
           get_word(record + 8) == directory_start && get_word(record + 10) == availability_start;
}

void announce_disk9825(const MediaDescriptor *md)
{
    const char *name = "unknown";
    for (const Rom &rom : roms) {
        if (rom.tracks == md->cylinders) name = rom.name;
    }
    output_format("9825 with %s ROM\n", name);
    output_flush();
}
