// Conversions of whole images in memory, with what holds for each of them.
#pragma once

#include "tests/tape/tape_image.h"

namespace tests
{

Bytes to_slots(const Bytes &image, uint32_t blocksize, int32_t do_pack);
Bytes to_file(const Bytes &image, uint32_t blocksize);
Bytes slots_to_file(const Bytes &image, uint32_t blocksize);
Bytes from_file(const Bytes &content, uint32_t format, uint32_t blocksize);

}
