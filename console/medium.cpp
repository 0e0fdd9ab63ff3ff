// Opening a medium for a verb: the flags and options that the console uses, and the words of what went wrong.
#include "console/medium.h"

#include "platform/platform.h"
#include "volume/open.h"
#include "volume/state.h"

namespace
{
constexpr uint16_t console_flags = OPEN_READ_VOLUME | OPEN_RECURSIVE;

MediaDescriptor console_template(const Arguments &arguments)
{
    MediaDescriptor format = {};
    format.use_type_names = 1;
    format.use_typed_extensions = 1;
    format.show_purged = arguments.purged ? 1 : 0;
    return format;
}
}

void MediumCloser::operator()(MediaDescriptor *md) const
{
    image_close(md);
}

Reading open_for_reading(const Arguments &arguments)
{
    Reading reading;
    MediaDescriptor format = console_template(arguments);
    platform_set_last_error(0); // an older failure of the system has no part in this one
    reading.medium.reset(image_open(arguments.medium.c_str(), &format, console_flags | OPEN_READ_ONLY));
    if (reading.medium == nullptr) {
        report_failure();
        return reading;
    }
    const MediaState *state = reading.medium->state;
    if (state == nullptr) return reading;
    reading.has_words = state->table_result != 0;
    if (reading.has_words) take_error(&reading.words);
    reading.whole = !reading.has_words && state->refused_entries == 0;
    return reading;
}

int report_reading(const Reading &reading, int code)
{
    if (reading.has_words) report_error(reading.words);
    return code == exit_done && !reading.whole ? exit_partly : code;
}
