// The verbs that look at a medium and change nothing: ls and info.
#pragma once

#include "console/verbs.h"

int run_ls(const Arguments &arguments);
int run_info(const Arguments &arguments);
