// The verb that lays new volumes: init.
#pragma once

#include "console/verbs.h"

int run_init(const Arguments &arguments);
