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
    local verb=${COMP_WORDS[1]}
    COMPREPLY=()
    if ((COMP_CWORD == 1)); then
        words=)";

constexpr std::string_view middle = R"(
        mapfile -t COMPREPLY < <(compgen -W "$words" -- "$word")
        return
    fi
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
    std::string_view family; // its verbs stand together
    for (const Verb &verb : all_verbs()) {
        if (verb.hidden || (!family.empty() && family_of(verb) == family)) continue;
        family = family_of(verb);
        append_word(&words, family.empty() ? verb.name : family);
        for (const char *alias : verb.aliases) append_word(&words, alias);
    }
    return words;
}

void print_case(const Verb &verb, const std::string &verbs)
{
    std::string names = family_of(verb).empty() ? verb.name : "\"" + std::string(verb.name) + "\"";
    for (const char *alias : verb.aliases) names.append("|").append(alias);
    output_format("    %s)\n        options=\"%s\"\n", names.c_str(), option_words(verb).c_str());
    if (!verb.takes_medium) output_format("        words=\"%s\"\n", verbs.c_str());
    for (const ArgumentRow &row : verb.arguments) {
        if (row.choices.empty()) continue;
        const char *before = is_option(row) ? row.names : verb.name;
        output_format("        [[ $previous != %s ]] || words=\"%s\"\n", before, choice_words(row).c_str());
    }
    output_text("        ;;\n");
}

// The second word of a verb of two; then both are the verb.
void print_family(std::string_view family)
{
    std::string seconds;
    for (const Verb *verb : verbs_of(family)) append_word(&seconds, verb->name + family.size() + 1);
    const std::string name(family);
    output_format("    if [[ $verb == %s ]]; then\n"
                  "        if ((COMP_CWORD == 2)); then\n"
                  "            mapfile -t COMPREPLY < <(compgen -W \"%s -h --help --version\" -- \"$word\")\n"
                  "            return\n"
                  "        fi\n"
                  "        verb=\"%s ${COMP_WORDS[2]}\"\n"
                  "    fi\n",
                  name.c_str(), seconds.c_str(), name.c_str());
}

void print_families()
{
    std::string_view last;
    for (const Verb &verb : all_verbs()) {
        const std::string_view family = family_of(verb);
        if (!family.empty() && family != last) print_family(family);
        last = family;
    }
}

void print_bash()
{
    const std::string verbs = verb_words();
    output_text(head);
    output_format("\"%s -h --help --version\"", verbs.c_str());
    output_text(middle);
    print_families();
    output_text("    case $verb in\n");
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
