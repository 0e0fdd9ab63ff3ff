// A list of directory entries while it is being built.
#pragma once

#include "volume/media.h"

struct FileList {
    FileInfo *head;
    FileInfo *tail;
};

void append_to_list(FileList *list, FileInfo *info);

// By location; entries with the same one keep their order.
void sort_list(FileList *list);

// The same order for free runs. Returns the new head.
AllocEntry *sort_runs(AllocEntry *head);
