// The layouts are written down here a second time on purpose: a test that used the engine's own writer could not see
// a mistake that writer and reader share.
#include "tests/support/volume_builder.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <random>

namespace tests
{

namespace
{

constexpr size_t entry_bytes = 32;
constexpr uint32_t slots_per_record = record_bytes / entry_bytes;

void copy_padded(uint8_t *target, size_t size, const std::string &text)
{
    std::fill_n(target, size, uint8_t{' '});
    for (size_t i = 0; i < std::min(size, text.size()); ++i) target[i] = static_cast<uint8_t>(text[i]);
}

// Stores what lies inside the image, so that a volume may claim positions that it does not have.
void put(Bytes &image, size_t position, const uint8_t *bytes, size_t count)
{
    for (size_t i = 0; i < count && position + i < image.size(); ++i) image[position + i] = bytes[i];
}

uint32_t content_records(const LifEntry &entry)
{
    const auto records = static_cast<uint32_t>((entry.content.size() + record_bytes - 1) / record_bytes);
    return std::max(records, uint32_t{1});
}

std::vector<LifEntry> placed_entries(const LifVolume &volume)
{
    std::vector<LifEntry> placed = volume.entries;
    uint32_t next = volume.directory_start + volume.directory_length;
    for (LifEntry &entry : placed) {
        if (!entry.start) entry.start = next;
        if (!entry.length) entry.length = content_records(entry);
        next = *entry.start + *entry.length;
    }
    return placed;
}

uint32_t image_records(const LifVolume &volume, const std::vector<LifEntry> &placed)
{
    if (volume.records) return *volume.records;
    const uint32_t geometry = volume.tracks * volume.surfaces * volume.records_per_track;
    if (geometry != 0) return geometry;
    uint32_t end = volume.directory_start + volume.directory_length;
    for (const LifEntry &entry : placed) end = std::max(end, *entry.start + *entry.length);
    return end;
}

Bytes header_bytes(const LifVolume &volume)
{
    Bytes header(record_bytes);
    set_word_at(header, 0, volume.magic);
    copy_padded(&header[2], 6, volume.label);
    set_dword_at(header, 8, volume.directory_start);
    set_word_at(header, 12, volume.id);
    set_dword_at(header, 16, volume.directory_length);
    set_word_at(header, 20, volume.version);
    set_dword_at(header, 24, volume.tracks);
    set_dword_at(header, 28, volume.surfaces);
    set_dword_at(header, 32, volume.records_per_track);
    std::copy(volume.date.begin(), volume.date.end(), header.begin() + 36);
    return header;
}

std::string unused_path(std::string_view extension)
{
    static std::mt19937_64 numbers{std::random_device{}()};
    const std::string name = "tarvo_test_" + std::to_string(numbers()) + std::string(extension);
    return (std::filesystem::temp_directory_path() / name).string();
}

Bytes text_bytes(std::string_view text)
{
    return Bytes(text.begin(), text.end());
}

Bytes pascal_text(std::string_view text)
{
    Bytes content(1024); // the header that the system's editor keeps
    for (const char character : text) content.push_back(static_cast<uint8_t>(character == '\n' ? '\r' : character));
    content.resize((content.size() + 1023) / 1024 * 1024);
    return content;
}

// A BDAT file: its first record tells how far the data goes, the numbers follow as reals of 8 bytes.
Bytes bdat_of_counts(uint32_t records)
{
    Bytes content(record_bytes * (records + 1));
    set_dword_at(content, 0, records);
    for (size_t i = 0; i * 8 < records * record_bytes; ++i)
        set_word_at(content, record_bytes + i * 8, static_cast<uint16_t>(i));
    return content;
}

}

void set_word_at(Bytes &image, size_t position, uint16_t value)
{
    image.at(position) = static_cast<uint8_t>(value >> 8);
    image.at(position + 1) = static_cast<uint8_t>(value & 0xFF);
}

void set_dword_at(Bytes &image, size_t position, uint32_t value)
{
    set_word_at(image, position, static_cast<uint16_t>(value >> 16));
    set_word_at(image, position + 2, static_cast<uint16_t>(value & 0xFFFF));
}

std::array<uint8_t, 32> lif_entry_bytes(const LifEntry &entry)
{
    Bytes bytes(entry_bytes);
    copy_padded(bytes.data(), 10, entry.name);
    set_word_at(bytes, 10, entry.type);
    set_dword_at(bytes, 12, entry.start.value_or(0));
    set_dword_at(bytes, 16, entry.length.value_or(0));
    std::copy(entry.date.begin(), entry.date.end(), bytes.begin() + 20);
    std::copy(entry.implementation.begin(), entry.implementation.end(), bytes.begin() + 26);
    std::array<uint8_t, 32> result{};
    std::copy(bytes.begin(), bytes.end(), result.begin());
    return result;
}

Bytes lif_image(const LifVolume &volume)
{
    const std::vector<LifEntry> placed = placed_entries(volume);
    Bytes image(size_t{image_records(volume, placed)} * record_bytes);
    const Bytes header = header_bytes(volume);
    put(image, 0, header.data(), header.size());
    size_t slot = size_t{volume.directory_start} * record_bytes;
    for (const LifEntry &entry : placed) {
        const std::array<uint8_t, 32> bytes = lif_entry_bytes(entry);
        put(image, slot, bytes.data(), bytes.size());
        put(image, size_t{*entry.start} * record_bytes, entry.content.data(), entry.content.size());
        slot += entry_bytes;
    }
    const size_t end = (size_t{volume.directory_start} + volume.directory_length) * record_bytes;
    const std::array<uint8_t, 2> mark = {0xFF, 0xFF};
    if (volume.end_mark && slot < end) put(image, slot + 10, mark.data(), mark.size());
    return image;
}

LifVolume lif_volume_with_files(uint32_t n)
{
    LifVolume volume;
    volume.label = "FILES";
    volume.directory_length = n / slots_per_record + 1; // with room for the end mark
    volume.tracks = 0;
    volume.surfaces = 0;
    volume.records_per_track = 0;
    volume.entries.reserve(n);
    for (uint32_t i = 0; i < n; ++i) {
        std::string digits = std::to_string(i);
        LifEntry entry;
        entry.name = "F" + std::string(6 - std::min<size_t>(6, digits.size()), '0') + digits;
        entry.content = text_bytes(entry.name);
        volume.entries.push_back(std::move(entry));
    }
    return volume;
}

LifVolume three_files()
{
    LifVolume volume;
    volume.directory_length = 3;
    volume.entries = {{.name = "ONE", .content = Bytes(256, 'a')},
                      {.name = "TWO", .content = Bytes(700, 'b')},
                      {.name = "THREE", .content = Bytes(100, 'c')}};
    return volume;
}

LifVolume demo_volume()
{
    LifVolume volume;
    volume.label = "DEMO";
    volume.tracks = 4;
    volume.records_per_track = 15;
    volume.date = {0x85, 0x06, 0x21, 0x14, 0x00, 0x00};
    volume.entries = {
        {.name = "README",
         .date = {0x85, 0x06, 0x21, 0x14, 0x05, 0x12},
         .content = lif_ascii({"This volume shows the kinds of files", "that a LIF volume may hold."})},
        {.name = "RESULTS",
         .type = 0xE961,
         .date = {0x86, 0x11, 0x03, 0x08, 0x30, 0x00},
         .implementation = {0x80, 0x01, 0, 0, 0x01, 0x00},
         .content = bdat_of_counts(6)}, // records of 512 bytes
        {.name = "OLD", .type = 0x0000, .length = 2, .date = {0x85, 0x01, 0x02, 0x03, 0x04, 0x05}},
        {.name = "NOTEST____",
         .type = 0xEA3E,
         .date = {0x02, 0x02, 0x28, 0x23, 0x59, 0x59},
         .content = pascal_text("A text of the Pascal system,\nof two lines.\n")},
        {.name = "SORTC_____",
         .type = 0xEA32,
         .date = {0x99, 0x12, 0x31, 0x12, 0x00, 0x00},
         .content = Bytes(700, 0x4E)},
        {.name = "SECRET",
         .type = 0xE961,
         .date = {0x87, 0x07, 0x07, 0x07, 0x07, 0x07},
         .implementation = {0x80, 0x01, 'A', 'B', 0x00, 0x80},
         .content = bdat_of_counts(1)},
        {.name = "NODATE",
         .type = 0xE020,
         .date = {},
         .implementation = {0x80, 0x01, 0, 0, 0, 1},
         .content = Bytes(200, 0x20)},
    };
    return volume;
}

Bytes lif_ascii(const std::vector<std::string> &lines)
{
    Bytes content;
    for (const std::string &line : lines) {
        content.push_back(static_cast<uint8_t>(line.size() >> 8));
        content.push_back(static_cast<uint8_t>(line.size() & 0xFF));
        content.insert(content.end(), line.begin(), line.end());
        if (line.size() % 2 != 0) content.push_back(' ');
    }
    content.insert(content.end(), {0xFF, 0xFF});
    return content;
}

std::vector<std::string> mixed_lines(size_t bytes, uint32_t seed)
{
    static constexpr std::string_view characters =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZ 0123456789 abcdefghijklmnopqrstuvwxyz +-*/()";
    constexpr uint32_t longest_line = 100;
    std::minstd_rand numbers{seed + 1};
    std::vector<std::string> lines;
    for (size_t left = bytes; left > 0; left -= lines.back().size()) {
        std::string line(std::min<size_t>(1 + numbers() % longest_line, left), '\0');
        std::generate(line.begin(), line.end(), [&numbers] { return characters[numbers() % characters.size()]; });
        lines.push_back(std::move(line));
    }
    return lines;
}

LifVolume lif_volume_with_texts(uint32_t n)
{
    constexpr uint32_t largest_text = 2000; // bytes
    LifVolume volume = lif_volume_with_files(n);
    std::minstd_rand numbers;
    for (LifEntry &entry : volume.entries) {
        const auto seed = static_cast<uint32_t>(numbers());
        entry.content = lif_ascii(mixed_lines(1 + seed % largest_text, seed));
    }
    return volume;
}

LifVolume lif_volume_with(LifEntry entry)
{
    LifVolume volume = lif_volume_with_files(0);
    volume.entries.push_back(std::move(entry));
    return volume;
}

LifVolume empty_lif_volume(uint32_t records, uint32_t slots)
{
    LifVolume volume;
    volume.label = "EMPTY";
    volume.directory_length = (slots + slots_per_record - 1) / slots_per_record;
    volume.tracks = records / volume.records_per_track;
    return volume;
}

TemporaryFile::TemporaryFile(const Bytes &content, std::string_view extension) : path_(unused_path(extension))
{
    write_file(path_, content);
}

TemporaryFile::TemporaryFile(std::string_view extension) : path_(unused_path(extension)) {}

TemporaryFile::~TemporaryFile()
{
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
}

Bytes TemporaryFile::bytes() const
{
    return read_file(path_);
}

void TemporaryFile::replace(const Bytes &content) const
{
    write_file(path_, content);
}

void TemporaryFile::extend(uint64_t bytes) const
{
    std::fstream file(path_, std::ios::binary | std::ios::in | std::ios::out);
    file.seekp(static_cast<std::streamoff>(bytes - 1));
    if (!file.put('\0').flush())
        throw std::filesystem::filesystem_error("can't extend", path_, std::make_error_code(std::errc::io_error));
}

bool TemporaryFile::exists() const
{
    return std::filesystem::exists(path_);
}

void write_file(const std::string &path, const Bytes &content)
{
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    const std::string text(content.begin(), content.end());
    file.write(text.data(), static_cast<std::streamsize>(text.size()));
    if (!file.flush())
        throw std::filesystem::filesystem_error("can't write", path, std::make_error_code(std::errc::io_error));
}

Bytes read_file(const std::string &path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file) throw std::filesystem::filesystem_error("can't read", path, std::make_error_code(std::errc::io_error));
    Bytes content(std::filesystem::file_size(path));
    file.read(reinterpret_cast<char *>(content.data()), static_cast<std::streamsize>(content.size()));
    content.resize(static_cast<size_t>(file.gcount()));
    return content;
}

}
