// What reading an image record by record costs against plain reads of the system in large blocks.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "base/attach.h"
#include "base/log.h"
#include "volume/access.h"
#include "volume/open.h"

namespace
{

constexpr uint32_t image_records = 128 * 1024 * 1024 / RECORD_SIZE;
constexpr size_t block_bytes = 64 * 1024;

std::string image_path;

[[noreturn]] void give_up(const char *what)
{
    perror(what);
    exit(1);
}

// Numbers without a pattern, so that no storage can save itself the work.
void fill(std::vector<uint64_t> &block, uint64_t &state)
{
    for (uint64_t &word : block) {
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
        word = state;
    }
}

void make_image()
{
    const char *folder = getenv("TMPDIR");
    image_path = std::string(folder != nullptr ? folder : "/tmp") + "/records_bench_XXXXXX";
    const int file = mkstemp(image_path.data());
    if (file < 0) give_up("image");
    std::vector<uint64_t> block(block_bytes / sizeof(uint64_t));
    uint64_t state = 88172645463325252U;
    for (size_t written = 0; written < size_t{image_records} * RECORD_SIZE; written += block_bytes) {
        fill(block, state);
        if (write(file, block.data(), block_bytes) != static_cast<ssize_t>(block_bytes)) give_up("image");
    }
    close(file);
}

void count_bytes(benchmark::State &state)
{
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * image_records * RECORD_SIZE);
}

void records_in_order(benchmark::State &state)
{
    MediaDescriptor *md = image_open(image_path.c_str(), nullptr, OPEN_READ_ONLY);
    if (md == nullptr) {
        state.SkipWithError("the image can't be opened");
        return;
    }
    std::array<uint8_t, RECORD_SIZE> buffer{};
    for ([[maybe_unused]] auto round : state) {
        for (uint32_t record = 0; record < image_records; record++) {
            if (read_record(md, record, buffer.data()) != 0) state.SkipWithError("a record can't be read");
            benchmark::DoNotOptimize(buffer);
        }
    }
    count_bytes(state);
    image_close(md);
}

void blocks_in_order(benchmark::State &state)
{
    const int file = open(image_path.c_str(), O_RDONLY | O_CLOEXEC);
    std::vector<uint8_t> buffer(block_bytes);
    for ([[maybe_unused]] auto round : state) {
        lseek(file, 0, SEEK_SET);
        while (read(file, buffer.data(), block_bytes) > 0) benchmark::DoNotOptimize(buffer.data());
    }
    count_bytes(state);
    close(file);
}

void seek_and_read_each_record(benchmark::State &state)
{
    const int file = open(image_path.c_str(), O_RDONLY | O_CLOEXEC);
    std::array<uint8_t, RECORD_SIZE> buffer{};
    for ([[maybe_unused]] auto round : state) {
        for (off_t record = 0; record < off_t{image_records}; record++) {
            lseek(file, record * RECORD_SIZE, SEEK_SET);
            if (read(file, buffer.data(), RECORD_SIZE) < 0) state.SkipWithError("a record can't be read");
            benchmark::DoNotOptimize(buffer);
        }
    }
    count_bytes(state);
    close(file);
}

BENCHMARK(records_in_order)->Unit(benchmark::kMillisecond);
BENCHMARK(blocks_in_order)->Unit(benchmark::kMillisecond);
BENCHMARK(seek_and_read_each_record)->Unit(benchmark::kMillisecond);

}

int main(int argc, char **argv)
{
    if (library_attach() != 0) return 1;
    logfile = file_void();
    make_image();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    unlink(image_path.c_str());
    library_detach();
    return 0;
}
