// Commands that steer: what the callbacks answer, loops, and what is asked of the process.
#include <fstream>
#include <stdexcept>

#include "tests/host/random_calls.h"
#include "tests/host/random_copies.h"
#include "tests/host/session.h"

namespace host
{

namespace
{

// answer request yes TARGET | no | fill CHARACTER, answer progress N [after CALLS]
void set_answer(const Words &words)
{
    if (word(words, 1) == "progress") {
        session.answers.progress = std::stoi(word(words, 2));
        session.answers.calls_before = words.size() > 4 && words[3] == "after" ? number_of(words[4]) : 0;
        return;
    }
    if (words[1] != "request") throw std::runtime_error("unknown callback");
    const std::string &kind = word(words, 2);
    session.answers.target = kind == "no" ? "" : word(words, 3);
    session.answers.request = Answer::no;
    if (kind == "yes") session.answers.request = Answer::yes;
    if (kind == "fill") session.answers.request = Answer::fill;
}

size_t end_of_block(size_t line)
{
    size_t depth = 1;
    for (; line < session.lines.size(); line++) {
        const Words words = words_of(session.lines[line], session.folder);
        if (words.empty()) continue;
        if (words[0] == "repeat" || (words.size() > 2 && words[0] == "volume" && words[2] == "lif")) depth++;
        if (words[0] == "end" && --depth == 0) return line;
    }
    throw std::runtime_error("repeat without end");
}

// The first round is printed, of the others only how many went like the second.
void repeat(const Words &words) // repeat N ... end
{
    const uint32_t rounds = number_of(word(words, 1));
    const size_t begin = session.next_line;
    const size_t end = end_of_block(begin);
    if (rounds < 2 || session.holds_output) throw std::runtime_error("at least 2 rounds, not inside others");
    run_lines(begin, end);
    flush_output();
    session.holds_output = true;
    std::string second;
    uint32_t alike = 0;
    for (uint32_t round = 2; round <= rounds; round++) {
        run_lines(begin, end);
        if (round == 2) second = session.output;
        alike += session.output == second ? 1u : 0u;
        session.output.clear();
    }
    session.holds_output = false;
    print("= " + std::to_string(alike) + " rounds like the second");
    session.next_line = end + 1;
}

void random_calls(const Words &words) // random SEED COUNT
{
    run_random_calls(number_of(word(words, 1)), number_of(word(words, 2)));
}

void random_copies(const Words &words) // random-copies SEED COUNT
{
    run_random_copies(number_of(word(words, 1)), number_of(word(words, 2)));
}

void open_files(const Words &)
{
    const size_t count = count_open_files(session.folder);
    print("= " + std::to_string(count - session.files_at_rest) + " files open");
}

// companion: from now on a dialog stands beside the plug-in
void put_companion(const Words &)
{
    std::filesystem::copy_file(session.companion, std::filesystem::path("plugin") / session.companion.filename());
}

// dialog yes TARGET OPTIONS | no
void set_dialog_answer(const Words &words)
{
    const std::filesystem::path answer = "dialog_answer.txt";
    std::filesystem::remove(answer);
    if (word(words, 1) == "yes") std::ofstream(answer) << word(words, 2) << '\n' << word(words, 3) << '\n';
}

struct ControlCommand {
    const char *name;
    void (*run)(const Words &words);
};

constexpr ControlCommand commands[] = {
    {"answer", set_answer},           {"repeat", repeat},         {"random", random_calls},
    {"random-copies", random_copies}, {"open-files", open_files}, {"companion", put_companion},
    {"dialog", set_dialog_answer},
};

}

bool run_control(const Words &words)
{
    for (const ControlCommand &command : commands) {
        if (words[0] != command.name) continue;
        command.run(words);
        return true;
    }
    return false;
}

}
