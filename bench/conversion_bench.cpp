// What turning LIF ASCII records into text costs against moving the same bytes: all in memory, from a buffer that holds
// the whole content into one that holds the whole result.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "tests/support/volume_builder.h"
#include "volume/content/content.h"
#include "volume/content/sink.h"

namespace
{

constexpr size_t characters = 30'000'000;

// Whole records of the medium, as they come from it.
std::vector<uint8_t> content_of_records()
{
    std::vector<uint8_t> content = tests::lif_ascii(tests::mixed_lines(characters));
    content.resize((content.size() + RECORD_SIZE - 1) / RECORD_SIZE * RECORD_SIZE);
    return content;
}

const std::vector<uint8_t> &content()
{
    static const std::vector<uint8_t> bytes = content_of_records();
    return bytes;
}

// The text is never larger than the records, whose lengths take as many bytes as the line ends.
std::vector<uint8_t> &target()
{
    static std::vector<uint8_t> bytes(content().size(), 1);
    return bytes;
}

bool refuse(void *, const uint8_t *, uint32_t)
{
    return false;
}

void count_bytes(benchmark::State &state)
{
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(content().size()));
}

void ascii_to_text(benchmark::State &state)
{
    for ([[maybe_unused]] auto round : state) {
        Sink sink;
        sink.hand_over = refuse;
        sink.buffer = target().data();
        sink.size = static_cast<uint32_t>(target().size());
        OutwardState outward;
        outward.sink = &sink;
        ContentStep step = ContentStep::more;
        for (size_t i = 0; step == ContentStep::more && i < content().size(); i += RECORD_SIZE) {
            step = ascii_records.outward(&outward, content().data() + i, RECORD_SIZE);
            outward.first_block = false;
        }
        if (step != ContentStep::end || sink.failed || sink.filled < characters)
            state.SkipWithError("not the whole text");
        benchmark::DoNotOptimize(target().data());
        benchmark::ClobberMemory();
    }
    count_bytes(state);
}

void plain_copy(benchmark::State &state)
{
    for ([[maybe_unused]] auto round : state) {
        memcpy(target().data(), content().data(), content().size());
        benchmark::DoNotOptimize(target().data());
        benchmark::ClobberMemory();
    }
    count_bytes(state);
}

BENCHMARK(ascii_to_text)->Unit(benchmark::kMillisecond);
BENCHMARK(plain_copy)->Unit(benchmark::kMillisecond);

}

BENCHMARK_MAIN();
