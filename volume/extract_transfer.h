// The bytes of a file on their way out.
#pragma once

#include "volume/extract_inner.h"

bool becomes_text(const MediaDescriptor *md, const FileInfo *info, uint16_t flags);
void log_forced_conversion(const MediaDescriptor *md, const FileInfo *info, uint16_t flags);

// extract_to_handle without a word about a forced conversion.
Extraction transfer_out(MediaDescriptor *md, const FileInfo *info, FileHandle file, const char *name, uint16_t flags,
                        ProgressCallback progress);
