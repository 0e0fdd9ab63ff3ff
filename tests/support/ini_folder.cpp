#include "tests/support/ini_folder.h"

#include <random>

#include "tests/support/volume_builder.h"

namespace tests
{

IniFolder::IniFolder()
    : old_folder_(std::filesystem::current_path()),
      folder_(std::filesystem::temp_directory_path() / ("tarvo_config_" + std::to_string(std::random_device{}())))
{
    std::filesystem::create_directory(folder_);
    std::filesystem::current_path(folder_);
}

IniFolder::IniFolder(const std::string &text) : IniFolder()
{
    write(text);
}

IniFolder::~IniFolder()
{
    std::error_code ignored;
    std::filesystem::current_path(old_folder_, ignored);
    std::filesystem::remove_all(folder_, ignored);
}

void IniFolder::write(const std::string &text) const
{
    write_file((folder_ / "tarvo.ini").string(), Bytes(text.begin(), text.end()));
}

void IniFolder::remove() const
{
    std::filesystem::remove(folder_ / "tarvo.ini");
}

}
