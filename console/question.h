// Questions that the user answers on the console.
#pragma once

#include <cstdint>
#include <string>

enum class Answer : uint8_t { yes, no, cancel };

// Asked on standard error, one after the other; "all" answers those that follow too.
class Questions
{
  public:
    Answer ask(const std::string &text); // yes, no or cancel
    Answer ask_or_all(const std::string &text);

  private:
    bool all_ = false;
};

bool input_is_terminal(); // there is somebody who could answer
