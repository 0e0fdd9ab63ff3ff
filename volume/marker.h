// Names of exactly ten characters on LIF volumes may end in a marker of their type, filled up with "_".
#pragma once

#include <cstdint>

// The type text that a marked name gives; null when the name has no marker of its type.
const char *marked_type(uint16_t type, const char *name);

// Where the marker of a name stands, -1 when the name isn't ten characters long or has "_" only.
int32_t marker_position(const char *name);

// The marker that goes with a type text and type, 0 for none.
char marker_of(const char *type_text, uint16_t type);

// Whether the marker at the end of a name is the one of its type; type 1 needs the type text "ASC" besides.
bool marker_belongs(uint16_t type, const char *type_text, char marker);
