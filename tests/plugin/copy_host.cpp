// Directories are taken apart here a second time on purpose, and times come from the standard library.
#include "tests/plugin/copy_host.h"

#include <chrono>
#include <random>

#include "platform/platform.h"
#include "plugin/state.h"

namespace tests
{

namespace
{

constexpr size_t entry_bytes = 32;
constexpr uint16_t end_of_directory = 0xFFFF;

uint32_t word_at(const Bytes &image, size_t position)
{
    return uint32_t{image.at(position)} << 8 | image.at(position + 1);
}

uint32_t dword_at(const Bytes &image, size_t position)
{
    return word_at(image, position) << 16 | word_at(image, position + 2);
}

StoredEntry entry_at(const Bytes &image, size_t position)
{
    StoredEntry entry;
    const auto begin = image.begin() + static_cast<std::ptrdiff_t>(position);
    entry.name.assign(begin, begin + 10);
    entry.name.erase(entry.name.find_last_not_of(' ') + 1);
    entry.type = static_cast<uint16_t>(word_at(image, position + 10));
    entry.start = dword_at(image, position + 12);
    entry.length = dword_at(image, position + 16);
    std::copy_n(begin + 20, entry.date.size(), entry.date.begin());
    return entry;
}

// An HP 75 text of one line with the number 10.
Bytes numbered_line()
{
    const uint8_t line[] = {0x10, 0x00, 0x02, 'H', 'i', 0x99, 0xA9};
    Bytes content(28 + sizeof line);
    content[5] = 'T';
    std::copy(std::begin(line), std::end(line), content.begin() + 28);
    return content;
}

std::filesystem::path new_folder()
{
    return std::filesystem::temp_directory_path() / ("tarvo_copies_" + std::to_string(std::random_device{}()));
}

}

const std::string volume_name = "volume.lif";

WorkFolder::WorkFolder() : old_folder_(std::filesystem::current_path()), folder_(new_folder())
{
    std::filesystem::create_directory(folder_);
    std::filesystem::current_path(folder_);
}

WorkFolder::~WorkFolder()
{
    std::error_code ignored;
    std::filesystem::current_path(old_folder_, ignored);
    std::filesystem::remove_all(folder_, ignored);
}

LifVolume volume_of_kinds()
{
    const std::vector<uint8_t> items = {0x00, 0x3C, 0x00, 0x05, 'H',  'e',  'l',  'l',
                                        'o',  0x0D, 0x00, 0x0A, 0xFF, 0xFE, 0x00, 0x3E};
    LifVolume volume;
    volume.entries = {
        {.name = "README",
         .date = {0x85, 0x06, 0x21, 0x14, 0x05, 0x12},
         .content = lif_ascii({"first line", std::string(300, 'x'), "last line"})},
        {.name = "ITEMS", .type = 0xE848, .content = items},
        {.name = "NOTEST____", .type = 0xEA3E, .content = Bytes(1024)},
        {.name = "LISTING", .type = 0xE052, .content = numbered_line()},
        {.name = "NUMBERS", .type = 0xE010, .content = {0xDF, 0x02, 0x00, 'O', 'K', 0xEF}},
        {.name = "SORTC_____", .type = 0xEA32, .content = Bytes(5 * record_bytes, 0x4E)},
        {.name = "EMPTY", .length = 0},
        {.name = "BADITEMS", .type = 0xE848, .content = {0x00, 0xAF, 0x00, 0x00}},
        {.name = "WRONG", .type = 0xE052, .content = Bytes(2 * record_bytes, 'w')},
        {.name = "OLD", .type = 0x0000, .length = 2},
        {.name = "LAST", .content = lif_ascii({"behind all others"})},
    };
    for (const char character : std::string("A text of the Pascal system,\rof two lines.\r"))
        volume.entries[2].content.push_back(static_cast<uint8_t>(character));
    return volume;
}

CopyHost::CopyHost(const LifVolume &volume, uint32_t options) : before(lif_image(volume)), host(volume_name)
{
    write_file(volume_name, before);
    plugin.options |= options;
    begin_operation();
}

Bytes CopyHost::image() const
{
    return read_file(volume_name);
}

Bytes CopyHost::content(const std::string &stored_name) const
{
    const Bytes bytes = image();
    for (const StoredEntry &entry : stored_entries(bytes)) {
        if (entry.name == stored_name) return stored_content(bytes, entry);
    }
    return {};
}

int32_t get_file(const std::string &name, std::string local, int32_t flags)
{
    return FsGetFile(host_path(name).c_str(), local.data(), flags, nullptr);
}

int32_t put_file(std::string local, int32_t flags)
{
    const std::string remote = host_path(std::filesystem::path(local).filename().string());
    return FsPutFile(local.data(), remote.c_str(), flags);
}

std::string temporary_path(const std::string &name)
{
    std::filesystem::create_directories("x" + host_path("_tc7"));
    return "x" + host_path("_tc7") + host_path(name);
}

Bytes bytes_of(const std::string &text)
{
    return Bytes(text.begin(), text.end());
}

std::string text_of(const std::string &path)
{
    const Bytes bytes = read_file(path);
    return std::string(bytes.begin(), bytes.end());
}

void write_text(const std::string &path, const std::string &text)
{
    write_file(path, bytes_of(text));
}

bool exists(const std::string &path)
{
    return std::filesystem::exists(path);
}

std::string padded(std::string text)
{
    text.resize((text.size() + record_bytes - 1) / record_bytes * record_bytes);
    return text;
}

std::vector<StoredEntry> stored_entries(const Bytes &image)
{
    const size_t begin = size_t{dword_at(image, 8)} * record_bytes;
    const size_t end = begin + size_t{dword_at(image, 16)} * record_bytes;
    std::vector<StoredEntry> entries;
    for (size_t at = begin; at < end; at += entry_bytes) {
        const StoredEntry entry = entry_at(image, at);
        if (entry.type == end_of_directory) break;
        entries.push_back(entry);
    }
    return entries;
}

std::vector<std::string> stored_names(const Bytes &image)
{
    std::vector<std::string> names;
    for (const StoredEntry &entry : stored_entries(image)) names.push_back(entry.name);
    return names;
}

Bytes stored_content(const Bytes &image, const StoredEntry &entry)
{
    const size_t begin = size_t{entry.start} * record_bytes;
    Bytes content;
    for (size_t at = begin; at < begin + size_t{entry.length} * record_bytes; at++) content.push_back(image.at(at));
    return content;
}

std::time_t time_of(const std::string &path)
{
    const auto time = std::chrono::file_clock::to_sys(std::filesystem::last_write_time(path));
    return std::chrono::system_clock::to_time_t(std::chrono::time_point_cast<std::chrono::seconds>(time));
}

void set_time(const std::string &path, std::time_t time)
{
    const auto seconds = std::chrono::sys_seconds(std::chrono::seconds(time));
    std::filesystem::last_write_time(path, std::chrono::file_clock::from_sys(seconds));
}

std::time_t local_time(int year, int month, int day, int hour, int minute, int second)
{
    std::tm parts = {};
    parts.tm_year = year - 1900;
    parts.tm_mon = month - 1;
    parts.tm_mday = day;
    parts.tm_hour = hour;
    parts.tm_min = minute;
    parts.tm_sec = second;
    parts.tm_isdst = -1;
    return std::mktime(&parts);
}

}
