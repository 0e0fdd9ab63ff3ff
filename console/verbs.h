// The verbs of the program, one row each: what the command line takes, what the help says, what runs. The help, the
// parsing of arguments and the completion of the shell are all read from these rows.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

struct Arguments { // all that a command line can say; an option that wasn't given is empty, 0 or false
    std::string medium;
    std::string word;               // the one word of verbs that take one
    std::vector<std::string> words; // patterns, or files of the host
    int32_t log = -1;               // the log level; -1: none was given
    std::string config;             // the configuration file, a file of the host
    bool no_config = false;
    bool purged = false;
    bool recursive = false;
    bool json = false;
    std::string file;   // of the host
    std::string folder; // of the host
    std::string output; // a file of the host
    std::string header; // one of header_forms
    std::string name;   // on the volume
    std::string type;
    std::string system;
    int32_t record = 0; // bytes
    bool text = false;
    bool force_text = false;
    bool txt = false;
    bool raw = false;
    bool overwrite = false;
    bool backup = false;
    bool damaged = false;
    bool dry_run = false;
    bool interactive = false;
    bool force = false;
    int32_t room = -1;   // bytes of a new file, -1: not given
    int32_t address = 0; // record
    std::string date;
    std::string protect; // "on" or "off"
    std::string hide;    // likewise
    bool verbose = false;
    std::string media; // a row of the table of media
    std::string format;
    std::string volume_size; // bytes, also with K or M
    std::string label;
    std::string boot;        // a file of the host
    int32_t sectors = 0;     // records a track
    int32_t heads = 0;       // surfaces
    int32_t entries = 0;     // of a new directory
    int32_t interleave = -1; // none was given
    bool quick = false;
    std::string layout; // one of tape_layouts
    int32_t block = 0;  // bytes
    bool xml = false;
    bool pack = false;
};

// An option or an argument: exactly one of the members is set; none at all for what the parser answers by itself, and
// for the last word of a list that has a name of its own.
struct ArgumentRow {
    const char *names; // "-h,--help"; without a hyphen an argument, which stands at its place
    const char *help;
    const char *value = nullptr; // how the help calls the value of an option, null for none
    bool required = false;
    bool Arguments::*flag = nullptr;
    std::string Arguments::*text = nullptr;              // an option's is never empty
    std::span<const char *const> choices{};              // all that the text may be; none: anything
    std::vector<std::string> Arguments::*list = nullptr; // as many as there are
    int32_t Arguments::*number = nullptr;
    int32_t least = 0; // of a number
    int32_t most = 0;
};

struct Verb {
    const char *name; // of two words for a verb of a family
    std::span<const char *const> aliases;
    const char *summary; // one line
    const char *text;    // paragraphs of the help, each ended by a line feed
    const char *example; // lines, likewise
    std::span<const ArgumentRow> arguments;
    int (*run)(const Arguments &arguments); // an ExitCode
    bool takes_medium = true;               // its arguments are files to a shell
    bool hidden = false;                    // not in the help
    bool configured = true;                 // the configuration file is read first
};

std::span<const Verb> all_verbs();
std::span<const ArgumentRow> common_options(); // of every verb
const Verb *find_verb(std::string_view name);  // by name or alias; null for none
std::string_view family_of(const Verb &verb);  // the first word of two; empty for a verb of one
std::vector<const Verb *> verbs_of(std::string_view family);
bool is_option(const ArgumentRow &row);
