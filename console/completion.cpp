// The completion for bash, made from the table of verbs; the installed file is what this prints.
#include "console/completion.h"

#include <string>
#include <string_view>

#include "base/output.h"
#include "console/report.h"

namespace
{
constexpr std::string_view head = R"(# Completion of tarvo's command lines for bash; made by "tarvo completion bash".
_tarvo()
{
    local word=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]} options="" words=""
    COMPREPLY=()
    if ((COMP_CWORD == 1)); then
        words=)";

constexpr std::string_view middle = R"(
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
        return
    fi
    case ${COMP_WORDS[1]} in
)";

// Without a reply the shell offers the names of files.
constexpr std::string_view tail = R"(    *) return ;;
    esac
    if [[ $word == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
    elif [[ $words ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
    fi
}
complete -o bashdefault -o default -F _tarvo tarvo
)";

void append_word(std::string *words, std::string_view word)
{
    if (!words->empty()) *words += ' ';
    *words += word;
}

void append_names(std::string *words, const ArgumentRow &row)
{
    std::string_view names = row.names;
    while (!names.empty()) {
        std::string_view name = names.substr(0, names.find(','));
        append_word(words, name);
        names.remove_prefix(name.size() == names.size() ? name.size() : name.size() + 1);
    }
}

std::string option_words(const Verb &verb)
{
    std::string words;
    for (const ArgumentRow &row : verb.arguments) {
        if (is_option(row)) append_names(&words, row);
    }
    for (const ArgumentRow &row : common_options()) append_names(&words, row);
    return words;
}

std::string choice_words(const ArgumentRow &row)
{
    std::string words;
    for (const char *choice : row.choices) append_word(&words, choice);
    return words;
}

std::string verb_words()
{
    std::string words;
    for (const Verb &verb : all_verbs()) {
        if (verb.hidden) continue;
        append_word(&words, verb.name);
        for (const char *alias : verb.aliases) append_word(&words, alias);
    }
    return words;
}

void print_case(const Verb &verb, const std::string &verbs)
{
    std::string names = verb.name;
    for (const char *alias : verb.aliases) names.append("|").append(alias);
    output_format("    %s)\n        options=\"%s\"\n", names.c_str(), option_words(verb).c_str());
    if (!verb.takes_medium) output_format("        words=\"%s\"\n", verbs.c_str());
    for (const ArgumentRow &row : verb.arguments) {
        if (row.choices.empty()) continue;
        output_format("        [[ $previous != %s ]] || words=\"%s\"\n", row.names, choice_words(row).c_str());
    }
    output_text("        ;;\n");
}

void print_bash()
{
    const std::string verbs = verb_words();
    output_text(head);
    output_format("\"%s -h --help --version\"", verbs.c_str());
    output_text(middle);
    for (const Verb &verb : all_verbs()) {
        if (!verb.hidden) print_case(verb, verbs);
    }
    output_text(tail);
}
}

int run_completion(const Arguments &arguments)
{
    if (arguments.word != "bash") return report_usage("Completion is there for bash only");
    begin_data();
    print_bash();
    return finish_data(exit_done);
}
