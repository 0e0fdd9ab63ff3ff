// What tests of new volumes share: the figures of some, and lists of record numbers.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <vector>

#include "tests/support/memory_medium.h"
#include "volume/initialize.h"
#include "volume/media_table.h"

namespace tests
{

using Numbers = std::vector<uint32_t>;

constexpr int32_t quick = 1;

void take_row(const MediaTableRow &row, MediaDescriptor &md); // what a front end makes of it, with short runs

// 4 records a track, 12 tracks, 3 of them for the system; tables at records 1 to 3, their spares at 5 to 7.
void make_small_disk(MediaDescriptor &md, uint16_t magic = 0x0500);

// Directory at records 2 to 4, 20 tracks of 2 surfaces, a label that is too long.
void make_lif(MediaDescriptor &md, uint32_t records);

int32_t initialize(MemoryMedium &medium, int32_t quickformat, ProgressCallback progress = nullptr);

Numbers from_to(uint32_t first, uint32_t count);
Numbers joined(std::initializer_list<Numbers> parts);

}
