// What the entries of several formats have in common.
#pragma once

#include <cstdint>

#include "volume/media.h"

// The logical records of a file by its size and record_len, which isn't 0.
uint32_t count_records(const FileInfo *info);
