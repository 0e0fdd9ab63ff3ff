// The texts that the program prints about itself.
#pragma once

#include "console/verbs.h"

int print_version();                            // an ExitCode, as all of these
int print_help(const Verb *verb);               // of a verb; null: the list of verbs
int print_family_help(std::string_view family); // of the verbs that begin with this word
int report_no_verb(std::string_view name);      // exit_usage
int run_help(const Arguments &arguments);
