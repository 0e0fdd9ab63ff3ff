// A folder of the host that goes away with the object, and what is in it.
#pragma once

#include <ctime>
#include <string>
#include <vector>

#include "tests/support/bytes.h"

namespace tests
{

class TemporaryFolder
{
  public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;

    const std::string &path() const
    {
        return path_;
    }
    std::string path(const std::string &name) const; // of a file in it
    // Makes a file and returns its path.
    std::string add(const std::string &name, const Bytes &content) const;
    std::string add(const std::string &name, const std::string &text) const;
    Bytes bytes(const std::string &name) const;
    std::string text(const std::string &name) const;
    std::vector<std::string> names() const; // of all that is in it, sorted

  private:
    std::string path_;
};

// "1985-06-21 14:05:12", the local time at which a file was written; and how it is set.
std::string written_at(const std::string &path);
void set_written_at(const std::string &path, const std::string &time);

}
