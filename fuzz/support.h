// What the fuzz targets share: an input taken apart, the image in memory, and heap and file calls that count and fail.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "base/file.h"

namespace fuzz
{

using Bytes = std::vector<uint8_t>;

// Ends the run, which the fuzzer takes for a find.
void demand(bool holds);

// Takes from the front; what the input lacks is zero.
class Input
{
  public:
    Input(const uint8_t *data, size_t size) : left_(data, size) {}

    uint8_t take_byte();
    uint16_t take_word();                             // high byte first
    std::span<const uint8_t> take_bytes(size_t most); // fewer at the end

    std::span<const uint8_t> rest() const
    {
        return left_;
    }

  private:
    std::span<const uint8_t> left_;
};

// Loads the engine, with its log and what it prints going nowhere. 0, or 1 when that fails: the result of
// LLVMFuzzerInitialize.
int prepare();

// ---- the private heap ------------------------------------------------------------------------------------

extern uint64_t live_blocks;      // allocated and not released
extern uint64_t allocations_left; // until one fails; all ones: none does

// ---- files -------------------------------------------------------------------------------------------------

// An image, or a file of the host, in memory.
class MemoryFile
{
  public:
    explicit MemoryFile(const char *name);

    void store(std::span<const uint8_t> bytes) const; // in place of what it holds; the position is its start
    Bytes bytes() const;
    FileHandle handle() const; // for the engine
    std::string path() const;

  private:
    int descriptor_;
};

// What the engine writes into one file is counted; into any file, the n-th write may fail, and one file may be full.
struct WriteRules {
    FileHandle watched = 0;      // 0: none
    uint64_t room = UINT64_MAX;  // bytes that the watched file still takes
    uint64_t bytes = 0;          // that the watched file has taken
    uint64_t left = UINT64_MAX;  // writes until one fails
    uint64_t reads = UINT64_MAX; // reads until one fails
};

extern WriteRules rules; // from prepare() on

}
