// Copying out once more, record by record and byte by byte, as slowly and plainly as can be, held against the engine
// on many files: results, bytes on the host, calls of progress, errors.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <optional>
#include <ostream>
#include <random>

#include "base/convert.h"
#include "base/error.h"
#include "tests/support/capture.h"
#include "tests/volume/content/outward_support.h"
#include "tests/volume/extract_support.h"

using namespace tests;

namespace
{

uint32_t literal_kind(uint32_t format, uint16_t type)
{
    if (format == 1 && (type >> 8 & 127) == 36) return 1;
    if (format == 2 && (type & 127) == 36) return 1;
    if (format != 3) return 0;
    if (type == 0xE848) return 1;
    if (type == 1) return 3;
    if (type == 0xEA3E) return 4;
    if (type == 0xE010) return 6;
    return type == 0xE052 ? 7 : 0;
}

void put_dword(Bytes *bytes, uint32_t value)
{
    for (int shift = 24; shift >= 0; shift -= 8) bytes->push_back(static_cast<uint8_t>(value >> shift));
}

Bytes literal_entry(const std::string &name, const FileInfo &info, uint32_t start, uint32_t records)
{
    Bytes bytes = filled_to(bytes_of(name), 10);
    bytes.push_back(static_cast<uint8_t>(info.type >> 8));
    bytes.push_back(static_cast<uint8_t>(info.type & 255));
    put_dword(&bytes, start);
    put_dword(&bytes, records);
    uint8_t date[6];
    tm2datetime(date, &info.date);
    bytes.insert(bytes.end(), date, date + 6);
    bytes.insert(bytes.end(), info.lif_impl, info.lif_impl + 6);
    return bytes;
}

Bytes literal_header(uint32_t form, const FileInfo &info, uint32_t records)
{
    if (form == 2) return literal_entry(info.name, info, 0, records);
    if (form != 1) return {};
    Bytes bytes = joined({{0x80, 0}, bytes_of("HFSLIF"), {0, 0, 0, 1, 0x10, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0}});
    bytes = joined({bytes, {0, 0, 0, 1, 0, 0, 0, 1}});
    put_dword(&bytes, records + 2);
    bytes = filled_to(joined({bytes, Bytes(6, 0x11)}), 248);
    bytes = filled_to(joined({bytes, Bytes(6, 0x11)}), 256);
    bytes = filled_to(joined({bytes, literal_entry("WS_FILE   ", info, 2, records)}), 256 + 42);
    return filled_to(joined({bytes, {0xFF, 0xFF}}), 512);
}

// One byte after the other. False when the disk takes no more.
bool write_bytes(FileHandle file, const Bytes &bytes)
{
    for (const uint8_t byte : bytes)
        if (file_write(file, &byte, 1) != 1) return false;
    return true;
}

struct Copy {
    MediaDescriptor *md;
    const FileInfo *info;
    std::string path;
    uint16_t flags;
    ProgressCallback progress;
};

int32_t with_error(uint32_t number, const Copy &copy)
{
    set_error(number, "file \"%s\"", copy.path.c_str());
    return -1;
}

int32_t literal_records(const Copy &copy, uint32_t kind, bool convert, FileHandle file)
{
    const uint32_t size = copy.info->size;
    const uint32_t records = size / 256 + (size % 256 != 0 ? 1 : 0);
    uint32_t total = 0;
    int32_t result = 0;
    LiteralState state;
    if (!convert && !write_bytes(file, literal_header(copy.md->use_file_headers, *copy.info, records)))
        return with_error(303, copy);
    for (uint32_t index = 0; index < records; ++index) {
        const uint32_t length = index + 1 < records ? 256 : size - total;
        Bytes block(256);
        if (!convert || kind != 4 || index >= 4) {
            if (file_readrecord(copy.md->file, copy.info->location + index, 256, block.data()) < 0) return -1;
            result = 256;
            block.resize(length);
            if (!convert && !write_bytes(file, block)) return with_error(303, copy);
            std::string text;
            const ContentStep step = convert ? literal_block(kind, &state, block, &text) : ContentStep::more;
            write_bytes(file, bytes_of(text));
            if (step == ContentStep::rejected) return with_error(214, copy);
            if (step != ContentStep::more) return result;
        }
        total += length;
        if (copy.progress == nullptr) continue;
        auto *context = reinterpret_cast<void *>(uintptr_t{index + 1} * 256);
        const auto percent = static_cast<uint32_t>(uint64_t{total} * 100 / size);
        if (copy.progress(context, index, percent) != 0) return result;
    }
    return result;
}

int32_t literal_copy(const Copy &copy)
{
    const uint32_t kind = literal_kind(copy.md->format, copy.info->type);
    const bool convert = (copy.flags & 2) != 0 && (kind != 0 || (copy.flags & 4) != 0);
    FileHandle file = 0;
    if (file_open(&file, copy.path.c_str(), "wb", 0) != 1) return -1;
    const int32_t result = literal_records(copy, kind, convert, file);
    file_close(file);
    return result;
}

// ---- the two side by side

struct Outcome {
    int32_t result;
    uint32_t error; // of a failure
    std::string detail;
    Bytes bytes;
    ProgressCalls calls;

