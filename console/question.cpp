// Questions by the engine's own callback.
#include "console/question.h"

#include "base/file.h"
#include "base/log.h"
#include "platform/platform.h"

namespace
{
constexpr int32_t yes_no_cancel = 3;
constexpr int32_t yes_no_all_cancel = 4;
constexpr int32_t yes = 1;
constexpr int32_t no = 2;
constexpr int32_t all = 4;

Answer answer_of(int32_t result)
{
    if (result == no) return Answer::no;
    return result == yes || result == all ? Answer::yes : Answer::cancel;
}
}

Answer Questions::ask(const std::string &text)
{
    return answer_of(standard_confirm_callback(yes_no_cancel, "%s", text.c_str()));
}

Answer Questions::ask_or_all(const std::string &text)
{
    if (all_) return Answer::yes;
    const int32_t result = standard_confirm_callback(yes_no_all_cancel, "%s", text.c_str());
    all_ = result == all;
    return answer_of(result);
}

bool input_is_terminal()
{
    return platform_is_terminal(file_stdin());
}
