// Answers the engine's questions one after the other, and writes them down.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tests
{

struct Question {
    int32_t kind;
    std::string text;

    bool operator==(const Question &) const = default;
};

void PrintTo(const Question &question, std::ostream *stream);

constexpr int32_t answer_yes = 1;
constexpr int32_t answer_no = 2;
constexpr int32_t answer_cancel = 3;

// One object at a time. A question without an answer left is a failure of the test.
class ScriptedConfirm
{
  public:
    explicit ScriptedConfirm(std::vector<int32_t> answers);
    ~ScriptedConfirm();
    ScriptedConfirm(const ScriptedConfirm &) = delete;
    ScriptedConfirm &operator=(const ScriptedConfirm &) = delete;

    static int32_t callback(int32_t kind, const char *format, ...) __attribute__((format(printf, 2, 3)));

    std::vector<Question> asked;

  private:
    std::vector<int32_t> answers_;
};

}
