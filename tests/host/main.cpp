// host PLUGIN SCRIPT: plays a script of calls against the plug-in as a file manager would, and prints what comes of
// them, the same on all systems. It works in a folder of its own below the present one, with the plug-in copied into
// it, so that nothing that stands beside a plug-in comes into play but what the script puts there.
//
// A line of a script is a command with words behind it; the commands stand at the end of volumes.cpp, calls.cpp and
// control.cpp, and text.h tells how words are written. A line with a failure ends the run with exit code 2.
#include <cstdio>
#include <fstream>
#include <stdexcept>

#include "tests/host/session.h"

namespace host
{

namespace
{

std::vector<std::string> read_lines(const std::filesystem::path &path)
{
    std::ifstream file(path);
    if (!file) throw std::runtime_error("can't read the script");
    std::vector<std::string> lines;
    std::string line;
    while (std::getline(file, line)) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        lines.push_back(line);
    }
    return lines;
}

void run_line(const std::string &line)
{
    const Words words = words_of(line, session.folder);
    if (words.empty()) return;
    session.output += "> " + line.substr(line.find_first_not_of(' ')) + "\n";
    if (!run_control(words) && !run_call(words) && !run_file_command(words))
        throw std::runtime_error("unknown command");
    flush_output();
}

// The folder stays until the end of the process, since a loaded library may not be deleted everywhere.
std::filesystem::path make_folder()
{
    for (int number = 1;; number++) {
        const std::filesystem::path folder = std::filesystem::current_path() / ("tarvo_host_" + std::to_string(number));
        if (std::filesystem::create_directory(folder)) return folder;
    }
}

std::filesystem::path copy_plugin(const std::filesystem::path &plugin, const std::filesystem::path &folder)
{
    const std::filesystem::path own = folder / "plugin" / plugin.filename();
    std::filesystem::create_directory(folder / "plugin");
    std::filesystem::copy_file(plugin, own);
    return own;
}

void run_script()
{
    try {
        run_lines(0, session.lines.size());
    } catch (const std::exception &problem) {
        session.holds_output = false;
        flush_output();
        throw std::runtime_error("line " + std::to_string(session.next_line) + ": " + problem.what());
    }
}

int run(const std::filesystem::path &plugin, const std::filesystem::path &script)
{
    const std::filesystem::path present = std::filesystem::current_path();
    const std::filesystem::path folder = make_folder();
    const std::filesystem::path own = copy_plugin(plugin, folder);
    session.lines = read_lines(script);
    std::filesystem::current_path(folder);
    session.folder = folder.string();
    session.library = load_library(own);
    session.files_at_rest = count_open_files(folder);
    run_script();
    unload_library(&session.library);
    std::filesystem::current_path(present);
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
    return session.failures == 0 ? 0 : 1;
}

}

void run_lines(size_t begin, size_t end)
{
    session.next_line = begin;
    while (session.next_line < end) run_line(session.lines[session.next_line++]);
}

}

int main(int argc, char **argv)
{
    if (argc != 3) {
        fprintf(stderr, "usage: host PLUGIN SCRIPT\n");
        return 2;
    }
    try {
        host::prepare_output();
        host::session.companion = std::filesystem::absolute(argv[0]).parent_path() / "companion" / "tarvodialog64.dll";
        return host::run(argv[1], argv[2]);
    } catch (const std::exception &problem) {
        fprintf(stderr, "host: %s\n", problem.what());
        return 2;
    }
}
