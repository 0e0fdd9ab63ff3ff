// The configuration file, as the program takes it up.
#pragma once

#include "console/verbs.h"

// Reads the file that the command line names, or the usual one where there is one, and puts it in force. A file that
// can't be understood is reported; where the command line has named it, that is a failure.
// Returns exit_done when the verb may go on.
int apply_configuration(const Arguments &arguments);

// Whether types of files have names; otherwise they are numbers.
bool shows_type_names();

int run_config(const Arguments &arguments);
