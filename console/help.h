// The texts that the program prints about itself.
#pragma once

#include "console/verbs.h"

int print_version();              // an ExitCode, as all of these
int print_help(const Verb *verb); // of a verb; null: the list of verbs
int run_help(const Arguments &arguments);
