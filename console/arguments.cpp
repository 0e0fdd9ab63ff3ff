// The options and arguments of a verb, handed to the library that parses them. Nothing else knows that library.
#include "console/arguments.h"

#include <CLI/CLI.hpp>

#include "console/report.h"

namespace
{
// The library takes a word "[A,B]" for a list of two. With a mark behind it, which is taken off again, it is one.
constexpr char one_word = '\1';

std::string marked(const char *word)
{
    std::string text = word;
    if (text.starts_with('[') && text.ends_with(']')) text += one_word;
    return text;
}

std::string unmarked(std::string text)
{
    if (text.starts_with('[') && text.ends_with(one_word)) text.pop_back();
    return text;
}

std::string refuse_empty(const std::string &text)
{
    return text.empty() ? "a value is missing" : "";
}

void add_text(CLI::App *app, const ArgumentRow &row, Arguments *arguments)
{
    CLI::Option *option = app->add_option(row.names, arguments->*row.text);
    option->required(row.required)->transform(unmarked);
    if (is_option(row)) option->check(refuse_empty);
    if (!row.choices.empty())
        option->check(CLI::IsMember(std::vector<std::string>(row.choices.begin(), row.choices.end())));
}

void add_row(CLI::App *app, const ArgumentRow &row, Arguments *arguments)
{
    if (row.flag != nullptr) app->add_flag(row.names, arguments->*row.flag);
    if (row.text != nullptr) add_text(app, row, arguments);
    if (row.list != nullptr)
        app->add_option(row.names, arguments->*row.list)->required(row.required)->transform(unmarked);
    if (row.number != nullptr) {
        app->add_option(row.names, arguments->*row.number)->check(CLI::Range(row.least, row.most));
    }
}

void add_rows(CLI::App *app, const Verb &verb, Arguments *arguments)
{
    app->allow_windows_style_options(false); // "/disc.lif" is a file on every system
    app->set_help_flag("-h,--help");
    app->set_version_flag("--version", std::string());
    for (const ArgumentRow &row : verb.arguments) add_row(app, row, arguments);
    for (const ArgumentRow &row : common_options()) add_row(app, row, arguments);
}
}

Asked parse_arguments(const Verb &verb, int count, char **words, Arguments *ret_arguments)
{
    CLI::App app;
    add_rows(&app, verb, ret_arguments);
    std::vector<std::string> last_first; // as the library wants them
    last_first.reserve(static_cast<size_t>(count));
    for (int index = count; index > 0; index--) last_first.push_back(marked(words[index - 1]));
    try {
        app.parse(std::move(last_first));
        return Asked::run;
    } catch (const CLI::CallForHelp &) {
        return Asked::help;
    } catch (const CLI::CallForVersion &) {
        return Asked::version;
    } catch (const CLI::ParseError &error) {
        report_usage(error.what());
        return Asked::nothing;
    }
}
