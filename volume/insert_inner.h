// Copying in, below its exported functions: for the faces, which have other sources than named files, and want to know
// more than the result says.
#pragma once

#include <cstdint>

#include "base/file.h"
#include "base/log.h"
#include "platform/platform.h"
#include "volume/insert.h"
#include "volume/media.h"
#include "volume/survey.h"

struct InsertSource {
    FileHandle file = 0;            // read from its start, stays open; 0: `bytes` is the source
    FileFacts facts = {};           // of it; may be missing
    const uint8_t *bytes = nullptr; // not owned
    uint64_t size = 0;              // bytes
    uint64_t position = 0;          // where the next read begins; the reader's own
};

struct InsertOrder {
    const char *name = nullptr;          // host path from which the name on the volume is made
    uint16_t flags = 0;                  // INSERT_...
    ProgressCallback progress = nullptr; // may be null
    ListSurvey *survey = nullptr;        // of one who inserts many and alone changes the list; may be null
    bool only_plan = false;              // the entry is made, in memory, but no record is written
};

struct Insertion {
    int32_t result = -1;       // as that of image_add_file
    bool whole = false;        // all of the source is on the medium, or would be: the source may go
    bool stopped = false;      // progress asked for it
    FileInfo *entry = nullptr; // in the list since; null when none was made
    bool deleted_old = false;  // a file of this name was taken out of the list
};

// As image_add_file, from a file of the host.
Insertion insert_file(MediaDescriptor *md, FileInfo *new_file, const InsertOrder &order);

// The same from a source at hand; new_file->date is its date already.
Insertion insert_from(MediaDescriptor *md, FileInfo *new_file, InsertSource *source, const InsertOrder &order);
