// The help, made from the table of verbs, and the version.
#include "console/help.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "base/output.h"
#include "console/report.h"

namespace
{
constexpr size_t line_width = 79; // a line of 80 would make some terminals wrap
constexpr size_t left_width = 16; // names of verbs and options, with the blanks before and behind

constexpr std::string_view blanks = "                                ";
static_assert(blanks.size() >= left_width);

// Prints words, so that no line is longer than line_width; lines behind the first begin at column `indent`.
void print_wrapped(std::string_view text, size_t column, size_t indent)
{
    bool first = true;
    while (!text.empty()) {
        std::string_view word = text.substr(0, text.find(' '));
        text.remove_prefix(std::min(word.size() + 1, text.size()));
        if (!first && column + 1 + word.size() > line_width) {
            output_text("\n");
            output_text(blanks.substr(0, indent));
            column = indent;
        } else if (!first) {
            output_text(" ");
            column++;
        }
        output_text(word);
        column += word.size();
        first = false;
    }
    output_text("\n");
}

// A name at the left, what it means beside it, or below where the name is too long.
void print_row(std::string_view name, std::string_view meaning)
{
    output_text("  ");
    output_text(name);
    size_t column = 2 + name.size();
    if (column + 2 > left_width) {
        output_text("\n");
        column = 0;
    }
    output_text(blanks.substr(0, left_width - column));
    print_wrapped(meaning, left_width, left_width);
}

void print_lines(std::string_view lines, std::string_view before)
{
    while (!lines.empty()) {
        size_t length = lines.find('\n');
        output_text(before);
        print_wrapped(lines.substr(0, length), before.size(), before.size());
        lines.remove_prefix(length + 1);
    }
}

std::string shown_name(const ArgumentRow &row)
{
    std::string name;
    for (const char *character = row.names; *character != '\0'; character++) {
        name += *character;
        if (*character == ',') name += ' ';
    }
    if (row.value != nullptr) name.append(" ").append(row.value);
    return name;
}

void print_usage_line(const Verb &verb)
{
    output_text("Usage: tarvo ");
    output_text(verb.name);
    output_text(" [OPTION...]");
    for (const ArgumentRow &row : verb.arguments) {
        if (is_option(row)) continue;
        std::string name = row.names;
        if (row.list != nullptr) name += "...";
        output_text(row.required ? " " + name : " [" + name + "]");
    }
    output_text("\n\n");
}

void print_arguments(const Verb &verb)
{
    output_text("\nArguments:\n");
    for (const ArgumentRow &row : verb.arguments) {
        if (!is_option(row)) print_row(row.names, row.help);
    }
    output_text("\nOptions:\n");
    for (const ArgumentRow &row : verb.arguments) {
        if (is_option(row)) print_row(shown_name(row), row.help);
    }
    for (const ArgumentRow &row : common_options()) print_row(shown_name(row), row.help);
}

void print_verb_help(const Verb &verb)
{
    print_usage_line(verb);
    print_lines(verb.text, "");
    if (!verb.aliases.empty()) {
        output_text("\nThe same:");
        for (const char *alias : verb.aliases) output_format(" %s", alias);
        output_text("\n");
    }
    print_arguments(verb);
    output_text("\nExample:\n");
    print_lines(verb.example, "  ");
}

void print_summary(const Verb &verb)
{
    std::string summary = verb.summary;
    if (!verb.aliases.empty()) summary += "; also called";
    for (const char *alias : verb.aliases) summary.append(" ").append(alias);
    print_row(verb.name, summary);
}

void print_verb_list()
{
    output_text("Usage: tarvo VERB [OPTION...] MEDIUM [ARGUMENT...]\n\n"
                "The files on the media of old HP computers: block images, tape images, floppy\n"
                "discs, drives on an HP-IB bus.\n\nVerbs:\n");
    for (const Verb &verb : all_verbs()) {
        if (!verb.hidden) print_summary(verb);
    }
    output_text("\nOptions:\n");
    print_row("-h, --help", "print this help; behind a verb, the verb's");
    print_row("--version", "print the version");
    output_text("\nThe program ends with 0 when all was done, 1 when it failed, 2 when a part was\n"
                "done, 3 when a check has found faults, 64 when the command line is wrong.\n\n"
                "Example:\n  tarvo ls disc.lif\n");
}
}

int print_version()
{
    begin_data();
    output_text("tarvo " TARVO_VERSION "\n");
    return finish_data(exit_done);
}

int print_help(const Verb *verb)
{
    begin_data();
    if (verb != nullptr) {
        print_verb_help(*verb);
    } else {
        print_verb_list();
    }
    return finish_data(exit_done);
}

int print_family_help(std::string_view family)
{
    begin_data();
    output_text("Usage: tarvo ");
    output_text(family);
    output_text(" VERB [OPTION...] FILE [ARGUMENT...]\n\nVerbs:\n");
    const std::vector<const Verb *> verbs = verbs_of(family);
    for (const Verb *verb : verbs) print_summary(*verb);
    output_text("\nExample:\n");
    for (const Verb *verb : verbs) print_lines(verb->example, "  ");
    return finish_data(exit_done);
}

int report_no_verb(std::string_view name)
{
    const std::vector<const Verb *> verbs = verbs_of(name);
    if (verbs.empty()) return report_usage(("There is no verb \"" + std::string(name) + "\"").c_str());
    std::string seconds;
    for (const Verb *verb : verbs) {
        if (!seconds.empty()) seconds += verb == verbs.back() ? " or " : ", ";
        seconds += verb->name + name.size() + 1;
    }
    return report_usage((std::string(name) + " takes a second word: " + seconds).c_str());
}

int run_help(const Arguments &arguments)
{
    std::string name;
    for (const std::string &word : arguments.words) name += (name.empty() ? "" : " ") + word;
    if (arguments.words.empty()) return print_help(nullptr);
    const Verb *verb = find_verb(name);
    if (verb != nullptr) return print_help(verb);
    return verbs_of(name).empty() ? report_no_verb(name) : print_family_help(name);
}
