// Text as the bytes of a file.
#pragma once

#include <string>

#include "tests/support/volume_builder.h"

namespace tests
{

inline Bytes bytes_of(const std::string &text)
{
    return {text.begin(), text.end()};
}

}
