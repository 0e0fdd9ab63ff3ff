// What the engine says while a test runs: its log, what it prints, and the words of the last error.
#pragma once

#include <cstdint>
#include <string>

#include "base/file.h"

namespace tests
{

// The log goes into a temporary file, at the given level, until the object goes. Carriage returns are left out.
class LogCapture
{
  public:
    explicit LogCapture(int32_t level);
    ~LogCapture();
    LogCapture(const LogCapture &) = delete;
    LogCapture &operator=(const LogCapture &) = delete;

    std::string text() const;

  private:
    char path_[FILE_PATH_SIZE] = ""; // ahead of the handle, whose making fills it
    FileHandle file_;
    FileHandle old_file_;
    int32_t old_level_;
};

// The same for what the engine prints.
class OutputCapture
{
  public:
    OutputCapture();
    ~OutputCapture();
    OutputCapture(const OutputCapture &) = delete;
    OutputCapture &operator=(const OutputCapture &) = delete;

    std::string text() const;

  private:
    char path_[FILE_PATH_SIZE] = ""; // ahead of the handle, whose making fills it
    FileHandle file_;
};

std::string error_text(); // as get_error composes it
void forget_error();      // number 0 and no detail, so that a test sees who sets one
bool contains(const std::string &text, const std::string &part);
bool contains_ignoring_case(const std::string &text, const std::string &part);

}
