// Stands in for the reader of tarvo.ini, so that the plug-in meets any values. For the life of the object the present
// folder is a new one with such a file in it.
#pragma once

#include <cstdint>

#include "tests/support/ini_folder.h"

namespace tests
{

struct ConfiguredValues {
    int32_t use_file_headers = 0;
    int32_t use_type_names = 1;
    int32_t use_typed_extensions = 1;
    int32_t use_file_conversion = 0;
    bool readable = true; // else the reader ends in error 107, with nothing stored
};

class ConfigStandIn
{
  public:
    explicit ConfigStandIn(const ConfiguredValues &values);
    ~ConfigStandIn();
    ConfigStandIn(const ConfigStandIn &) = delete;
    ConfigStandIn &operator=(const ConfigStandIn &) = delete;

    ConfiguredValues values;
    uint32_t readings = 0;

  private:
    IniFolder folder_;
};

}
