// A line taken apart: a table that says for each kind of character and each state what is done, and what does it.
#include "base/parse_line.h"

#include <algorithm>
#include <cstring>
#include <iterator>

#include "base/error.h"

namespace
{

constexpr uint32_t null_pointer = 103;
constexpr uint32_t syntax_error = 108;

enum class Kind : uint8_t { blank, quote, assign, line_end, comment, separator, other };
enum class State : uint8_t { between, behind_separator, quoted, assign, word, done };
enum class Fault : uint8_t { none, misplaced_quote, unmatched_quote, too_many_entries, too_long };

// What a character does, in the order of the members.
struct Step {
    State next;
    bool ends = false;   // the token before it
    bool begins = false; // a token; one that the next state doesn't go on with is empty
    bool stores = false; // itself
    Fault fault = Fault::none;
};

constexpr Step to(State next)
{
    return {.next = next};
}

constexpr Step end_token(State next)
{
    return {.next = next, .ends = true};
}

constexpr Step begin_token(State next)
{
    return {.next = next, .begins = true, .stores = next != State::quoted};
}

constexpr Step next_token(State next)
{
    return {.next = next, .ends = true, .begins = true, .stores = next != State::quoted};
}

constexpr Step store(State stay)
{
    return {.next = stay, .stores = true};
}

constexpr Step fail(Fault fault)
{
    return {.next = State::done, .fault = fault};
}

constexpr State between = State::between;
constexpr State behind = State::behind_separator;
constexpr State quoted = State::quoted;
constexpr State assign = State::assign;
constexpr State word = State::word;
constexpr State done = State::done;
constexpr Step empty_token = {.next = behind, .begins = true};
constexpr Step misplaced = fail(Fault::misplaced_quote);
constexpr Step unmatched = fail(Fault::unmatched_quote);

constexpr Step steps[][5] = {
    // clang-format off
    // between            behind a separator    quoted              assign               word
    {to(between),         to(behind),           store(quoted),      end_token(between),  end_token(between)},  // blank
    {begin_token(quoted), begin_token(quoted),  end_token(between), next_token(quoted),  misplaced},           // quote
    {begin_token(assign), begin_token(assign),  store(quoted),      store(assign),       next_token(assign)},  // assign
    {to(done),            to(done),             unmatched,          end_token(done),     end_token(done)},     // line end
    {to(done),            to(done),             store(quoted),      end_token(done),     end_token(done)},     // comment
    {to(behind),          empty_token,          store(quoted),      end_token(behind),   end_token(behind)},   // separator
    {begin_token(word),   begin_token(word),    store(quoted),      next_token(word),    store(word)},         // other
    // clang-format on
};
static_assert(std::size(steps) == static_cast<size_t>(Kind::other) + 1);
static_assert(std::size(steps[0]) == static_cast<size_t>(State::done));

struct Parser {
    const char *assign_chars;
    const char *separator_chars;
    const char *blank_chars;
    const char *comment_chars;
    uint32_t buffer_size;
    uint32_t max_tokens;
    char *buffer = nullptr;
    char **tokens = nullptr;
    uint32_t fill = 0;  // of the buffer
    uint32_t count = 0; // of tokens begun
    State state = State::between;
};

bool is_one_of(char character, const char *set)
{
    return std::strchr(set, character) != nullptr; // a NUL is in every set
}

Kind kind_of(const Parser &parser, char character)
{
    // Kept: a NUL doesn't end a line, which goes on with what is behind it.  [KeepsNulAsBlank]
    if (is_one_of(character, parser.blank_chars)) return Kind::blank;
    if (character == '"') return Kind::quote;
    if (is_one_of(character, parser.assign_chars)) return Kind::assign;
    if (character == '\n' || character == '\r') return Kind::line_end;
    if (is_one_of(character, parser.comment_chars)) return Kind::comment;
    return is_one_of(character, parser.separator_chars) ? Kind::separator : Kind::other;
}

bool put(Parser *parser, char character)
{
    if (parser->fill >= parser->buffer_size) return false;
    parser->buffer[parser->fill++] = character;
    return true;
}

Fault take_step(Parser *parser, const Step &step, char character)
{
    if (step.fault != Fault::none) return step.fault;
    if (step.ends && !put(parser, '\0')) return Fault::too_long;
    if (step.begins) {
        if (parser->count >= parser->max_tokens) return Fault::too_many_entries;
        parser->tokens[parser->count++] = parser->buffer + parser->fill;
    }
    if (step.stores && !put(parser, character)) return Fault::too_long;
    if (step.begins && step.next == behind && !put(parser, '\0')) return Fault::too_long;
    parser->state = step.next;
    return Fault::none;
}

// In a quoted text a backslash makes the character behind it an ordinary one, and isn't stored itself.
Fault take_quoted(Parser *parser, char before, char character)
{
    // Kept: it looks back by one character only, so three of them give two.  [KeepsBackslashesOfAQuotedText]
    const bool escaped = before == '\\';
    if (character == '\\' && !escaped) return Fault::none;
    const Kind kind = character == '"' && escaped ? Kind::other : kind_of(*parser, character);
    return take_step(parser, steps[static_cast<size_t>(kind)][static_cast<size_t>(quoted)], character);
}

Fault take_character(Parser *parser, char before, char character)
{
    if (parser->state == quoted) return take_quoted(parser, before, character);
    const auto kind = static_cast<size_t>(kind_of(*parser, character));
    return take_step(parser, steps[kind][static_cast<size_t>(parser->state)], character);
}

void set_fault(Fault fault, int32_t line_number)
{
    switch (fault) {
    case Fault::misplaced_quote: set_error(syntax_error, "misplaced quote in line %d", line_number); break;
    case Fault::unmatched_quote: set_error(syntax_error, "unmatched quote in line %d", line_number); break;
    case Fault::too_many_entries: set_error(syntax_error, "too many entries in line %d", line_number); break;
    case Fault::too_long:
        set_error(syntax_error, "line too long in line %%"); // Kept: without its number.  [KeepsLongLineWithoutNumber]
        break;
    case Fault::none: break;
    }
}

}

int32_t parse_line(int32_t line_number, const char *line, const char *assign_chars, const char *separator_chars,
                   const char *blank_chars, const char *comment_chars, char *buffer, uint32_t buffer_size,
                   uint32_t max_tokens, char **tokens)
{
    const void *const pointers[] = {line, assign_chars, separator_chars, blank_chars, comment_chars, buffer, tokens};
    if (std::find(std::begin(pointers), std::end(pointers), nullptr) != std::end(pointers)) {
        set_error(null_pointer, "NULL pointer");
        return -1;
    }
    Parser parser = {assign_chars, separator_chars, blank_chars, comment_chars, buffer_size, max_tokens};
    parser.buffer = buffer;
    parser.tokens = tokens;
    char before = '\0';
    for (int32_t offset = 0; parser.state != done; offset++) {
        const Fault fault = take_character(&parser, before, line[offset]);
        if (fault != Fault::none) {
            set_fault(fault, line_number);
            return -std::max(offset, 1);
        }
        before = line[offset];
    }
    return static_cast<int32_t>(parser.count);
}
