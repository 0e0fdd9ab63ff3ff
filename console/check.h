// The verbs that look for faults of a volume: check, and repair, which takes some of them away.
#pragma once

#include "console/verbs.h"

int run_check(const Arguments &arguments);
int run_repair(const Arguments &arguments);
