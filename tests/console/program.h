// Runs the program from outside, as a shell does. Its command line is in the environment variable TARVO_PROGRAM and may
// have several words: "wine tarvo.exe". It is run by a shell, so it is quoted as a shell wants it.
#pragma once

#include <string>
#include <vector>

#include <rapidjson/document.h>

namespace tests
{

struct Outcome {
    int code = -1; // what the program ended with; -1: it didn't end by itself
    std::string output;
    std::string errors;
};

// The arguments are quoted; `around` may hold %, where the quoted command line goes, for a shell that does more.
Outcome run(const std::vector<std::string> &arguments);
Outcome run_in_shell(const std::vector<std::string> &arguments, const std::string &around);

bool runs_natively(); // not on another system's stand-in, where rights and devices differ

bool can_drop_rights(); // then run_in_shell takes this `around`
constexpr char as_nobody[] = "setpriv --reuid=65534 --clear-groups %";

// Standard output as one JSON object; throws when it isn't one.
rapidjson::Document json_of(const Outcome &outcome);

// The value as JSON text.
std::string json_text(const rapidjson::Value &value);

std::string error_line(const std::string &text); // "[tarvo] Error: TEXT\n"
size_t error_lines(const std::string &text);     // how many lines begin like that
std::string file_text(const std::string &path);
std::string documents();                     // the folder docs of the sources, with a separator behind it
std::string sample(const std::string &name); // the path of a sample volume, empty when there is none

}
