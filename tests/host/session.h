// One run of a script: the loaded plug-in, what the callbacks are to answer, the folder that it works in, and what it
// prints.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/host/library.h"
#include "tests/host/text.h"

namespace host
{

enum class Answer : uint8_t { no, yes, fill }; // fill: the whole buffer, without an end

struct Answers {
    Answer request = Answer::no;
    std::string target;
    int32_t progress = 0;
    uint32_t calls_before = 0; // of progress, which are answered with 0
    bool random = false;       // all of them, and nothing is printed
    bool quiet = false;        // progress and messages aren't printed
};

struct Session {
    Library library;
    std::string folder;              // present folder, without a separator at its end
    std::filesystem::path companion; // the library that stands in for the dialog
    Answers answers;
    void *handle = nullptr;   // of the last listing
    size_t files_at_rest = 0; // open before the first call
    std::string output;       // not printed yet
    bool holds_output = false;
    int failures = 0;

    std::vector<std::string> lines; // of the script
    size_t next_line = 0;
};

constexpr int32_t plugin_number = 7;

// The callbacks are plain functions without a context.
extern Session session;

void print(const std::string &line);                        // with an indent and a line end
void flush_output();                                        // unless it is held back
void print_result(const std::string &text, uint32_t error); // the error only where it is one of the plug-in's
void begin_call(); // no last error; what was printed is out before the plug-in prints
const std::string &word(const Words &words, size_t index);

int32_t answer_progress(int32_t number, char *source, char *target, int32_t percent);
void answer_log(int32_t number, int32_t kind, char *text);
int32_t answer_request(int32_t number, int32_t kind, char *title, char *text, char *answer, int32_t size);

// Runs lines up to `end`, which isn't run.
void run_lines(size_t begin, size_t end);

// The commands by their subjects; false when it is none of them.
bool run_file_command(const Words &words);
bool run_call(const Words &words);
bool run_control(const Words &words);

}
