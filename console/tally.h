// What a verb that copies or changes several files says at its end.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct Tally {
    uint32_t done = 0;
    uint32_t cut = 0;                // of these, those of which something was left out
    std::vector<std::string> failed; // names, each of which has been reported
};

int tally_code(const Tally &tally); // an ExitCode

// Names once more what failed, when there was more than one file. Returns the same. done: what was to become of them.
int finish_tally(const Tally &tally, const char *done = "copied");
