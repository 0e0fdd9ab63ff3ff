// Files of the host on their way into a volume: sources with a name, volumes to take them, what a call left behind.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tests/platform/scratch.h"
#include "tests/support/free_disc.h"
#include "tests/support/medium.h"
#include "tests/volume/content/inward_support.h"
#include "volume/insert.h"

namespace tests::insertion
{

// The engine's temporary files go into a folder of their own for the life of an object.
class TemporaryFolder
{
  public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;

    size_t files() const; // of the engine, that it holds now

  private:
    Scratch folder_;
    std::vector<std::pair<std::string, std::string>> old_; // variables and what they were
};

// What a call did.
struct Added {
    int32_t result;
    uint32_t error; // 0: none was set
    std::string detail;
    FileInfo info;
};

Added add(MediaDescriptor *md, const std::string &path, uint16_t flags = 0, const FileInfo &info = {},
          ProgressCallback progress = nullptr);
Added create(MediaDescriptor *md, const FileInfo &info, bool initialize = false, uint16_t pattern = 60);

// What a call of a progress callback said, and when it is to stop.
struct ProgressCall {
    uint64_t position;
    uint32_t record;
    uint32_t percent;
    bool operator==(const ProgressCall &) const = default;
};
extern std::vector<ProgressCall> progress_calls; // since reset_progress
void reset_progress(uint32_t stop_at = 0);       // 0: never; n: the n-th call asks for it
int32_t noting_progress(void *position, uint32_t record, uint32_t percent);

// three_files() with the file area behind them free: the next file begins at record 10 of 160.
constexpr uint32_t first_free = 10;
constexpr uint32_t last_record = 159;

// The volume of three_files, larger: so many records.
LifVolume roomy_volume(uint32_t records);

Bytes records_at(const TemporaryFile &image, uint32_t record, uint32_t count);
Bytes numbered(size_t count, uint32_t seed = 1); // bytes that differ from their neighbours

// The image with records put into it, from one on; the last is filled with zeros. Longer if need be.
Bytes with_records(Bytes image, uint32_t record, const Bytes &content);

Bytes in_records(Bytes content); // filled with zeros to whole records
FileInfo typed(uint16_t type, const std::string &text);
std::unique_ptr<HandMedium> tape(); // a System 45 tape: directory at records 1 and 2, files from record 5 on
std::string entry_detail(const std::string &name); // file "name"

}
