// A configuration file from a text, read, and what came of it.
#pragma once

#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "config/config_file.h"
#include "config/config_inner.h"
#include "config/custom_inner.h"
#include "tests/support/volume_builder.h"

namespace tests
{

constexpr int32_t untouched = -77; // what a value is that the file says nothing of

struct ConfigReading {
    explicit ConfigReading(const std::string &text);
    explicit ConfigReading(const Bytes &bytes);

    int32_t result = 0;
    std::string error; // as get_error composes it; "" where none was set
    std::string printed;
    ConfigFault fault;

    int32_t loglevel = untouched;
    int32_t board = untouched;
    uint32_t port = static_cast<uint32_t>(untouched);
    int32_t nosleep = untouched;
    int32_t fastschedule = untouched;
    char system[CONFIG_SYSTEM_SIZE] = "9845";
    int32_t filesystem = untouched;
    int32_t use_file_headers = untouched;
    int32_t use_type_names = untouched;
    int32_t use_typed_extensions = untouched;
    int32_t use_file_conversion = untouched;
};

// A section with one line.
std::string in_section(const char *section, const std::string &line);

// The reading fails at this line, with error 107 and these words, and nothing is printed.
void expect_config_error(const std::string &text, int32_t line, const std::string &words);

// Tables as they are at load, again at the end of each test.
class ConfigTest : public testing::Test
{
  protected:
    ~ConfigTest() override;
};

size_t media_count();
size_t drive_count();
size_t type_count();
const MediaTableRow *custom_media(const std::string &name,
                                  size_t which = 0); // the which-th of that name; null for none
const GpibDriveInfo *custom_drive(const std::string &name, size_t which = 0);
const LifType *custom_type(uint32_t type);

}
