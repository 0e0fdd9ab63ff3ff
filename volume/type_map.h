// What a type word becomes when its file goes to a volume of another format.
#pragma once

#include <cstdint>

// Pairs of formats, and types, without a rule keep the word.
uint16_t map_type(uint32_t from_format, uint32_t to_format, uint16_t type);
