// Log and output go through the engine's own file layer into temporary files, which are read back here without it.
#include "tests/support/capture.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>

#include "base/error.h"
#include "base/log.h"
#include "base/output.h"
#include "tests/support/volume_builder.h"

namespace tests
{

namespace
{

std::string text_of(const char *path)
{
    const Bytes bytes = read_file(path);
    std::string text(bytes.begin(), bytes.end());
    std::erase(text, '\r');
    return text;
}

FileHandle open_capture(char *path)
{
    FileHandle file = 0;
    if (file_open_temp(&file, path, "wb+") != 1) std::abort(); // without it the test would look at nothing
    return file;
}

std::string lowered(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char character) { return static_cast<char>(std::tolower(character)); });
    return text;
}

}

LogCapture::LogCapture(int32_t level) : file_(open_capture(path_)), old_file_(logfile), old_level_(loglevel)
{
    logfile = file_;
    loglevel = level;
}

LogCapture::~LogCapture()
{
    loglevel = 0; // closing and deleting are not part of what is captured
    logfile = old_file_;
    file_close(file_);
    file_delete(path_);
    loglevel = old_level_;
}

std::string LogCapture::text() const
{
    return text_of(path_);
}

OutputCapture::OutputCapture() : file_(open_capture(path_))
{
    output_to(file_);
}

OutputCapture::~OutputCapture()
{
    output_to(0);
    file_close(file_);
    file_delete(path_);
}

std::string OutputCapture::text() const
{
    output_flush();
    return text_of(path_);
}

std::string error_text()
{
    char text[ERROR_TEXT_SIZE] = "";
    get_error(text);
    return text;
}

void forget_error()
{
    set_error(0, "%s", "");
}

bool contains(const std::string &text, const std::string &part)
{
    return text.find(part) != std::string::npos;
}

bool contains_ignoring_case(const std::string &text, const std::string &part)
{
    return contains(lowered(text), lowered(part));
}

}
