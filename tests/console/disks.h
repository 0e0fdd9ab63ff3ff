// Disks for the tests of the verbs that look at whole volumes.
#pragma once

#include <string>
#include <vector>

#include "tests/console/copies.h"
#include "tests/console/program.h"
#include "tests/support/stored_volume.h"
#include "tests/support/system45_builder.h"

namespace tests
{

// ALPHA at 63, BETA at 70, GAMMA (protected, of 512-byte records) at 90, with holes between; 4 tracks of 30 records.
DiskVolume disk_with_holes();

Outcome run_on(const std::string &verb, const TemporaryFile &volume, const Names &words = {});

std::string file_content(const Bytes &image, const std::string &name); // of a System 45 disk

Bytes with_byte(Bytes image, size_t position, uint8_t value);

}
