// An open medium that closes itself, records made by hand, and what tests ask of them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/volume_builder.h"
#include "volume/media.h"
#include "volume/open.h"

namespace tests
{

// The options with which a user looks at a volume: type names and typed extensions.
MediaDescriptor usual_options();

class Medium
{
  public:
    explicit Medium(const std::string &target, uint16_t flags = OPEN_READ_VOLUME);
    Medium(const std::string &target, uint16_t flags, const MediaDescriptor *options);
    ~Medium();
    Medium(const Medium &) = delete;
    Medium &operator=(const Medium &) = delete;

    MediaDescriptor *md;

    explicit operator bool() const
    {
        return md != nullptr;
    }
    MediaDescriptor *operator->() const
    {
        return md;
    }
};

// A volume in a file, opened.
struct OpenVolume {
    explicit OpenVolume(const LifVolume &volume, uint16_t flags = OPEN_READ_VOLUME);
    explicit OpenVolume(const Bytes &image, uint16_t flags = OPEN_READ_VOLUME);

    TemporaryFile file;
    Medium medium;
    MediaDescriptor *md;
};

// A record that nobody opened: an image file and fields set by hand, without what the engine keeps for itself.
class HandMedium
{
  public:
    explicit HandMedium(const Bytes &image);
    ~HandMedium(); // releases the lists that the engine hung on it
    HandMedium(const HandMedium &) = delete;
    HandMedium &operator=(const HandMedium &) = delete;

    TemporaryFile file;
    MediaDescriptor md{};
};

std::string type_text(const FileInfo &info);                 // the type text with what has run on into the system text
void set_type_text(FileInfo &info, const std::string &text); // at most 5 characters
FileInfo named(const std::string &name,
               const std::string &type = "ASCII"); // 10 records of 256 bytes from record 100 on
FileInfo *entry_named(const MediaDescriptor *md, const std::string &name);
std::vector<std::string> names(const MediaDescriptor *md); // of the top level, in list order
std::vector<uint32_t> locations(const MediaDescriptor *md);

}
