// Error lines on standard error, data on standard output.
#include "console/report.h"

#include <cstring>

#include "base/output.h"
#include "platform/platform.h"

namespace
{
constexpr uint32_t cannot_open = 300;
constexpr uint32_t write_error = 303;
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
}

void report_error(const ErrorWords &words)
{
    file_printf(file_stderr(), "[tarvo] Error: %s\n", words.text);
    if (words.system[0] != '\0') file_printf(file_stderr(), "[tarvo]        %s\n", words.system);
}

int report_failure()
{
    ErrorWords words;
    take_error(&words);
    report_error(words);
    return exit_failed;
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
