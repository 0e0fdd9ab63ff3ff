// The layouts stand here apart from the builders' and from the engine's own, so that no mistake is shared.
#include "tests/support/stored_volume.h"

#include <algorithm>
#include <cstddef>

namespace tests
{

namespace
{

std::string text_at(const Bytes &image, size_t position, size_t length, char padding)
{
    const auto from = image.begin() + static_cast<std::ptrdiff_t>(position);
    std::string text(from, from + static_cast<std::ptrdiff_t>(length));
    while (!text.empty() && text.back() == padding) text.pop_back();
    return text;
}

uint32_t whole_records(uint32_t count, uint32_t words)
{
    return (count * words * 2 + record_bytes - 1) / record_bytes;
}

Bytes cut_out(const Bytes &image, size_t first_record, size_t records)
{
    const auto from = image.begin() + static_cast<std::ptrdiff_t>(first_record * record_bytes);
    return Bytes(from, from + static_cast<std::ptrdiff_t>(records * record_bytes));
}

StoredFile lif_file(const Bytes &image, size_t slot)
{
    StoredFile file = {.name = text_at(image, slot, 10, ' '),
                       .type = word_at(image, slot + 10),
                       .start = dword_at(image, slot + 12),
                       .records = dword_at(image, slot + 16)};
    file.count = file.records;
    file.words = 128;
    file.purged = file.type == 0;
    const auto from = image.begin() + static_cast<std::ptrdiff_t>(slot + 20);
    file.rest.assign(from, from + 12);
    return file;
}

StoredFile disk_file(const Bytes &image, size_t slot)
{
    const uint16_t word = word_at(image, slot + 12);
    StoredFile file = {.name = text_at(image, slot, 6, '\0'),
                       .type = static_cast<uint16_t>(word & 0xFF80),
                       .start = word_at(image, slot + 6) + (word & 0x7FU) * 0x10000U,
                       .count = word_at(image, slot + 8),
                       .words = word > 0x1FFF ? word_at(image, slot + 10) : 128U};
    file.records = whole_records(file.count, file.words);
    file.purged = image[slot] == 0;
    file.is_protected = image[slot + 15] == 'p';
    return file;
}

StoredFile tape_file(const Bytes &image, size_t slot)
{
    StoredFile file = {.name = text_at(image, slot, 6, '\0'),
                       .type = static_cast<uint16_t>(image[slot + 6] & 0xFC),
                       .start = image[slot + 7] + (image[slot + 6] & 3U) * 256U,
                       .count = word_at(image, slot + 8),
                       .words = word_at(image, slot + 10)};
    file.records = whole_records(file.count, file.words);
    file.purged = image[slot] == 0;
    return file;
}

Runs runs_at(const Bytes &image, size_t position, size_t bytes, bool long_runs)
{
    Runs runs;
    const size_t entry = long_runs ? 8 : 4;
    for (size_t slot = position; slot < position + bytes; slot += entry) {
        if (word_at(image, slot) == 0xFFFF) break;
        const uint32_t location = long_runs ? dword_at(image, slot) : word_at(image, slot);
        const uint32_t size = long_runs ? dword_at(image, slot + 4) : word_at(image, slot + 2);
        if (location != 0 || size != 0) runs.emplace_back(location, size);
    }
    return runs;
}

}

uint16_t word_at(const Bytes &image, size_t position)
{
    return static_cast<uint16_t>(image.at(position) << 8 | image.at(position + 1));
}

uint32_t dword_at(const Bytes &image, size_t position)
{
    return uint32_t{word_at(image, position)} << 16 | word_at(image, position + 2);
}

StoredVolume stored_lif(const Bytes &image)
{
    const uint32_t start = dword_at(image, 8);
    const uint32_t length = dword_at(image, 16);
    StoredVolume volume;
    volume.slots = length * 8;
    volume.first_file_record = start + length;
    volume.end = dword_at(image, 24) * dword_at(image, 28) * dword_at(image, 32);
    if (volume.end == 0) volume.end = static_cast<uint32_t>((image.size() + record_bytes - 1) / record_bytes);
    for (uint32_t i = 0; i < volume.slots; ++i) {
        const size_t slot = size_t{start} * record_bytes + size_t{i} * 32;
        if (word_at(image, slot + 10) == 0xFFFF) break;
        volume.files.push_back(lif_file(image, slot));
    }
    return volume;
}

StoredVolume stored_disk(const Bytes &image)
{
    const uint32_t sectors = word_at(image, 2);
    const uint32_t start = word_at(image, 8);
    const uint32_t table = word_at(image, 10);
    const uint32_t behind = word_at(image, 12);
    const uint32_t spare = word_at(image, 6) * sectors + start;
    StoredVolume volume;
    volume.slots = (table - start) * 16;
    volume.first_file_record = word_at(image, 14) * sectors;
    volume.end = volume.first_file_record + word_at(image, 16) * sectors;
    for (uint32_t i = 0; i < volume.slots; ++i) {
        const size_t slot = size_t{start} * record_bytes + size_t{i} * 16;
        if (word_at(image, slot) == 0) break;
        volume.files.push_back(disk_file(image, slot));
    }
    const bool long_runs = (image.at(27) & 1) != 0;
    volume.runs = runs_at(image, size_t{table} * record_bytes, size_t{behind - table} * record_bytes, long_runs);
    volume.spares_agree = cut_out(image, start, behind - start) == cut_out(image, spare, behind - start);
    return volume;
}

StoredVolume stored_tape(const Bytes &image)
{
    StoredVolume volume = {.slots = 42, .first_file_record = 5, .end = 852};
    for (uint32_t i = 0; i < volume.slots; ++i) {
        const size_t slot = i < 21 ? record_bytes + 4 + size_t{i} * 12 : 2 * record_bytes + size_t{i - 21} * 12;
        if (word_at(image, slot) == 0xFFFF) break;
        volume.files.push_back(tape_file(image, slot));
    }
    volume.spares_agree = cut_out(image, 1, 2) == cut_out(image, 3, 2);
    return volume;
}

StoredVolume stored(Layout layout, const Bytes &image)
{
    switch (layout) {
    case Layout::lif: return stored_lif(image);
    case Layout::disk: return stored_disk(image);
    case Layout::tape: return stored_tape(image);
    }
    return {};
}

Bytes content_of(const Bytes &image, const StoredFile &file)
{
    const size_t from = std::min(image.size(), size_t{file.start} * record_bytes);
    const size_t to = std::min(image.size(), from + size_t{file.records} * record_bytes);
    Bytes content(image.begin() + static_cast<std::ptrdiff_t>(from), image.begin() + static_cast<std::ptrdiff_t>(to));
    content.resize(size_t{file.records} * record_bytes);
    return content;
}

const StoredFile *file_named(const StoredVolume &volume, const std::string &name)
{
    const auto found = std::find_if(volume.files.begin(), volume.files.end(),
                                    [&name](const StoredFile &file) { return file.name == name; });
    return found == volume.files.end() ? nullptr : &*found;
}

std::vector<std::string> names_of(const StoredVolume &volume)
{
    std::vector<std::string> names;
    for (const StoredFile &file : volume.files) {
        if (!file.purged) names.push_back(file.name);
    }
    return names;
}

}
