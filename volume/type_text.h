// The type text and the system text of an entry: two fields of six bytes that run together. A type text of six or
// more characters has no terminator of its own; what stands in the system field continues it.
#pragma once

#include <cstddef>

#include "volume/media.h"

constexpr size_t type_text_size = 12; // both fields

void type_text(const FileInfo *info, char *text);       // type_text_size bytes, always terminated
void set_type_text(FileInfo *info, const char *text);   // at most 11 characters and a NUL
void set_system_text(FileInfo *info, const char *text); // at most 5 characters and a NUL, in its own field
