// What is done with the custom tables as a whole, and the texts of their rows.
#pragma once

#include <cstddef>

#include "config/custom_tables.h"

void copy_builtin_tables(); // in place of what the custom tables hold
void use_custom_tables();   // the tables in force are the custom ones from now on
void use_builtin_tables();  // and these are empty again

// A copy of a text, cut after so many characters, for rows of the custom tables; it goes when these are filled anew.
// Null with error 105.
char *keep_row_text(const char *text, size_t most);
