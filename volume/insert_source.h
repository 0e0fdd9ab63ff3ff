// Where the bytes come from that go onto a medium: a file of the host, or memory.
#pragma once

#include "volume/content/content.h"
#include "volume/insert_inner.h"

// At most so many bytes; fewer only at the source's end. -1 with error 302.
int32_t read_source(InsertSource *source, uint8_t *buffer, uint32_t bytes);

bool go_to(InsertSource *source, uint64_t position); // error 301

// Turns all lines of a source into content. False, with the error set, when the source can't be read, the content not
// be kept, or there is no memory.
bool convert_lines(InsertSource *source, const ContentConverter &converter, InwardState *state);
