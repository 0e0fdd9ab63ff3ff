// Takes the last word of cp and mv apart.
#include "console/destination.h"

#include "base/file_inner.h"
#include "console/host_file.h"
#include "platform/platform.h"
#include "volume/target.h"

namespace
{
// The parts of a target; what is none goes whole to whoever opens it.
std::string split_target(const std::string &target, std::string *ret_rest)
{
    char msus[FILE_PATH_SIZE] = "";
    char rest[FILE_PATH_SIZE] = "";
    if (parse_target(target.c_str(), msus, rest, nullptr, nullptr, nullptr, nullptr, nullptr) < 0) return target;
    *ret_rest = rest;
    return msus;
}

bool is_one_file(const std::string &left, const std::string &right)
{
    HostFile left_file;
    HostFile right_file;
    FileFacts left_facts;
    FileFacts right_facts;
    return file_open_with_facts(&left_file.handle, left.c_str(), &left_facts) &&
           file_open_with_facts(&right_file.handle, right.c_str(), &right_facts) && left_facts.plain &&
           left_facts.identity == right_facts.identity;
}

bool has_separator(const std::string &word)
{
    for (const char character : word) {
        if (character == ':' || character == '/' || character == '\\') return true;
    }
    return false;
}
}

std::string find_destination(const std::string &word, const std::string &medium, Destination *ret_destination)
{
    *ret_destination = {};
    const bool on_medium = word.starts_with(':');
    const std::string name = on_medium ? word.substr(1) : word;
    if (name.empty()) return "DEST is empty";
    if (on_medium && has_separator(name)) return "DEST: a name is without / \\ and :";
    if (!on_medium && platform_is_directory(word.c_str())) {
        return "DEST: \"" + word + "\" is a directory of the host; \"tarvo get\" copies files there";
    }
    ret_destination->guessed = !on_medium && !has_separator(name) && host_file_exists(name.c_str());
    if (on_medium || (!has_separator(name) && !ret_destination->guessed)) {
        ret_destination->name = name;
        return "";
    }
    std::string ignored;
    const std::string present = split_target(medium, &ignored);
    const std::string other = split_target(name, &ret_destination->name);
    if (other != present && !is_one_file(other, present)) ret_destination->medium = other;
    return "";
}
