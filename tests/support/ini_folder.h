// For the life of the object the present folder is a new one, where a tarvo.ini may stand.
#pragma once

#include <filesystem>
#include <string>

namespace tests
{

class IniFolder
{
  public:
    IniFolder(); // without a file
    explicit IniFolder(const std::string &text);
    ~IniFolder();
    IniFolder(const IniFolder &) = delete;
    IniFolder &operator=(const IniFolder &) = delete;

    void write(const std::string &text) const;
    void remove() const;

  private:
    std::filesystem::path old_folder_;
    std::filesystem::path folder_;
};

}
