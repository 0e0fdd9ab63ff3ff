// What is chosen in one run of the dialog.
#pragma once

#include <cstdint>
#include <string>

#include "dialog/last_targets.h"

struct Choice {
    std::string target;
    uint32_t options = 0;
    LastTargets last;
};
