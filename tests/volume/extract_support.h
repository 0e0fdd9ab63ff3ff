// What tests of copying out share: volumes of one file with a folder of the host beside them, a progress callback that
// writes its calls down, and a disk of the host that fills up and knows which files are open.
#pragma once

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <set>
#include <string>
#include <vector>

#include "base/file_inner.h"
#include "tests/platform/scratch.h"
#include "tests/support/medium.h"
#include "volume/extract_inner.h"

namespace tests
{

constexpr uint32_t never = ~uint32_t{0};
constexpr uint64_t endless = ~uint64_t{0};

struct ProgressCall {
    uint64_t context; // bytes up to the end of the record
    uint32_t record;
    uint32_t percent;

    bool operator==(const ProgressCall &) const = default;
};

using ProgressCalls = std::vector<ProgressCall>;

void PrintTo(const ProgressCall &call, std::ostream *stream);

// One object at a time.
class ProgressLog
{
  public:
    explicit ProgressLog(uint32_t stop_at = never); // answers 1 at the call for this record
    ~ProgressLog();
    ProgressLog(const ProgressLog &) = delete;
    ProgressLog &operator=(const ProgressLog &) = delete;

    static int32_t callback(void *context, uint32_t record, uint32_t percent);

    ProgressCalls calls;

  private:
    uint32_t stop_at_;
};

// Stands in front of the file calls in force. What goes to the log is neither counted nor refused. One object at a
// time.
class HostDisk
{
  public:
    explicit HostDisk(uint64_t room = endless); // bytes that writes may bring in all
    ~HostDisk();
    HostDisk(const HostDisk &) = delete;
    HostDisk &operator=(const HostDisk &) = delete;

    std::set<PlatformFile> open_files; // opened since and not closed
    std::function<void(const char *path)> before_opening_for_writing;
    bool refuses_times = false;
    uint64_t room;
    uint32_t writes = 0;

    const FileCalls *behind;

  private:
    FileCalls calls_;
};

// A LIF volume with one file of these bytes, opened, and a folder of the host.
struct OneFile {
    explicit OneFile(const Bytes &content, uint16_t type = 0xE0D0, const std::string &name = "FILE");
    explicit OneFile(const LifEntry &entry);

    OpenVolume volume;
    MediaDescriptor *md;
    FileInfo info; // a copy of its entry, to be changed at will
    Scratch host;

    std::string path(const std::string &name) const; // in the folder of the host
};

// An order that goes to path as it stands.
ExtractOrder order_for(const std::string &path, uint16_t flags = 0, ProgressCallback progress = nullptr);

// Extracts to path, with no error set before.
Extraction extract_to(OneFile &file, const std::string &path, uint16_t flags = 0, ProgressCallback progress = nullptr);

Bytes records_of(const Bytes &content); // filled with zeros to whole records
Bytes counting(size_t size);            // bytes that differ from record to record
std::string text_in(const std::string &path);
std::string error_with_file(uint32_t number, const std::string &path); // as error_text gives it
bool is_windows();

}
