// The verbs that copy files out of a medium: get and cat.
#pragma once

#include "console/verbs.h"

int run_get(const Arguments &arguments);
int run_cat(const Arguments &arguments);
