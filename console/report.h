// What the program says besides its data, and how data reach standard output.
#pragma once

#include <cstdint>

#include "base/error.h"
#include "console/exit_code.h"

// The words of a failure. They are taken right behind the failed call, since a log line or another call may change
// the engine's error slot and the system's last error.
struct ErrorWords {
    char text[ERROR_TEXT_SIZE];
    char system[256]; // the operating system's words, empty where there are none
};

// The engine's words for its last error; behind error 300 (can't open) the system's as well, where they aren't among
// them.
void take_error(ErrorWords *ret_words);

// "[tarvo] Error: TEXT" to standard error, and the system's words, if any, on a second line below TEXT.
void report_error(const ErrorWords &words);
int report_failure(); // take_error and report_error; returns exit_failed
// The same with the name of the file that failed ahead of TEXT.
void report_error_text(const char *name, const char *text);
void report_error_of(const char *name, const ErrorWords &words);
int report_failure_of(const char *name);
void report_warning_of(const char *name, const char *text); // "[tarvo] Warning: NAME: TEXT"
int report_usage(const char *text);                         // and where help is to be had; returns exit_usage

// Between these two what the engine and the console print goes to standard output, before and behind to standard
// error. finish_data returns code, or exit_failed when standard output couldn't take all, which it reports.
void begin_data();
int finish_data(int code);
