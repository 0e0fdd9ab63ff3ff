// Look-up in the tables of type and system words.
#pragma once

#include <cstdint>

#include "volume/filetypes.h"

// The text of a word in a table that a null name ends; null when it has no row.
const char *find_type_name(const TypeName *table, uint32_t word);
