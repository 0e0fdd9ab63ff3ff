// Opening a medium for a verb: the flags and options that the console uses, and the words of what went wrong.
#include "console/medium.h"

#include "base/log.h"
#include "console/configuration.h"
#include "platform/platform.h"
#include "volume/format.h"
#include "volume/header.h"
#include "volume/open.h"
#include "volume/state.h"
#include "volume/target.h"

namespace
{
constexpr uint16_t console_flags = OPEN_READ_VOLUME | OPEN_RECURSIVE | OPEN_TAPE_DATA;

constexpr uint32_t not_supported = 109;
constexpr uint32_t unreadable_medium = 215;
constexpr int32_t level_bits = 7;
constexpr int32_t warnings = 1;

MediaDescriptor console_template(const Arguments &arguments)
{
    MediaDescriptor format = {};
    format.use_type_names = shows_type_names() ? 1 : 0;
    format.use_typed_extensions = 1;
    format.show_purged = arguments.purged ? 1 : 0;
    if (!arguments.header.empty())
        format.use_file_headers = static_cast<uint32_t>(header_form(arguments.header.c_str()));
    return format;
}

Reading open_with(const Arguments &arguments, uint16_t flags)
{
    Reading reading;
    MediaDescriptor format = console_template(arguments);
    platform_set_last_error(0); // an older failure of the system has no part in this one
    reading.medium.reset(image_open(arguments.medium.c_str(), &format, console_flags | flags));
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

// The log names each entry that was dropped, at a level at which it may have been silent.
void name_dropped_entries(const Arguments &arguments)
{
    if (loglevel <= level_bits && loglevel >= warnings) return;
    const int32_t level = loglevel;
    loglevel = warnings;
    open_with(arguments, OPEN_READ_ONLY);
    loglevel = level;
}

// False, with the reason reported, for a volume that would lose what couldn't be read.
bool may_lose_entries(const Arguments &arguments, const Reading &reading)
{
    if (reading.whole) return true;
    name_dropped_entries(arguments);
    report_reading(reading, exit_partly);
    if (arguments.damaged) return true;
    set_error(unreadable_medium, "directory not read whole; what is missing would be lost, --damaged allows that");
    report_failure();
    return false;
}
}

void MediumCloser::operator()(MediaDescriptor *md) const
{
    image_close(md);
}

// The engine reads no directory then, and a list without files must not be taken for that of an empty volume.
bool names_a_directory(const Arguments &arguments)
{
    char filespec[FILE_PATH_SIZE] = "";
    if (parse_target(arguments.medium.c_str(), nullptr, filespec, nullptr, nullptr, nullptr, nullptr, nullptr) < 0 ||
        filespec[0] == '\0') {
        return false; // what is no target at all is reported by the opening
    }
    set_error(not_supported, "directory \"%s\" of a volume", filespec);
    report_failure();
    return true;
}

QuietLog::QuietLog() : level(loglevel)
{
    if (loglevel == warnings) loglevel = 0;
}

QuietLog::~QuietLog()
{
    loglevel = level;
}

Reading open_for_reading(const Arguments &arguments)
{
    return open_with(arguments, OPEN_READ_ONLY);
}

Reading open_for_copying(const Arguments &arguments)
{
    return names_a_directory(arguments) ? Reading() : open_for_reading(arguments);
}

int report_reading(const Reading &reading, int code)
{
    if (reading.has_words) report_error(reading.words);
    return code == exit_done && !reading.whole ? exit_partly : code;
}

Medium open_for_change(const Arguments &arguments)
{
    if (names_a_directory(arguments)) return nullptr;
    Reading reading = open_with(arguments, 0);
    if (reading.medium == nullptr) return nullptr;
    if (!is_changeable(reading.medium.get())) {
        report_failure();
        return nullptr;
    }
    return may_lose_entries(arguments, reading) ? std::move(reading.medium) : nullptr;
}

Reading open_for_inspection(const Arguments &arguments, uint16_t flags)
{
    const QuietLog quiet;
    return open_with(arguments, flags);
}

Medium open_again(const Arguments &arguments)
{
    return std::move(open_with(arguments, 0).medium);
}

bool is_changeable(const MediaDescriptor *md)
{
    const VolumeFormat &format = volume_format(md->format);
    if (md->tape != nullptr) {
        set_error(not_supported, "change of a tape image");
    } else if (format.write_entry == nullptr) {
        set_error(not_supported, "change of an %s volume", format.name);
    } else {
        return true;
    }
    return false;
}
