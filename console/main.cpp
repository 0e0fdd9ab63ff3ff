// The program tarvo: which verb is meant, and the engine around it.
#include <new>
#include <string>
#include <string_view>

#include "base/attach.h"
#include "base/log.h"
#include "base/output.h"
#include "console/arguments.h"
#include "console/configuration.h"
#include "console/help.h"
#include "console/report.h"

namespace
{
constexpr uint32_t out_of_memory = 105;
constexpr uint32_t not_initialized = 106;
constexpr int32_t warnings = 1;

struct Attachment {
    const bool done = library_attach() == 0;
    ~Attachment()
    {
        if (done) library_detach();
    }
};

int run_verb(const Verb &verb, const Arguments &arguments)
{
    const Attachment attachment;
    if (!attachment.done) {
        set_error(not_initialized, "");
        return report_failure();
    }
    logfile = file_stderr();
    loglevel = arguments.log < 0 ? warnings : arguments.log;
    const int code = verb.configured ? apply_configuration(arguments) : int{exit_done};
    return code == exit_done ? verb.run(arguments) : code;
}

int run_words(const Verb &verb, int count, char **words)
{
    Arguments arguments;
    switch (parse_arguments(verb, count, words, &arguments)) {
    case Asked::run: return run_verb(verb, arguments);
    case Asked::help: return print_help(&verb);
    case Asked::version: return print_version();
    case Asked::nothing: break;
    }
    return exit_usage;
}

// A verb of two words; the first one alone has only help.
int run_family(std::string_view family, int count, char **words)
{
    const std::string_view second = count > 0 ? words[0] : "";
    if (second == "--version") return print_version();
    if (second == "--help" || second == "-h") return print_family_help(family);
    const std::string name = std::string(family) + " " + std::string(second);
    const Verb *verb = find_verb(name);
    if (verb != nullptr) return run_words(*verb, count - 1, words + 1);
    return report_no_verb(count > 0 ? name : family);
}

int run_program(int count, char **words)
{
    output_to(file_stderr()); // standard output is for data
    if (count < 2) return report_usage("A verb is required");
    std::string_view first = words[1];
    if (first == "--version") return print_version();
    if (first == "--help" || first == "-h") return print_help(nullptr);
    const Verb *verb = find_verb(first);
    if (verb != nullptr) return run_words(*verb, count - 2, words + 2);
    if (!verbs_of(first).empty()) return run_family(first, count - 2, words + 2);
    return report_no_verb(first);
}
}

int main(int count, char **words)
{
    try {
        return run_program(count, words);
    } catch (const std::bad_alloc &) {
        set_error(out_of_memory, "");
        return report_failure();
    }
}
