// Files are made and read here without the code under test.
#include "tests/platform/scratch.h"

#include <cstdio>
#include <cstdlib>
#include <random>

namespace tests
{

Scratch::Scratch() : Scratch(std::filesystem::temp_directory_path()) {}

Scratch::Scratch(const std::filesystem::path &parent)
{
    std::random_device chance;
    do {
        folder_ = parent / ("scratch" + std::to_string(chance()));
    } while (!std::filesystem::create_directory(folder_));
}

Scratch::~Scratch()
{
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

std::string Scratch::path(std::string_view name) const
{
    return (folder_ / name).string();
}

std::string Scratch::file(std::string_view name, std::string_view content) const
{
    std::string made = path(name);
    FILE *stream = fopen(made.c_str(), "wb");
    if (stream == nullptr || fwrite(content.data(), 1, content.size(), stream) != content.size()) std::abort();
    fclose(stream);
    return made;
}

std::string Scratch::folder() const
{
    return folder_.string();
}

std::string content(const std::string &path)
{
    std::string text;
    FILE *stream = fopen(path.c_str(), "rb");
    if (stream == nullptr) return text;
    char part[4096];
    while (const size_t count = fread(part, 1, sizeof(part), stream)) text.append(part, count);
    fclose(stream);
    return text;
}

bool exists(const std::string &path)
{
    return std::filesystem::exists(path);
}

Opened::Opened(const std::string &path, bool writing, OpenMode mode)
    : good(platform_open(&file, path.c_str(), true, writing, mode, false))
{
}

Opened::~Opened()
{
    if (good) platform_close(file);
}

}
