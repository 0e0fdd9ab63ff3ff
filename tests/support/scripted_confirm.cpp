// The callback is a plain function, so the object in force is kept here for it.
#include "tests/support/scripted_confirm.h"

#include <gtest/gtest.h>

#include <cstdarg>
#include <cstdio>
#include <ostream>

namespace tests
{

namespace
{

ScriptedConfirm *script = nullptr;

}

void PrintTo(const Question &question, std::ostream *stream)
{
    *stream << question.kind << " \"" << question.text << '"';
}

ScriptedConfirm::ScriptedConfirm(std::vector<int32_t> answers) : answers_(std::move(answers))
{
    script = this;
}

ScriptedConfirm::~ScriptedConfirm()
{
    EXPECT_GE(asked.size(), answers_.size()) << "fewer questions than answers";
    script = nullptr;
}

int32_t ScriptedConfirm::callback(int32_t kind, const char *format, ...)
{
    char text[1024] = "";
    va_list arguments;
    va_start(arguments, format);
    vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    script->asked.push_back({kind, text});
    if (script->asked.size() <= script->answers_.size()) return script->answers_[script->asked.size() - 1];
    ADD_FAILURE() << "not foreseen: " << text;
    return answer_cancel;
}

}
