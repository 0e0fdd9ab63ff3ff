// Tape images as files of the host: opening one, the bar, and what is wrong with it.
#include "console/tape_file.h"

#include <algorithm>

#include "base/error.h"
#include "base/file_inner.h"
#include "console/report.h"
#include "tape/percent.h"
#include "tape/walk.h"

namespace
{
constexpr uint32_t cannot_open = 300;

int32_t show_nothing(void *, uint32_t, uint32_t)
{
    return 0;
}

// The walk over all items finds no fault that only shows going back.
std::string words_of_fault(const TapeFile &tape)
{
    if (tape.facts.plain && tape.facts.bytes == 0) return "it is empty";
    TapeWalk walk;
    begin_walk(&walk, tape.file.handle);
    TapeItem item = next_item(&walk);
    while (item.kind == TapeItemKind::record || item.kind == TapeItemKind::tape_mark) item = next_item(&walk);
    if (item.kind != TapeItemKind::fault) return "its records can't be found going back";
    return std::string(item.reason) + " at position " + std::to_string(item.position);
}
}

TapeBar::TapeBar(const std::string &name, uint64_t bytes, bool wanted) : bar_(name.c_str(), wanted ? bytes : 0)
{
    const ProgressCallback show = bar_.callback();
    tape_progress = show != nullptr ? show : show_nothing;
}

TapeBar::~TapeBar()
{
    tape_progress = nullptr;
}

bool open_tape_file(TapeFile *tape)
{
    platform_set_last_error(0);
    if (file_open(&tape->file.handle, tape->path.c_str(), "rb", 0) == 1) {
        file_calls->facts(tape->file.handle, &tape->facts);
        return true;
    }
    const uint32_t reason = platform_last_error();
    tape->file.handle = 0;
    set_error(cannot_open, "file \"%s\"", tape->path.c_str());
    platform_set_last_error(reason);
    report_failure();
    return false;
}

int report_faults(const TapeFile &tape)
{
    if (global_error != 0) return report_failure_of(tape.path.c_str());
    const std::string words = "no SIMH magtape image: " + words_of_fault(tape);
    report_error_text(tape.path.c_str(), words.c_str());
    return exit_faults;
}
