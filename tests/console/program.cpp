#include "tests/console/program.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include <gtest/gtest.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/volume_builder.h"

namespace tests
{

namespace
{

const std::string error_begin = "[tarvo] Error: ";

std::string program()
{
    const char *words = std::getenv("TARVO_PROGRAM");
    if (words == nullptr || *words == '\0') throw std::runtime_error("TARVO_PROGRAM doesn't name the program");
    return words;
}

std::string quoted(const std::string &word)
{
    std::string result = "'";
    for (const char character : word) result += character == '\'' ? "'\\''" : std::string(1, character);
    return result + "'";
}

// Wine finds its server by way of the folder of temporary files: in another one each program would begin and end a
// server of its own, which now and then a program doesn't survive.
std::string begin_of_line()
{
    const char *folder = std::getenv("TARVO_WINE_TMPDIR");
    if (runs_natively() || folder == nullptr) return "";
    return "TMPDIR=" + quoted(folder) + "; export TMPDIR; ";
}

Outcome run_line(const std::string &line)
{
    const TemporaryFile output(".out");
    const TemporaryFile errors(".err");
    const std::string whole =
        "{ " + begin_of_line() + line + "\n} </dev/null >" + quoted(output.path()) + " 2>" + quoted(errors.path());
    const int status = std::system(whole.c_str());
    Outcome outcome;
    if (status != -1 && WIFEXITED(status)) outcome.code = WEXITSTATUS(status);
    outcome.output = file_text(output.path());
    outcome.errors = file_text(errors.path());
    return outcome;
}

}

Outcome run(const std::vector<std::string> &arguments)
{
    return run_in_shell(arguments, "%");
}

Outcome run_in_shell(const std::vector<std::string> &arguments, const std::string &around)
{
    std::string command = program();
    for (const std::string &argument : arguments) command += " " + quoted(argument);
    std::string line = around;
    line.replace(line.find('%'), 1, command);
    return run_line(line);
}

bool runs_natively()
{
    return program().find(".exe") == std::string::npos;
}

bool can_drop_rights()
{
    return runs_natively() && geteuid() == 0 && std::system("command -v setpriv >/dev/null") == 0;
}

rapidjson::Document json_of(const Outcome &outcome)
{
    rapidjson::Document document;
    document.Parse<rapidjson::kParseValidateEncodingFlag>(outcome.output.c_str(), outcome.output.size());
    if (document.HasParseError() || !document.IsObject()) throw std::runtime_error("no JSON object: " + outcome.output);
    return document;
}

std::string json_text(const rapidjson::Value &value)
{
    rapidjson::StringBuffer buffer;
    rapidjson::Writer<rapidjson::StringBuffer> writer(buffer);
    value.Accept(writer);
    return buffer.GetString();
}

std::string error_line(const std::string &text)
{
    return error_begin + text + "\n";
}

size_t error_lines(const std::string &text)
{
    size_t count = 0;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind(error_begin, 0) == 0) ++count;
    }
    return count;
}

std::string file_text(const std::string &path)
{
    const Bytes bytes = read_file(path);
    return std::string(bytes.begin(), bytes.end());
}

std::string documents()
{
    return TARVO_DOCUMENTS "/";
}

std::string sample(const std::string &name)
{
    const char *folder = std::getenv("TARVO_SAMPLES");
    if (folder == nullptr) return "";
    const std::string path = (std::filesystem::path(folder) / name).string();
    return std::filesystem::exists(path) ? path : "";
}

}
