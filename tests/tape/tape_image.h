// Tape images made byte by byte from their layout, without the engine, and a tape over such a file.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>

#include "tape/simh.h"
#include "tests/support/bytes.h"

namespace tests
{

// ---- what stands on a tape -----------------------------------------------------------------------------

Bytes joined(std::initializer_list<Bytes> parts);
Bytes little_word(uint32_t value);
Bytes tape_record(const std::string &data);
Bytes tape_mark();
Bytes end_of_medium();
Bytes gap_words(uint32_t count);
Bytes half_gap(); // two bytes

// Slots of the fixed layout, for block sizes that are multiples of 4.
Bytes record_slot(const std::string &data, uint32_t blocksize);
Bytes mark_slot(uint32_t blocksize);
Bytes empty_slot(uint32_t blocksize);
Bytes end_slot(uint32_t blocksize);

// Any bytes, the same for the same number.
std::string some_data(uint32_t length, uint32_t number = 0);

// ---- a tape --------------------------------------------------------------------------------------------

class Tape
{
  public:
    explicit Tape(const Bytes &image, uint32_t format = SIMH_VARIABLE, uint32_t blocksize = 0);
    ~Tape();
    Tape(const Tape &) = delete;
    Tape &operator=(const Tape &) = delete;

    TapeImage *operator->()
    {
        return &image;
    }
    operator TapeImage *() // as the functions take it
    {
        return &image;
    }

    uint32_t position() const;
    void seek(uint32_t position) const;
    Bytes bytes() const; // what the file holds now

    // A whole record, or what the read returned in words: "-4".
    std::string read();
    std::string read_back();
    int32_t write(const std::string &data, int32_t part = SIMH_WHOLE_RECORD);

    TemporaryFile file;
    TapeImage image{};
};

// What stands on the tape from its begin to what ends it, by reading it record by record: "ABC -4 DE -2".
std::string contents(Tape &tape);

}
