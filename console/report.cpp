// Error lines on standard error, data on standard output.
#include "console/report.h"

#include <cstring>

#include "base/output.h"
#include "platform/platform.h"

namespace
{
constexpr uint32_t cannot_open = 300;
constexpr uint32_t write_error = 303;

void report_system_words(const ErrorWords &words)
{
    if (words.system[0] != '\0') file_printf(file_stderr(), "[tarvo]        %s\n", words.system);
}
}

void take_error(ErrorWords *ret_words)
{
    uint32_t reason = platform_last_error();
    ret_words->system[0] = '\0';
    if (global_error == cannot_open && reason != 0) {
        std::strncpy(ret_words->system, last_error(), sizeof ret_words->system - 1);
        ret_words->system[sizeof ret_words->system - 1] = '\0';
    }
    get_error(ret_words->text);
    if (std::strstr(ret_words->text, ret_words->system) != nullptr) ret_words->system[0] = '\0'; // said already
}

void report_error(const ErrorWords &words)
{
    file_printf(file_stderr(), "[tarvo] Error: %s\n", words.text);
    report_system_words(words);
}

void report_error_text(const char *name, const char *text)
{
    file_printf(file_stderr(), "[tarvo] Error: %s: %s\n", name, text);
}

void report_error_of(const char *name, const ErrorWords &words)
{
    report_error_text(name, words.text);
    report_system_words(words);
}

int report_failure()
{
    ErrorWords words;
    take_error(&words);
    report_error(words);
    return exit_failed;
}

int report_failure_of(const char *name)
{
    ErrorWords words;
    take_error(&words);
    report_error_of(name, words);
    return exit_failed;
}

void report_warning_of(const char *name, const char *text)
{
    file_printf(file_stderr(), "[tarvo] Warning: %s: %s\n", name, text);
}

int report_usage(const char *text)
{
    file_printf(file_stderr(), "[tarvo] Error: %s\n[tarvo]        Try \"tarvo --help\".\n", text);
    return exit_usage;
}

void begin_data()
{
    output_to(file_stdout());
    output_failed(); // what failed on standard error isn't the data's
}

int finish_data(int code)
{
    output_flush();
    bool failed = output_failed();
    output_to(file_stderr());
    if (!failed) return code;
    set_error(write_error, "");
    return report_failure();
}
