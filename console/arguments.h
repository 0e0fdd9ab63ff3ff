// From the words of a command line to what they ask for.
#pragma once

#include "console/verbs.h"

enum class Asked : uint8_t { run, help, version, nothing };

// Reads the words behind a verb. Asked::nothing: they can't be understood, which has been reported.
Asked parse_arguments(const Verb &verb, int count, char **words, Arguments *ret_arguments);
