// The bar: "\rNAME  [#####     ]  45%", drawn anew when the percentage changes, below 80 columns.
#include "console/progress_bar.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "platform/platform.h"

namespace
{
constexpr uint64_t long_copy = 1024 * 1024; // bytes
constexpr size_t name_width = 24;
constexpr size_t bar_width = 40;
constexpr uint32_t not_drawn = ~uint32_t{0};

// The engine's callback has no room for a context of ours.
struct BarState {
    char name[name_width + 1] = "";
    bool wanted = false;
    uint32_t percent = not_drawn; // as drawn
};
constinit BarState bar;

// What would move a terminal's cursor, or takes no place or two, becomes one place.
void set_shown_name(const char *name)
{
    std::memset(bar.name, ' ', name_width);
    for (size_t i = 0; i < name_width && name[i] != '\0'; i++)
        bar.name[i] = name[i] < ' ' || name[i] > '~' ? '?' : name[i];
}

void draw(uint32_t percent)
{
    std::string marks(bar_width * percent / 100, '#');
    marks.resize(bar_width, ' ');
    file_printf(file_stderr(), "\r%s  [%s] %3u%%", bar.name, marks.c_str(), static_cast<unsigned>(percent));
}

int32_t show_progress(void *, uint32_t, uint32_t percent)
{
    percent = std::min(percent, uint32_t{100});
    if (percent != bar.percent) draw(percent);
    bar.percent = percent;
    return 0;
}
}

ProgressBar::ProgressBar(const char *name, uint64_t bytes)
{
    set_shown_name(name);
    bar.percent = not_drawn;
    bar.wanted = bytes > long_copy && platform_is_terminal(file_stderr());
}

ProgressBar::~ProgressBar()
{
    if (bar.percent == not_drawn) return;
    const std::string blanks(name_width + bar_width + 9, ' ');
    file_printf(file_stderr(), "\r%s\r", blanks.c_str());
}

ProgressCallback ProgressBar::callback() const
{
    return bar.wanted ? show_progress : nullptr;
}
