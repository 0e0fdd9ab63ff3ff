// The verbs that look at tape images.
#pragma once

#include "console/verbs.h"

int run_tape_test(const Arguments &arguments);
int run_tape_ls(const Arguments &arguments);
