// The header of a new LIF volume.
#pragma once

#include "volume/media.h"

// Record 0 for the label, directory and geometry in md, into zeroed bytes; places of the file area are filled in.
void compose_lif_header(MediaDescriptor *md, uint8_t *record);
