// The lines of the catalogue, and the walk over the entries that a file specification selects.
#pragma once

#include <cstdint>

#include "volume/media.h"

// The head, or one line, by the format of md, into the engine's output; the caller flushes. list_level: that of a
// listing which goes into directories, 0 for another one.
void print_list_head(const MediaDescriptor *md);
void print_list_entry(const MediaDescriptor *md, const FileInfo *info, uint32_t list_level);

using EntryVisitor = void (*)(void *context, const MediaDescriptor *md, const FileInfo *info);

struct Selection {
    const FileInfo *list;        // where the walk begins; null: an empty directory
    const char *const *filespec; // as match_filespec takes it
    bool recursive;              // the lists of directories come behind their entries, whether these match or not
};

// Calls `visit` for each entry that matches and isn't hidden as purged, in list order. Returns how many.
uint32_t visit_selected(const MediaDescriptor *md, const Selection &selection, EntryVisitor visit, void *context);
uint32_t visit_matching(const MediaDescriptor *md, const char *const *filespec, EntryVisitor visit, void *context);
