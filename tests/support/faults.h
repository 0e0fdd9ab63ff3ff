// Makes the n-th call of the file layer or of the heap fail, for the life of an object, and writes down what was
// called.
#pragma once

#include <cstdint>
#include <vector>

#include "base/file_inner.h"
#include "base/memory_inner.h"

namespace tests
{

enum class FileFault : uint8_t {
    none,
    open,
    seek,
    read,
    short_read, // half of what was asked for
    write,
    short_write, // half of it reaches the file
    set_end,
    size
};

struct FileAccess {
    bool writing;
    uint64_t position;
    uint64_t bytes;
};

// Calls on the log are neither counted nor made to fail. One object at a time.
class FileFaults
{
  public:
    // nth counts from 1; onward: all later calls of the kind fail too
    explicit FileFaults(FileFault fault = FileFault::none, uint32_t nth = 0, bool onward = false);
    ~FileFaults();
    FileFaults(const FileFaults &) = delete;
    FileFaults &operator=(const FileFaults &) = delete;

    bool reached = false; // the n-th call was made, and failed
    uint32_t opens = 0;
    uint32_t seeks = 0;
    uint32_t reads = 0;
    uint32_t writes = 0;
    uint32_t ends = 0;
    uint32_t sizes = 0;
    uint64_t bytes_read = 0;
    std::vector<FileAccess> accesses; // reads and writes in their order

    bool strikes(FileFault kind, uint32_t count); // is this the call that fails?

  private:
    FileFault fault_;
    uint32_t nth_;
    bool onward_;
    const FileCalls *old_;
    FileCalls calls_;
};

// The n-th allocation gives null; 0: none does.
class HeapFaults
{
  public:
    explicit HeapFaults(uint32_t nth = 0);
    ~HeapFaults();
    HeapFaults(const HeapFaults &) = delete;
    HeapFaults &operator=(const HeapFaults &) = delete;

    bool reached = false;
    uint32_t allocations = 0;
    uint32_t releases = 0;
    uint64_t bytes = 0;

    uint32_t nth;

  private:
    const HeapCalls *old_;
    HeapCalls calls_;
};

}
