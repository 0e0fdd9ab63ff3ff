// The verbs that change files of a medium.
#pragma once

#include "console/verbs.h"

int run_cp(const Arguments &arguments);
int run_mv(const Arguments &arguments);
int run_rm(const Arguments &arguments);
int run_mk(const Arguments &arguments);
int run_attr(const Arguments &arguments);
int run_undelete(const Arguments &arguments);
