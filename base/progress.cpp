// Progress and questions on a console, and the lines that a test of a drive prints.
#include "base/log.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdarg>
#include <cstdio>
#include <string_view>

#include "base/convert_inner.h"
#include "base/error.h"
#include "base/output.h"
#include "platform/platform.h"

namespace
{

constexpr size_t message_size = 2048; // of a formatted text, with its NUL
constexpr size_t field_width = 20;
constexpr uint16_t plain_colour = 7;
constexpr uint16_t passed_colour = 42;
constexpr uint16_t failed_colour = 76;
constexpr uint32_t no_percentage = ~0u;

// A kind of question: what stands behind its text, the letters that answer it (the first is result 1), and the
// result at the end of the input.
struct Question {
    std::string_view tail;
    std::string_view letters;
    int32_t at_end;
};

constexpr Question questions[] = {
    {" (press <RETURN> to continue)", "", 0},
    {" (y/n)? ", "yn", 2},
    {" (y/n/[c]ancel)? ", "ync", 3},
    {" (y/n/[a]ll/[c]ancel)? ", "ynca", 3},
};

using Message = std::array<char, message_size>;

constinit uint16_t attributes_before_test = 0;
constinit bool attributes_are_kept = false;

__attribute__((format(printf, 2, 0))) std::string_view format_message(Message *message, const char *format,
                                                                      va_list arguments)
{
    (*message)[0] = '\0';
    if (format != nullptr) vsnprintf(message->data(), message->size(), format, arguments);
    return message->data();
}

// The result for an answer, 0 for none of the question's letters.
int32_t result_of(const Question &question, const char *answer)
{
    const int letter = tolower(static_cast<unsigned char>(answer[0]));
    const size_t place = letter == 0 ? std::string_view::npos : question.letters.find(static_cast<char>(letter));
    return place == std::string_view::npos ? 0 : static_cast<int32_t>(place) + 1;
}

int32_t ask(const Question &question, std::string_view text)
{
    for (;;) {
        output_text(text);
        output_text(question.tail);
        output_flush();
        char answer[256];
        const bool more = read_input_line(answer, sizeof(answer));
        const int32_t result = result_of(question, answer);
        if (result != 0 || question.letters.empty()) return result;
        if (!more) return question.at_end;
    }
}

void print_padding(std::string_view text)
{
    const size_t blanks = field_width - std::min(text.size(), field_width);
    output_format("%*s", static_cast<int>(blanks), "");
}

// What is printed comes out before the cursor moves or the colour changes.
void go_to_column(uint32_t column)
{
    output_flush();
    platform_console_column(column);
}

void print_coloured(uint16_t colour, std::string_view text)
{
    uint16_t ignored = 0;
    const bool coloured = platform_console_attributes(&ignored);
    output_flush();
    if (coloured) platform_console_set_attributes(colour);
    output_text(text);
    output_flush();
    if (coloured) platform_console_set_attributes(plain_colour);
}

} // namespace

void console_progress(void)
{
    static constinit uint32_t frame = 0;
    constexpr std::string_view marks = "|/-\\|/-\\";
    output_format("%c\b", marks[frame]);
    frame = (frame + 1) % marks.size();
    output_flush();
}

void percent_progress(uint32_t current, uint32_t total)
{
    static constinit uint32_t last_printed = no_percentage;
    if (total == 0) return;
    const auto percent = static_cast<uint32_t>(std::min<uint64_t>(uint64_t{current} * 100 / total, no_percentage - 1));
    if (percent == last_printed) return;
    last_printed = percent;
    char text[16];
    const int length = snprintf(text, sizeof(text), "%u%%", percent);
    output_text(text);
    for (int i = 0; i < length; ++i) output_text("\b");
    output_flush();
}

int32_t standard_progress_callback(void *ignored, uint32_t record, uint32_t percent)
{
    static_cast<void>(ignored);
    output_format("Record %d (%d%%)\r", static_cast<int>(record), static_cast<int>(percent));
    output_flush();
    return 0;
}

int32_t standard_confirm_callback(int32_t kind, const char *format, ...)
{
    if (format == nullptr) return -1;
    if (kind < 1 || kind > static_cast<int32_t>(std::size(questions))) {
        set_error(103, "kind=%d", kind);
        return -1;
    }
    Message message;
    va_list arguments;
    va_start(arguments, format);
    const std::string_view text = format_message(&message, format, arguments);
    va_end(arguments);
    return ask(questions[kind - 1], text);
}

void init_test_message(void)
{
    attributes_are_kept = platform_console_attributes(&attributes_before_test);
    if (!attributes_are_kept) return;
    output_flush();
    platform_console_set_attributes(plain_colour);
}

void exit_test_message(void)
{
    output_flush();
    if (attributes_are_kept) platform_console_set_attributes(attributes_before_test);
    attributes_are_kept = false;
}

void show_test_message(const char *format, ...)
{
    Message message;
    va_list arguments;
    va_start(arguments, format);
    output_text(format_message(&message, format, arguments));
    va_end(arguments);
    output_text(":");
    output_flush();
}

void show_test_progress(uint32_t column, const char *format, ...)
{
    go_to_column(column);
    if (format == nullptr) return;
    Message message;
    va_list arguments;
    va_start(arguments, format);
    const std::string_view text = format_message(&message, format, arguments);
    va_end(arguments);
    output_text(text);
    print_padding(text);
    output_flush();
}

void show_result(uint32_t column, int32_t passed, const char *format, ...)
{
    go_to_column(column);
    print_coloured(passed != 0 ? passed_colour : failed_colour, passed != 0 ? " passed " : " failed ");
    Message message;
    va_list arguments;
    va_start(arguments, format);
    const std::string_view text = format_message(&message, format, arguments);
    va_end(arguments);
    if (format != nullptr) {
        output_text(" ");
        output_text(text);
    }
    print_padding(text);
    if (format != nullptr) output_text("\n");
    output_flush();
}
