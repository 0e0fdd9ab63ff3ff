// The two lines that most exports write to the log when they are called.
#pragma once

#include <cstdint>

void log_entry(const char *format, ...) __attribute__((format(printf, 1, 2)));
