// What is printed, and the callbacks.
#include "tests/host/session.h"

#include <cstdio>
#include <cstring>
#include <stdexcept>

#include "tests/host/random_calls.h"

namespace host
{

Session session;

namespace
{

constexpr int32_t kind_line = 0;
constexpr uint32_t error_no_more_files = 18;
constexpr uint32_t error_aborted = 995;
constexpr int32_t agreed = 1;

void check_number(int32_t number)
{
    if (number != plugin_number) print("called back for plug-in " + std::to_string(number));
}

int32_t fill_answer(char *answer, int32_t size)
{
    const std::string &target = session.answers.target;
    const auto room = static_cast<size_t>(size);
    switch (session.answers.request) {
    case Answer::no: return 0;
    case Answer::fill: std::memset(answer, target.empty() ? 'A' : target[0], room); return agreed;
    case Answer::yes: break;
    }
    std::memset(answer, 0, room);
    std::memcpy(answer, target.data(), std::min(target.size(), room - 1));
    return agreed;
}

int32_t next_progress_answer()
{
    if (session.answers.calls_before == 0) return session.answers.progress;
    session.answers.calls_before--;
    return 0;
}

std::string answer_text()
{
    switch (session.answers.request) {
    case Answer::no: return "no";
    case Answer::fill: return "yes, all of " + quoted(visible(session.answers.target));
    case Answer::yes: break;
    }
    return "yes " + quoted(visible_path(session.answers.target, session.folder));
}

}

void print(const std::string &line)
{
    session.output += "  " + line + "\n";
}

void flush_output()
{
    if (session.holds_output) return;
    fwrite(session.output.data(), 1, session.output.size(), stdout);
    fflush(stdout);
    session.output.clear();
}

void print_result(const std::string &text, uint32_t error)
{
    const bool ours = error == error_no_more_files || error == error_aborted;
    print("= " + text + (ours ? ", last error " + std::to_string(error) : ""));
}

void begin_call()
{
    flush_output();
    forget_last_error();
}

const std::string &word(const Words &words, size_t index)
{
    if (index >= words.size()) throw std::runtime_error("a word is missing");
    return words[index];
}

int32_t answer_progress(int32_t number, char *source, char *target, int32_t percent)
{
    if (session.answers.random) return random_progress();
    check_number(number);
    const int32_t answer = next_progress_answer();
    if (session.answers.quiet) return answer;
    print("progress " + quoted(visible_path(source, session.folder)) + " -> " +
          quoted(visible_path(target, session.folder)) + " " + std::to_string(percent) +
          "%: " + std::to_string(answer));
    flush_output();
    return answer;
}

void answer_log(int32_t, int32_t, char *)
{
    print("the log was called");
}

int32_t answer_request(int32_t number, int32_t kind, char *title, char *text, char *answer, int32_t size)
{
    if (session.answers.random) return random_request(kind, answer, size);
    check_number(number);
    const std::string line = "request " + std::to_string(kind) + " " + quoted(visible(title)) + " " +
                             quoted(visible_message(text, session.folder));
    if (kind != kind_line) {
        if (session.answers.quiet) return agreed;
        print(line);
        flush_output();
        return agreed;
    }
    print(line + " [" + visible_path(answer, session.folder) + "]: " + answer_text());
    flush_output();
    return fill_answer(answer, size);
}

}
