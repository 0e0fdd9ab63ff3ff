// One call that reads a record or a part of it.
#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "tests/tape/tape_image.h"

namespace tests
{

struct Part {
    std::string data; // or the result in words
    int32_t complete;
};

inline bool operator==(const Part &left, const Part &right)
{
    return left.data == right.data && left.complete == right.complete;
}

inline void PrintTo(const Part &part, std::ostream *out)
{
    *out << '"' << part.data << "\" " << part.complete;
}

using Reader = int32_t (*)(TapeImage *, void *, uint32_t, int32_t, int32_t *);

inline Part read_part(Reader reader, Tape &tape, uint32_t most, int32_t part)
{
    std::vector<char> buffer(200000, '#');
    int32_t complete = -9;
    const int32_t count = reader(tape, buffer.data(), most, part, &complete);
    EXPECT_EQ(buffer[most == 0 ? buffer.size() - 1 : most], '#'); // nothing is stored behind the buffer's end
    if (count < 0) return {std::to_string(count), complete};
    return {std::string(buffer.data(), static_cast<size_t>(count)), complete};
}

inline Part forward(Tape &tape, uint32_t most, int32_t part)
{
    return read_part(simh_read_record_forward, tape, most, part);
}

inline Part reverse(Tape &tape, uint32_t most, int32_t part)
{
    return read_part(simh_read_record_reverse, tape, most, part);
}

}
