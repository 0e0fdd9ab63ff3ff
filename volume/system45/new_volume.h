// The first records of new System 45 volumes.
#pragma once

#include "volume/media.h"

// Record 0 into zeroed bytes. On a tape, whose layout is always the same, md is filled in and the record stays zero.
void compose_disk45_header(MediaDescriptor *md, uint8_t *record);
void compose_tape45_header(MediaDescriptor *md, uint8_t *record);
