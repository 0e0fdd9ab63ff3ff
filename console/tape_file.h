// What the verbs for tape images share.
#pragma once

#include <cstdint>
#include <string>

#include "console/host_file.h"
#include "console/progress_bar.h"
#include "platform/platform.h"
#include "tape/simh.h"

// The bar for one operation on a whole tape, in place of the engine's percentages. One at a time.
class TapeBar
{
  public:
    TapeBar(const std::string &name, uint64_t bytes, bool wanted = true);
    ~TapeBar();
    TapeBar(const TapeBar &) = delete;
    TapeBar &operator=(const TapeBar &) = delete;

  private:
    ProgressBar bar_;
};

struct TapeFile {
    std::string path;
    HostFile file = {};
    FileFacts facts = {};
    TapeImage tape = {}; // of what has been tested
};

// Opens a file of the host for reading. False, with the failure reported.
bool open_tape_file(TapeFile *tape);

// Says where a file stops being a tape image; returns exit_faults, or exit_failed where it can't be read.
int report_faults(const TapeFile &tape);
