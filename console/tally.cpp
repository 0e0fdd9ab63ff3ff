// The end of a verb that copies or changes several files.
#include "console/tally.h"

#include "base/file.h"
#include "console/exit_code.h"

int tally_code(const Tally &tally)
{
    if (tally.failed.empty() && tally.cut == 0) return exit_done;
    return tally.done == 0 ? exit_failed : exit_partly;
}

int finish_tally(const Tally &tally, const char *done)
{
    const size_t all = tally.done + tally.failed.size();
    if (tally.failed.empty() || all == 1) return tally_code(tally);
    file_printf(file_stderr(), "[tarvo] %lu of %lu files were not %s:\n",
                static_cast<unsigned long>(tally.failed.size()), static_cast<unsigned long>(all), done);
    for (const std::string &name : tally.failed) file_printf(file_stderr(), "[tarvo]        %s\n", name.c_str());
    return tally_code(tally);
}
