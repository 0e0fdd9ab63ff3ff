// What a shell needs to complete command lines.
#pragma once

#include "console/verbs.h"

int run_completion(const Arguments &arguments);
