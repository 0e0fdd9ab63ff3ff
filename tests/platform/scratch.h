// A folder of a test's own that goes away with all that is in it, and what tests ask of the files there.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "platform/platform.h"

namespace tests
{

class Scratch
{
  public:
    Scratch();
    explicit Scratch(const std::filesystem::path &parent);
    ~Scratch();
    Scratch(const Scratch &) = delete;
    Scratch &operator=(const Scratch &) = delete;

    std::string path(std::string_view name) const;
    std::string file(std::string_view name, std::string_view content) const; // made anew; its path
    std::string folder() const;

  private:
    std::filesystem::path folder_;
};

std::string content(const std::string &path); // empty for a missing file
bool exists(const std::string &path);

// An open file that closes itself.
class Opened
{
  public:
    explicit Opened(const std::string &path, bool writing = true, OpenMode mode = OpenMode::existing);
    ~Opened();
    Opened(const Opened &) = delete;
    Opened &operator=(const Opened &) = delete;

    PlatformFile file = 0;
    bool good;
};

}
