// The verb that turns tape images and plain ones into each other.
#pragma once

#include "console/verbs.h"

int run_tape_convert(const Arguments &arguments);
