// The rows of calls are plain functions, so the object in force is kept here for them.
#include "tests/support/faults.h"

#include "base/log.h"

namespace tests
{

namespace
{

FileFaults *file_faults = nullptr;
HeapFaults *heap_faults = nullptr;

constexpr uint32_t refused = 5; // a code that every system has words for

bool counted(PlatformFile file)
{
    return file != logfile;
}

bool refuse()
{
    platform_set_last_error(refused);
    return false;
}

bool faulty_open(PlatformFile *ret_file, const char *path, bool reading, bool writing, OpenMode mode, bool writethrough)
{
    if (file_faults->strikes(FileFault::open, ++file_faults->opens)) return refuse();
    return platform_open(ret_file, path, reading, writing, mode, writethrough);
}

bool faulty_open_with_facts(PlatformFile *ret_file, const char *path, FileFacts *ret_facts)
{
    if (file_faults->strikes(FileFault::open, ++file_faults->opens)) return refuse();
    return platform_open_with_facts(ret_file, path, ret_facts);
}

int64_t faulty_seek(PlatformFile file, int64_t offset, SeekFrom from)
{
    if (counted(file) && file_faults->strikes(FileFault::seek, ++file_faults->seeks)) return refuse() ? 0 : -1;
    return platform_seek(file, offset, from);
}

void note(PlatformFile file, bool writing, uint32_t bytes)
{
    const int64_t position = platform_seek(file, 0, SeekFrom::current);
    file_faults->accesses.push_back({writing, static_cast<uint64_t>(position), bytes});
}

int64_t faulty_read(PlatformFile file, void *buffer, uint32_t bytes)
{
    if (!counted(file)) return platform_read(file, buffer, bytes);
    note(file, false, bytes);
    const uint32_t count = ++file_faults->reads;
    if (file_faults->strikes(FileFault::read, count)) return refuse() ? 0 : -1;
    const bool cut = file_faults->strikes(FileFault::short_read, count);
    const int64_t result = platform_read(file, buffer, cut ? bytes / 2 : bytes);
    if (result > 0) file_faults->bytes_read += static_cast<uint64_t>(result);
    return result;
}

int64_t faulty_write(PlatformFile file, const void *buffer, uint32_t bytes)
{
    if (!counted(file)) return platform_write(file, buffer, bytes);
    note(file, true, bytes);
    const uint32_t count = ++file_faults->writes;
    if (file_faults->strikes(FileFault::write, count)) return refuse() ? 0 : -1;
    const bool cut = file_faults->strikes(FileFault::short_write, count);
    return platform_write(file, buffer, cut ? bytes / 2 : bytes);
}

int64_t faulty_write_at(PlatformFile file, const void *buffer, uint32_t bytes, uint64_t position)
{
    if (!counted(file)) return platform_write_at(file, buffer, bytes, position);
    file_faults->accesses.push_back({true, position, bytes});
    const uint32_t count = ++file_faults->writes;
    if (file_faults->strikes(FileFault::write, count)) return refuse() ? 0 : -1;
    const bool cut = file_faults->strikes(FileFault::short_write, count);
    return platform_write_at(file, buffer, cut ? bytes / 2 : bytes, position);
}

bool faulty_set_end(PlatformFile file)
{
    return file_faults->strikes(FileFault::set_end, ++file_faults->ends) ? refuse() : platform_set_end(file);
}

bool faulty_size(PlatformFile file, uint64_t *ret_bytes)
{
    return file_faults->strikes(FileFault::size, ++file_faults->sizes) ? refuse() : platform_size(file, ret_bytes);
}

void *faulty_allocate(void *heap_handle, size_t bytes)
{
    if (++heap_faults->allocations == heap_faults->nth) {
        heap_faults->reached = true;
        return nullptr;
    }
    heap_faults->bytes += bytes;
    return platform_heap_allocate(heap_handle, bytes);
}

void counted_release(void *heap_handle, void *block)
{
    ++heap_faults->releases;
    platform_heap_free(heap_handle, block);
}

}

FileFaults::FileFaults(FileFault fault, uint32_t nth, bool onward)
    : fault_(fault), nth_(nth), onward_(onward), old_(file_calls)
{
    calls_.open = faulty_open;
    calls_.open_with_facts = faulty_open_with_facts;
    calls_.seek = faulty_seek;
    calls_.read = faulty_read;
    calls_.write = faulty_write;
    calls_.write_at = faulty_write_at;
    calls_.set_end = faulty_set_end;
    calls_.size = faulty_size;
    file_faults = this;
    file_calls = &calls_;
}

FileFaults::~FileFaults()
{
    file_calls = old_;
    file_faults = nullptr;
}

bool FileFaults::strikes(FileFault kind, uint32_t count)
{
    const bool struck = kind == fault_ && (count == nth_ || (onward_ && count > nth_));
    reached = reached || struck;
    return struck;
}

HeapFaults::HeapFaults(uint32_t nth_call) : nth(nth_call), old_(heap_calls)
{
    calls_.allocate = faulty_allocate;
    calls_.release = counted_release;
    heap_faults = this;
    heap_calls = &calls_;
}

HeapFaults::~HeapFaults()
{
    heap_calls = old_;
    heap_faults = nullptr;
}

}
