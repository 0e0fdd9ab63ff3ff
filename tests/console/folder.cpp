#include "tests/console/folder.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>

#include <fcntl.h>
#include <sys/stat.h>

#include "tests/console/program.h"

namespace tests
{

TemporaryFolder::TemporaryFolder() : path_((std::filesystem::temp_directory_path() / "tarvo_test_XXXXXX").string())
{
    if (mkdtemp(path_.data()) == nullptr) throw std::runtime_error("can't make the folder " + path_);
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

std::string TemporaryFolder::path(const std::string &name) const
{
    return path_ + "/" + name;
}

std::string TemporaryFolder::add(const std::string &name, const Bytes &content) const
{
    write_file(path(name), content);
    return path(name);
}

std::string TemporaryFolder::add(const std::string &name, const std::string &text) const
{
    return add(name, bytes_of(text));
}

Bytes TemporaryFolder::bytes(const std::string &name) const
{
    return read_file(path(name));
}

std::string TemporaryFolder::text(const std::string &name) const
{
    return file_text(path(name));
}

std::vector<std::string> TemporaryFolder::names() const
{
    std::vector<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(path_))
        names.push_back(entry.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
}

std::string written_at(const std::string &path)
{
    struct stat status = {};
    if (stat(path.c_str(), &status) != 0) throw std::runtime_error("no file " + path);
    tm local = {};
    localtime_r(&status.st_mtim.tv_sec, &local);
    char text[32];
    strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local);
    return text;
}

void set_written_at(const std::string &path, const std::string &time)
{
    tm local = {};
    if (strptime(time.c_str(), "%Y-%m-%d %H:%M:%S", &local) == nullptr) throw std::runtime_error("no time: " + time);
    local.tm_isdst = -1;
    const timespec times[] = {{mktime(&local), 0}, {mktime(&local), 0}};
    if (utimensat(AT_FDCWD, path.c_str(), times, 0) != 0) throw std::runtime_error("can't set the time of " + path);
}

}
