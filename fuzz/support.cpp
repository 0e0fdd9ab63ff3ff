// What the fuzz targets share.
#include "fuzz/support.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>

#include "base/attach.h"
#include "base/file_inner.h"
#include "base/log.h"
#include "base/memory_inner.h"
#include "base/output.h"

namespace fuzz
{

uint64_t live_blocks = 0;
uint64_t allocations_left = UINT64_MAX;
WriteRules rules;

namespace
{

void *counting_allocate(void *from, size_t bytes)
{
    if (allocations_left != UINT64_MAX && allocations_left-- == 0) return nullptr;
    void *block = platform_heap_allocate(from, bytes);
    if (block != nullptr) live_blocks++;
    return block;
}

void counting_release(void *from, void *block)
{
    if (block != nullptr) live_blocks--;
    platform_heap_free(from, block);
}

constexpr HeapCalls counting_heap = {counting_allocate, counting_release};

int64_t failing_read(PlatformFile file, void *buffer, uint32_t bytes)
{
    if (rules.reads != UINT64_MAX && rules.reads-- == 0) return -1;
    return platform_read(file, buffer, bytes);
}

// How many of the bytes may be written; false when the write is one that fails.
bool admit(PlatformFile file, uint32_t *bytes)
{
    if (rules.left != UINT64_MAX && rules.left-- == 0) return false;
    if (file == rules.watched) *bytes = static_cast<uint32_t>(std::min<uint64_t>(*bytes, rules.room));
    return true;
}

int64_t counted(PlatformFile file, int64_t written)
{
    if (file == rules.watched && written > 0) {
        rules.room -= static_cast<uint64_t>(written);
        rules.bytes += static_cast<uint64_t>(written);
    }
    return written;
}

int64_t counting_write(PlatformFile file, const void *buffer, uint32_t bytes)
{
    if (!admit(file, &bytes)) return -1;
    return counted(file, bytes == 0 ? 0 : platform_write(file, buffer, bytes));
}

int64_t counting_write_at(PlatformFile file, const void *buffer, uint32_t bytes, uint64_t position)
{
    if (!admit(file, &bytes)) return -1;
    return counted(file, bytes == 0 ? 0 : platform_write_at(file, buffer, bytes, position));
}

constexpr FileCalls counting_files = {.read = failing_read, .write = counting_write, .write_at = counting_write_at};

}

void demand(bool holds)
{
    if (!holds) abort();
}

uint8_t Input::take_byte()
{
    const auto byte = take_bytes(1);
    return byte.empty() ? uint8_t{0} : byte[0];
}

uint16_t Input::take_word()
{
    const uint8_t high = take_byte();
    return static_cast<uint16_t>(high << 8 | take_byte());
}

std::span<const uint8_t> Input::take_bytes(size_t most)
{
    const auto taken = left_.first(std::min(most, left_.size()));
    left_ = left_.subspan(taken.size());
    return taken;
}

int prepare()
{
    if (library_attach() != 0) return 1;
    heap_calls = &counting_heap;
    file_calls = &counting_files;
    logfile = file_void();
    output_to(file_void());
    return 0;
}

MemoryFile::MemoryFile(const char *name) : descriptor_(memfd_create(name, MFD_CLOEXEC))
{
    demand(descriptor_ >= 0);
}

void MemoryFile::store(std::span<const uint8_t> bytes) const
{
    demand(ftruncate(descriptor_, 0) == 0);
    demand(pwrite(descriptor_, bytes.data(), bytes.size(), 0) == static_cast<ssize_t>(bytes.size()));
    demand(lseek(descriptor_, 0, SEEK_SET) == 0);
}

Bytes MemoryFile::bytes() const
{
    const off_t size = lseek(descriptor_, 0, SEEK_END);
    Bytes bytes(static_cast<size_t>(size));
    demand(pread(descriptor_, bytes.data(), bytes.size(), 0) == size);
    return bytes;
}

FileHandle MemoryFile::handle() const
{
    return static_cast<FileHandle>(descriptor_) + 1;
}

std::string MemoryFile::path() const
{
    return "/proc/self/fd/" + std::to_string(descriptor_);
}

}