    bool operator==(const Outcome &) const = default;
};

void PrintTo(const Outcome &outcome, std::ostream *stream)
{
    *stream << outcome.result << ", error " << outcome.error << ' ' << outcome.detail << ", "
            << testing::PrintToString(outcome.bytes) << ", " << testing::PrintToString(outcome.calls);
}

struct Conditions {
    uint64_t room = endless;
    uint32_t stop_at = never;
    bool told = true; // there is a progress callback
};

Outcome outcome_of(const Copy &copy, const Conditions &conditions, bool literally)
{
    ProgressLog progress(conditions.stop_at);
    Copy told = copy;
    told.progress = conditions.told ? ProgressLog::callback : nullptr;
    Outcome outcome{};
    forget_error();
    {
        const HostDisk disk(conditions.room);
        outcome.result = literally
                             ? literal_copy(told)
                             : extract_file(told.md, told.info, order_for(told.path, told.flags, told.progress)).result;
        EXPECT_TRUE(disk.open_files.empty());
    }
    if (outcome.result < 0) {
        outcome.error = global_error;
        outcome.detail = global_error_info;
    }
    outcome.bytes = read_file(copy.path);
    outcome.calls = progress.calls;
    std::filesystem::remove(copy.path);
    return outcome;
}

void expect_same(const Copy &copy, const Conditions &conditions, const std::string &where)
{
    const Outcome engine = outcome_of(copy, conditions, false);
    const Outcome literal = outcome_of(copy, conditions, true);
    ASSERT_EQ(engine, literal) << where << ", type " << copy.info->type << ", size " << copy.info->size << ", flags "
                               << copy.flags << ", headers " << copy.md->use_file_headers << ", room "
                               << conditions.room << ", stop at " << conditions.stop_at << ", told " << conditions.told;
}

// Bytes that mean something to one kind or another, more often than by chance.
Bytes random_image(std::mt19937 *chance, uint16_t type, size_t size)
{
    const Bytes common = {0, 0, 0, 1, 2, 5, 'A', 'B'};
    Bytes alphabet = {10, 26, 60, 44, 28, 30, 13, 0x12};
    if (type == 1) alphabet = {0, 0, 3, 20, 'C', 'D'};
    if (type == 0xEA3E) alphabet = {13, 16, 33, 40, 'C'};
    if (type == 0xE010) alphabet = {0xDF, 0x6F, 0xCF, 0x7F, 0xFF, 0x90};
    if (type == 0xE052) alphabet = {9, 0x10, 0x20, 'C'};
    alphabet = joined({alphabet, common});
    Bytes image(size);
    for (uint8_t &byte : image)
        byte = (*chance)() % 16 == 0 ? static_cast<uint8_t>((*chance)()) : alphabet[(*chance)() % alphabet.size()];
    return image;
}

struct RandomFile {
    RandomFile(uint32_t seed, uint32_t most_records) : chance(seed)
    {
        const std::pair<uint32_t, uint16_t> types[] = {{3, 0xE0D0}, {3, 1},      {3, 0xEA3E}, {3, 0xE010},
                                                       {3, 0xE052}, {3, 0xE848}, {1, 0xA400}, {2, 0x0024}};
        const auto &[format, type] = types[below(8)];
        medium.emplace(random_image(&chance, type, below(most_records * 256) + 300));
        info = named("FILE");
        info.type = type;
        info.location = below(8);
        info.size = below(3) == 0 ? below(most_records) * 256 : below(most_records * 256);
        medium->md.format = format;
        medium->md.use_file_headers = below(4);
        if (type == 0xE052 && below(8) != 0) mark_as_hp75_text();
        flags = static_cast<uint16_t>(below(8) | 1);
    }

