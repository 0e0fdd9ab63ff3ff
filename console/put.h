// The verb that copies files to a medium.
#pragma once

#include "console/verbs.h"

int run_put(const Arguments &arguments);
