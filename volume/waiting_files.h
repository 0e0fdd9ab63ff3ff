// The files of a list that is sorted by location, as they leave their places one after the other: in whose way
// something would be.
#pragma once

#include <cstddef>
#include <cstdint>

#include "volume/region.h"

class WaitingFiles
{
  public:
    explicit WaitingFiles(const FileInfo *list); // purged and empty ones have no place
    ~WaitingFiles();
    WaitingFiles(const WaitingFiles &) = delete;
    WaitingFiles &operator=(const WaitingFiles &) = delete;

    bool known() const; // false: no memory was to be had, error 105 is set
    void leave();       // the first of those that still have their place
    bool meet(Region region) const;

  private:
    uint64_t *starts = nullptr; // records, in order
    uint64_t *ends = nullptr;   // behind each file, from `count` on; ahead of that the larger one of each two
    size_t count = 0;
    size_t left = 0; // so many have left
    bool failed = false;
};