    uint32_t below(uint32_t limit)
    {
        return static_cast<uint32_t>(chance() % limit);
    }
    void mark_as_hp75_text()
    {
        Bytes image = medium->file.bytes();
        const size_t position = size_t{info.location} * 256 + 5;
        if (position < image.size()) image[position] = 'T';
        medium->file.replace(image);
    }
    Copy copy(const Scratch &host)
    {
        return {&medium->md, &info, host.path("out"), flags, nullptr};
    }

    std::mt19937 chance;
    std::optional<HandMedium> medium;
    FileInfo info;
    uint16_t flags;
};

}

TEST(ExtractLiteral, RandomFiles)
{
    const Scratch host;
    for (uint32_t seed = 1; seed <= 400; ++seed) {
        RandomFile file(seed, 12);
        Conditions conditions;
        conditions.told = file.below(4) != 0;
        if (file.below(3) == 0) conditions.stop_at = file.below(12);
        if (file.below(3) == 0) conditions.room = file.below(3000);
        ASSERT_NO_FATAL_FAILURE(expect_same(file.copy(host), conditions, "file " + std::to_string(seed)));
    }
}

TEST(ExtractLiteral, FilesLargerThanAnyBuffer)
{
    const Scratch host;
    for (uint32_t seed = 1; seed <= 4; ++seed) {
        RandomFile file(seed + 1000, 1400);
        file.info.size = (1100 + file.below(300)) * 256 - file.below(256);
        file.flags = seed % 2 != 0 ? 1 : 3;
        for (const bool told : {false, true}) {
            const Conditions conditions = {.told = told};
            ASSERT_NO_FATAL_FAILURE(expect_same(file.copy(host), conditions, "file " + std::to_string(seed)));
        }
    }
}

TEST(ExtractLiteral, TrimmedImages)
{
    const Scratch host;
    for (uint32_t seed = 1; seed <= 60; ++seed) {
        RandomFile file(seed + 2000, 6);
        const Bytes image = file.medium->file.bytes();
        for (const size_t size : {size_t{0}, size_t{1}, image.size() / 3, image.size() / 2, image.size() - 1}) {
            file.medium->file.replace(front_of(image, size));
            ASSERT_NO_FATAL_FAILURE(expect_same(file.copy(host), {}, "file " + std::to_string(seed)));
        }
    }
}

TEST(ExtractLiteral, StoppedAtEachRecord)
{
    const Scratch host;
    for (uint32_t seed = 1; seed <= 40; ++seed) {
        RandomFile file(seed + 3000, 9);
        for (uint32_t stop_at = 0; stop_at <= file.info.size / 256; ++stop_at) {
            const Conditions conditions = {.stop_at = stop_at};
            ASSERT_NO_FATAL_FAILURE(expect_same(file.copy(host), conditions, "file " + std::to_string(seed)));
        }
    }
}

TEST(ExtractLiteral, ADiskFullAtEachByte)
{
    const Scratch host;
    const std::pair<uint16_t, uint32_t> files[] = {{0xE0D0, 0}, {0xE0D0, 1}, {0xE0D0, 2}, {1, 0}, {0xE010, 0}};
    for (const auto &[type, headers] : files)
        for (const bool told : {false, true}) {
            std::mt19937 chance(type);
            HandMedium medium(random_image(&chance, type, 400));
            medium.md.format = FORMAT_LIF;
            medium.md.use_file_headers = headers;
            FileInfo info = named("FILE");
            info.type = type;
            info.location = 0;
            info.size = 300;
            const Copy copy = {&medium.md, &info, host.path("out"), 3, nullptr};
            const uint64_t header = headers == 0 ? 0 : headers == 1 ? 512 : 32;
            for (uint64_t room = 0; room <= header + 301; ++room) {
                const Conditions conditions = {.room = room, .told = told};
                ASSERT_NO_FATAL_FAILURE(expect_same(copy, conditions, "full"));
            }
        }
}
