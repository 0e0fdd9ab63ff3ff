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

Outcome run_on(const std::string &verb, const TemporaryFile &volume, const Names &words = {});

std::string file_content(const Bytes &image, const std::string &name); // of a System 45 disk

Bytes with_byte(Bytes image, size_t position, uint8_t value);

}
