// A System 45 disc made by hand, for what works on its free list without reading its header.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "tests/support/medium.h"

namespace tests
{

using FreeRun = std::pair<uint32_t, uint32_t>; // location, size in records
using Runs = std::vector<FreeRun>;

constexpr uint32_t table_start = 5;
constexpr uint32_t spare_table_start = 11;
constexpr uint32_t first_file_record = 30;

// A disc of 2,000 records, or what is asked for: directory at 1 to 4, availability table at 5 and 6, their spares
// at 7 to 12, files from record 30 on.
std::unique_ptr<HandMedium> disc(uint32_t records = 2000);
std::unique_ptr<HandMedium> disc_with(const Runs &runs, uint32_t records = 2000);
std::unique_ptr<HandMedium> disc_with_table(const std::vector<uint16_t> &words); // as they stand in the table

void add_run(MediaDescriptor &md, uint32_t location, uint32_t size); // at the end of the list
void add_file(MediaDescriptor &md, uint32_t location, uint32_t records, uint32_t deleted = 0);
Runs runs_of(const MediaDescriptor &md);

}
