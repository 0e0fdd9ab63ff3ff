// Nothing here asks the engine how a file looks.
#include "tests/volume/insert_support.h"

#include <cstdlib>
#include <cstring>

#include "base/error.h"
#include "tests/support/capture.h"

namespace tests::insertion
{

namespace
{

void set_variable(const char *name, const std::string &value)
{
#ifdef _WIN32
    _putenv_s(name, value.c_str());
#else
    if (value.empty())
        unsetenv(name);
    else
        setenv(name, value.c_str(), 1);
#endif
}

uint32_t stop_at_call = 0;

}

std::vector<ProgressCall> progress_calls;

TemporaryFolder::TemporaryFolder()
{
    for (const char *name : {"TMPDIR", "TMP", "TEMP"}) {
        const char *value = std::getenv(name);
        old_.emplace_back(name, value == nullptr ? "" : value);
        set_variable(name, folder_.folder());
    }
}

TemporaryFolder::~TemporaryFolder()
{
    for (const auto &[name, value] : old_) set_variable(name.c_str(), value);
}

size_t TemporaryFolder::files() const
{
    size_t count = 0;
    for (const auto &entry : std::filesystem::directory_iterator(folder_.folder()))
        count += entry.path().filename().string().substr(0, 3) == "TRV" ? 1u : 0u;
    return count;
}

Added add(MediaDescriptor *md, const std::string &path, uint16_t flags, const FileInfo &info, ProgressCallback progress)
{
    Added added{-2, 0, "", info};
    forget_error();
    added.result = image_add_file(md, &added.info, path.c_str(), flags, progress);
    added.error = global_error;
    added.detail = global_error_info;
    return added;
}

Added create(MediaDescriptor *md, const FileInfo &info, bool initialize, uint16_t pattern)
{
    Added added{-2, 0, "", info};
    forget_error();
    added.result = image_create_file(md, &added.info, initialize ? 1 : 0, pattern);
    added.error = global_error;
    added.detail = global_error_info;
    return added;
}

void reset_progress(uint32_t stop_at)
{
    progress_calls.clear();
    stop_at_call = stop_at;
}

int32_t noting_progress(void *position, uint32_t record, uint32_t percent)
{
    progress_calls.push_back({reinterpret_cast<uintptr_t>(position), record, percent});
    return stop_at_call != 0 && progress_calls.size() >= stop_at_call ? 1 : 0;
}

LifVolume roomy_volume(uint32_t records)
{
    LifVolume volume = three_files();
    volume.tracks = (records + 15) / 16;
    volume.records = records;
    return volume;
}

Bytes records_at(const TemporaryFile &image, uint32_t record, uint32_t count)
{
    return part_of(image.bytes(), size_t{record} * record_bytes, size_t{count} * record_bytes);
}

Bytes numbered(size_t count, uint32_t seed)
{
    Bytes bytes(count);
    for (size_t i = 0; i < count; ++i)
        bytes[i] = static_cast<uint8_t>((i * 37 + i / 256 * 11 + i / 65536 * 5 + seed * 101) & 255);
    return bytes;
}

Bytes in_records(Bytes content)
{
    content.resize((content.size() + record_bytes - 1) / record_bytes * record_bytes);
    return content;
}

Bytes with_records(Bytes image, uint32_t record, const Bytes &content)
{
    const Bytes whole = in_records(content);
    const size_t position = size_t{record} * record_bytes;
    if (image.size() < position + whole.size()) image.resize(position + whole.size());
    std::copy(whole.begin(), whole.end(), image.begin() + static_cast<std::ptrdiff_t>(position));
    return image;
}

FileInfo typed(uint16_t type, const std::string &text)
{
    FileInfo info{};
    info.type = type;
    set_type_text(info, text);
    return info;
}

std::unique_ptr<HandMedium> tape()
{
    auto hand = std::make_unique<HandMedium>(Bytes(400 * record_bytes));
    MediaDescriptor &md = hand->md;
    md.format = FORMAT_TAPE45;
    md.magic = 0x0500;
    md.records = 400;
    md.dir_start = 1;
    md.dir_size = 2;
    md.dir_entry_size = 12;
    md.spare_dir_start = 3;
    md.file_area_start = 5;
    md.data_size = 395 * record_bytes;
    md.free_bytes = md.data_size;
    return hand;
}

std::string entry_detail(const std::string &name)
{
    return "file \"" + name + "\"";
}

}
