// A medium in memory with a row of accesses of its own: it writes down what is asked of it, has records that can't be
// read or written, and checks its caller: no record outside it, none through a stream that isn't open.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tests/support/volume_builder.h"
#include "volume/access.h"
#include "volume/media.h"
#include "volume/state.h"

namespace tests
{

class MemoryMedium
{
  public:
    explicit MemoryMedium(uint32_t number_of_records); // of zeros; only what is written takes memory
    explicit MemoryMedium(const Bytes &image);
    ~MemoryMedium(); // an open stream is a failure of the test
    MemoryMedium(const MemoryMedium &) = delete;
    MemoryMedium &operator=(const MemoryMedium &) = delete;

    void limit_to_hardware(); // the row tells how many records there are
    Bytes record(uint32_t number) const;
    Bytes image() const;

    MediaDescriptor md{};
    uint32_t records;
    std::map<uint32_t, Bytes> stored;  // what isn't zero
    std::vector<uint32_t> written;     // numbers, in order
    std::vector<std::string> streams;  // "read 10+5", "write 20+5", and "close" of either, in order
    std::set<uint32_t> unreadable;     // numbers of records
    std::set<uint32_t> unwritable;     // the same
    std::optional<bool> failing_open;  // opening of streams fails: false those for reading, true those for writing
    std::optional<bool> failing_close; // the same of closing
    uint32_t last_end = ~0U;           // index of the record with which a stream was said to end
    uint32_t blank_makings = 0;

    MediaState state{};
    std::set<bool> open_streams; // for writing?
};

}
