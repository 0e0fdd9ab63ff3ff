// A host that copies: a volume with a file of each kind of content in a folder of its own, open in the plug-in, and
// what stands on it as read without the engine.
#pragma once

#include <cstdint>
#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/plugin/plugin_host.h"
#include "tests/support/volume_builder.h"

namespace tests
{

// A new folder that is the present one for the life of the object. Plain names are then not below the system's folder
// for temporary files.
class WorkFolder
{
  public:
    WorkFolder();
    ~WorkFolder();
    WorkFolder(const WorkFolder &) = delete;
    WorkFolder &operator=(const WorkFolder &) = delete;

  private:
    std::filesystem::path old_folder_;
    std::filesystem::path folder_;
};

// README.ASCII, ITEMS.DATA, NOTES.TEXT, LISTING.TXT75, NUMBERS.DTA8x and SORT.CODE of whole records, EMPTY.ASCII,
// BADITEMS.DATA and WRONG.TXT75 of another content, OLD.PURGE, and LAST.ASCII; room for more.
LifVolume volume_of_kinds();

class CopyHost
{
  public:
    // The volume's records are read when it is opened; option bits are or-ed to those at the start.
    explicit CopyHost(const LifVolume &volume = volume_of_kinds(), uint32_t options = 0);

    Bytes image() const;                                 // as it stands on the disk
    Bytes content(const std::string &stored_name) const; // of a file on the disk; empty when it has none

    WorkFolder folder;
    Bytes before; // the image as it was built
    PluginHost host;
};

extern const std::string volume_name; // of the image, in the present folder

int32_t get_file(const std::string &name, std::string local, int32_t flags = 0);
int32_t put_file(std::string local, int32_t flags = 0); // the remote name is that of the local file
std::string temporary_path(const std::string &name);    // where hosts put files for their own use; makes the folder

Bytes bytes_of(const std::string &text);
std::string text_of(const std::string &path);
void write_text(const std::string &path, const std::string &text);
bool exists(const std::string &path);
std::string padded(std::string text); // zeros up to a whole record

struct StoredEntry { // of a directory, read without the engine
    std::string name;
    uint16_t type = 0;
    uint32_t start = 0;  // record
    uint32_t length = 0; // records
    BcdDate date = {};
};

std::vector<StoredEntry> stored_entries(const Bytes &image);
std::vector<std::string> stored_names(const Bytes &image);
Bytes stored_content(const Bytes &image, const StoredEntry &entry);

std::time_t time_of(const std::string &path); // of the last write
void set_time(const std::string &path, std::time_t time);
std::time_t local_time(int year, int month, int day, int hour, int minute, int second);

}
