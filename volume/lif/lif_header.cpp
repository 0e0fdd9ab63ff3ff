// The header of a new LIF volume.
#include "volume/lif/lif_header.h"

#include <cstring>

#include "base/convert.h"

void compose_lif_header(MediaDescriptor *md, uint8_t *record)
{
    constexpr uint16_t magic = 0x8000;
    constexpr size_t label_bytes = 6;
    md->file_area_start = md->dir_start + md->dir_size;
    const uint64_t ahead = uint64_t{md->file_area_start} * RECORD_SIZE;
    md->data_size = ahead < md->size ? static_cast<uint32_t>(md->size - ahead) : 0;
    std::memcpy(record + 2, md->label, label_bytes);
    set_word(record, magic);
    set_dword(record + 8, md->dir_start);
    set_word(record + 12, md->dir_id);
    set_dword(record + 16, md->dir_size);
    set_word(record + 20, md->version);
    set_dword(record + 24, md->heads != 0 ? md->cylinders / md->heads : 0);
    set_dword(record + 28, md->heads);
    set_dword(record + 32, md->sectors);
    tm2datetime(record + 36, &md->date);
}
