// The places of all files that aren't purged, in order: built once for many questions.
#pragma once

#include <cstddef>
#include <cstdint>

#include "volume/region.h"

class LiveFiles
{
  public:
    explicit LiveFiles(const MediaDescriptor *md);
    ~LiveFiles();
    LiveFiles(const LiveFiles &) = delete;
    LiveFiles &operator=(const LiveFiles &) = delete;

    bool known() const; // false: no memory was to be had, error 105 is set
    bool meet(Region region) const;

  private:
    struct Extent {
        uint64_t start; // record
        uint64_t reach; // first record behind this file and all that start ahead of it: damaged ones may overlap
    };

    Extent *extents = nullptr; // by start
    size_t count = 0;
    bool failed = false;
};
