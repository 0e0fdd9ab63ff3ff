// Image files that are tapes.
#pragma once

#include "volume/access.h"

bool is_tape_name(const char *msus);

// Gives an image file its tape. 0, or -1 with error 105.
int32_t add_tape(MediaDescriptor *md);
void remove_tape(MediaDescriptor *md); // there may be none

// Tests the open file of a tape; where it is no tape image it loses its tape, and is a plain one.
void test_tape(MediaDescriptor *md);

// "SIMH magtape image (...)", or that it is a plain one.
const char *image_type_text(const MediaDescriptor *md);

// From now on the medium is what the records of its tape hold, in their order; where they hold nothing it stays the
// bytes of the file. 0, or -1 with error 105, 301 or 302.
int32_t read_tape_as_medium(MediaDescriptor *md);
