// The row of file calls and the callback are plain functions, so the objects in force are kept here for them.
#include "tests/volume/extract_support.h"

#include <algorithm>
#include <ostream>

#include "base/error.h"
#include "base/log.h"
#include "tests/support/capture.h"

namespace tests
{

namespace
{

ProgressLog *progress_log = nullptr;
HostDisk *host_disk = nullptr;

constexpr uint32_t full = 28; // a code that every system has words for

bool watched_open(PlatformFile *ret_file, const char *path, bool reading, bool writing, OpenMode mode,
                  bool writethrough)
{
    if (writing && host_disk->before_opening_for_writing) host_disk->before_opening_for_writing(path);
    const bool opened = host_disk->behind->open(ret_file, path, reading, writing, mode, writethrough);
    if (opened) host_disk->open_files.insert(*ret_file);
    return opened;
}

bool watched_set_times(PlatformFile file, int64_t time)
{
    if (!host_disk->refuses_times) return host_disk->behind->set_times(file, time);
    platform_set_last_error(full);
    return false;
}

bool watched_open_alone(PlatformFile *ret_file, const char *path)
{
    const bool opened = host_disk->behind->open_alone(ret_file, path);
    if (opened) host_disk->open_files.insert(*ret_file);
    return opened;
}

void watched_close(PlatformFile file)
{
    host_disk->open_files.erase(file);
    host_disk->behind->close(file);
}

int64_t bounded_write(PlatformFile file, const void *buffer, uint32_t bytes)
{
    if (file == logfile) return host_disk->behind->write(file, buffer, bytes);
    ++host_disk->writes;
    const auto taken = static_cast<uint32_t>(std::min<uint64_t>(bytes, host_disk->room));
    if (taken == 0 && bytes != 0) {
        platform_set_last_error(full);
        return -1;
    }
    const int64_t written = host_disk->behind->write(file, buffer, taken);
    if (written > 0 && host_disk->room != endless) host_disk->room -= static_cast<uint64_t>(written);
    return written;
}

LifVolume volume_of(const LifEntry &entry)
{
    LifVolume volume;
    volume.entries = {entry};
    return volume;
}

}

void PrintTo(const ProgressCall &call, std::ostream *stream)
{
    *stream << '(' << call.context << ' ' << call.record << ' ' << call.percent << "%)";
}

ProgressLog::ProgressLog(uint32_t stop_at) : stop_at_(stop_at)
{
    progress_log = this;
}

ProgressLog::~ProgressLog()
{
    progress_log = nullptr;
}

int32_t ProgressLog::callback(void *context, uint32_t record, uint32_t percent)
{
    progress_log->calls.push_back({reinterpret_cast<uintptr_t>(context), record, percent});
    return record == progress_log->stop_at_ ? 1 : 0;
}

HostDisk::HostDisk(uint64_t room_in_bytes) : room(room_in_bytes), behind(file_calls), calls_(*file_calls)
{
    calls_.open = watched_open;
    calls_.open_alone = watched_open_alone;
    calls_.set_times = watched_set_times;
    calls_.close = watched_close;
    calls_.write = bounded_write;
    host_disk = this;
    file_calls = &calls_;
}

HostDisk::~HostDisk()
{
    file_calls = behind;
    host_disk = nullptr;
}

OneFile::OneFile(const Bytes &content, uint16_t type, const std::string &name)
    : OneFile(LifEntry{.name = name, .type = type, .content = content})
{
}

OneFile::OneFile(const LifEntry &entry) : volume(volume_of(entry)), md(volume.md), info(*md->root) {}

std::string OneFile::path(const std::string &name) const
{
    return host.path(name);
}

ExtractOrder order_for(const std::string &path, uint16_t flags, ProgressCallback progress)
{
    ExtractOrder order;
    order.to_file = path.c_str();
    order.flags = flags;
    order.progress = progress;
    return order;
}

Extraction extract_to(OneFile &file, const std::string &path, uint16_t flags, ProgressCallback progress)
{
    forget_error();
    return extract_file(file.md, &file.info, order_for(path, flags, progress));
}

Bytes records_of(const Bytes &content)
{
    Bytes records = content;
    records.resize((content.size() + 255) / 256 * 256);
    return records;
}

Bytes counting(size_t size)
{
    Bytes bytes(size);
    for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<uint8_t>(i + i / 256 * 7);
    return bytes;
}

std::string text_in(const std::string &path)
{
    const Bytes bytes = read_file(path);
    return std::string(bytes.begin(), bytes.end());
}

std::string error_with_file(uint32_t number, const std::string &path)
{
    const uint32_t old_number = global_error;
    const std::string old_detail = global_error_info;
    set_error(number, "file \"%s\"", path.c_str());
    std::string text = error_text();
    set_error(old_number, "%s", old_detail.c_str());
    return text;
}

bool is_windows()
{
    return platform_separator() == '\\';
}

}
