// Fields by hand, lists from the engine's heap, so that the engine may release them.
#include "tests/support/free_disc.h"

#include <cstdlib>

#include "base/memory.h"

namespace tests
{

std::unique_ptr<HandMedium> disc(uint32_t records)
{
    auto hand = std::make_unique<HandMedium>(Bytes(2000 * record_bytes));
    if (records > 2000) hand->file.extend(uint64_t{records} * record_bytes);
    MediaDescriptor &md = hand->md;
    md.format = FORMAT_DISK45;
    md.magic = 0x0500;
    md.size = records * record_bytes;
    md.sectors = 30;
    md.cylinders = records / 30;
    md.records = records;
    md.dir_start = 1;
    md.dir_size = 4;
    md.dir_entry_size = 16;
    md.alloc_start = table_start;
    md.alloc_size = 2;
    md.alloc_entry_size = 4;
    md.spare_dir_start = 7;
    md.spare_alloc_start = spare_table_start;
    md.file_area_start = first_file_record;
    md.data_size = (records - first_file_record) * record_bytes;
    md.free_bytes = md.data_size;
    return hand;
}

void add_run(MediaDescriptor &md, uint32_t location, uint32_t size)
{
    auto *entry = static_cast<AllocEntry *>(my_malloc(sizeof(AllocEntry)));
    if (entry == nullptr) std::abort();
    entry->location = location;
    entry->size = size;
    AllocEntry **end = &md.alloc_list;
    while (*end != nullptr) end = &(*end)->next;
    *end = entry;
}

std::unique_ptr<HandMedium> disc_with(const Runs &runs, uint32_t records)
{
    auto hand = disc(records);
    for (const auto &[location, size] : runs) add_run(hand->md, location, size);
    return hand;
}

Runs runs_of(const MediaDescriptor &md)
{
    Runs runs;
    for (const AllocEntry *entry = md.alloc_list; entry != nullptr; entry = entry->next)
        runs.emplace_back(entry->location, entry->size);
    return runs;
}

void add_file(MediaDescriptor &md, uint32_t location, uint32_t records, uint32_t deleted)
{
    auto *info = static_cast<FileInfo *>(my_malloc(sizeof(FileInfo)));
    if (info == nullptr) std::abort();
    *info = named("FILE");
    info->location = location;
    info->records = records;
    info->size = records * record_bytes;
    info->deleted = deleted;
    info->next = md.root;
    if (md.root != nullptr) md.root->prev = info;
    md.root = info;
}

std::unique_ptr<HandMedium> disc_with_table(const std::vector<uint16_t> &words)
{
    auto hand = disc();
    Bytes image(2000 * record_bytes);
    for (size_t i = 0; i < words.size(); ++i) set_word_at(image, table_start * record_bytes + 2 * i, words[i]);
    hand->file.replace(image);
    return hand;
}

}
