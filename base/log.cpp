// The log: a line is put together in a buffer, part by part, and written when it ends in a line feed.
#include "base/log.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>

#include "base/clock_inner.h"
#include "base/log_inner.h"
#include "platform/platform.h"

constinit int32_t loglevel = 1;
constinit FileHandle logfile = 0;

namespace
{

constexpr size_t line_limit = 64000; // characters of a line ahead of its end

constexpr std::array<const char *, 7> labels = {"Error: ", "Warning: ", "Info:  ", "Trace: ", "Debug: ", "", ""};

struct LogLine {
    bool writing; // the file layer logs its own calls: not while a line goes through it
    size_t fill;
    std::array<char, line_limit + 8> text; // with room for the line end, a NUL, and to see that there was more
};

struct LogTimer {
    bool running;
    int64_t frequency; // counts a second, 0 where there is no counter
    int64_t reference;
    SystemTime start;
};

constinit LogLine line = {};
constinit LogTimer timer = {};

__attribute__((format(printf, 1, 0))) void append_arguments(const char *format, va_list arguments)
{
    const size_t room = line.text.size() - line.fill;
    const int length = vsnprintf(line.text.data() + line.fill, room, format, arguments);
    if (length > 0) line.fill += std::min(static_cast<size_t>(length), room - 1);
}

__attribute__((format(printf, 1, 2))) void append(const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    append_arguments(format, arguments);
    va_end(arguments);
}

bool times_are_wanted()
{
    return (loglevel & 4) != 0;
}

void start_timer(int32_t level)
{
    timer.running = true;
    if (!clock_calls->frequency(&timer.frequency) || !clock_calls->counter(&timer.reference)) timer.frequency = 0;
    clock_calls->local_time(&timer.start);
    if (level < 3) return;
    line.writing = true;
    // Kept: the word counter_freqency stays as it is spelled.  [KeepsSpellingOfTheTimerLine]
    file_printf(logfile, "Logging timer enabled - start_time=%02d:%02d:%02d-%03d counter_freqency=%f MHz\n",
                timer.start.hour, timer.start.minute, timer.start.second, timer.start.milliseconds,
                static_cast<double>(timer.frequency) / 1e6);
    line.writing = false;
}

void append_time()
{
    int64_t now = timer.reference;
    if (!clock_calls->counter(&now)) now = timer.reference;
    const uint64_t elapsed = counts_to_usec(now - timer.reference, timer.frequency);
    const uint64_t started = (timer.start.hour * 3600ull + timer.start.minute * 60ull + timer.start.second) * 1000 +
                             timer.start.milliseconds;
    const uint64_t milliseconds = started + elapsed / 1000;
    append("%02u:%02u:%02u-%03u:%03u ", static_cast<unsigned>(milliseconds / 3600000 % 24),
           static_cast<unsigned>(milliseconds / 60000 % 60), static_cast<unsigned>(milliseconds / 1000 % 60),
           static_cast<unsigned>(milliseconds % 1000), static_cast<unsigned>(elapsed % 1000));
}

bool line_ends_in(char character)
{
    return line.fill > 0 && line.text[line.fill - 1] == character;
}

// True when the line is whole now, with carriage return and line feed; one that is too long is made so.
bool end_line()
{
    const bool ended = line_ends_in('\n');
    if (!ended && line.fill <= line_limit) return false;
    if (ended) --line.fill;
    if (ended && line_ends_in('\r')) --line.fill;
    line.fill = std::min(line.fill, line_limit);
    line.text[line.fill++] = '\r';
    line.text[line.fill++] = '\n';
    line.text[line.fill] = '\0';
    return true;
}

void write_line()
{
    line.writing = true;
    if (loglevel > 7)
        platform_debug_text(line.text.data());
    else // Kept: without a log file the write fails and sets error 303.  [KeepsError303WithoutLogFile]
        file_write(logfile, line.text.data(), static_cast<uint32_t>(line.fill));
    line.writing = false;
    line.fill = 0;
}

} // namespace

void log_file(int32_t level, const char *format, ...)
{
    if ((loglevel & 7) < level) return;
    if (format == nullptr || *format == '\0' || line.writing) return;
    if (times_are_wanted() && !timer.running) start_timer(level);
    if (line.fill == 0) {
        if (times_are_wanted()) append_time();
        append("%s", labels[static_cast<uint32_t>(level) % labels.size()]);
    }
    va_list arguments;
    va_start(arguments, format);
    append_arguments(format, arguments);
    va_end(arguments);
    if (end_line()) write_line();
}

void log_close()
{
    if (logfile != 0) file_close(logfile);
    logfile = 0;
    line.fill = 0;
    timer = {};
}
