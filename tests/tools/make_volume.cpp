// Writes the volumes of tests, trials and measurements into a file; `make_volume` alone lists them.
#include <algorithm>
#include <charconv>
#include <cstdint>
#include <exception>
#include <iostream>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/sdf_builder.h"
#include "tests/support/volume_builder.h"

namespace
{

constexpr uint32_t most_files = 1000000;     // what the six digits of the names tell apart
constexpr uint32_t most_bytes = 2000000000U; // of a file, for records and sizes to stay in 32 bits
constexpr uint32_t most_records = most_bytes / tests::record_bytes;
constexpr uint16_t ascii_type = 0x0001;
constexpr uint16_t raw_type = 0xE020; // content that nothing converts

using Numbers = std::span<const uint32_t>;

struct NumberRow {
    const char *name; // in the usage
    uint32_t most;
};

struct VolumeRow {
    const char *name;
    const char *help;
    tests::Bytes (*make)(Numbers numbers);
    std::vector<NumberRow> numbers;
};

tests::Bytes bytes_without_pattern(uint32_t count)
{
    std::minstd_rand numbers;
    tests::Bytes bytes(count);
    std::generate(bytes.begin(), bytes.end(), [&numbers] { return static_cast<uint8_t>(numbers() >> 8); });
    return bytes;
}

const std::vector<VolumeRow> &volume_rows()
{
    static const std::vector<VolumeRow> rows = {
        {
            .name = "demo",
            .help = "files of several types and dates",
            .make = [](Numbers) { return tests::lif_image(tests::demo_volume()); },
            .numbers = {},
        },
        {
            .name = "files",
            .help = "N files of a few bytes",
            .make = [](Numbers numbers) { return tests::lif_image(tests::lif_volume_with_files(numbers[0])); },
            .numbers = {{"N", most_files}},
        },
        {
            .name = "texts",
            .help = "N LIF ASCII files of up to 2,000 characters",
            .make = [](Numbers numbers) { return tests::lif_image(tests::lif_volume_with_texts(numbers[0])); },
            .numbers = {{"N", most_files}},
        },
        {
            .name = "text",
            .help = "one LIF ASCII file, TEXT, with this many characters in lines of mixed lengths",
            .make =
                [](Numbers numbers) {
                    return tests::lif_image(
                        tests::lif_volume_with({.name = "TEXT",
                                                .type = ascii_type,
                                                .content = tests::lif_ascii(tests::mixed_lines(numbers[0]))}));
                },
            .numbers = {{"CHARACTERS", most_bytes}},
        },
        {
            .name = "raw",
            .help = "one file, RAW, of bytes without a pattern",
            .make =
                [](Numbers numbers) {
                    return tests::lif_image(tests::lif_volume_with(
                        {.name = "RAW", .type = raw_type, .content = bytes_without_pattern(numbers[0])}));
                },
            .numbers = {{"BYTES", most_bytes}},
        },
        {
            .name = "empty",
            .help = "no file, but records in all and slots for entries",
            .make = [](Numbers numbers) { return tests::lif_image(tests::empty_lif_volume(numbers[0], numbers[1])); },
            .numbers = {{"RECORDS", most_records}, {"SLOTS", most_files}},
        },
        {
            .name = "sdf",
            .help = "N files of a record each, in directories of a hundred, on an SDF volume",
            .make = [](Numbers numbers) { return tests::sdf_image(tests::sdf_volume_with_folders(numbers[0])).bytes; },
            .numbers = {{"N", most_files}},
        },
        {
            .name = "tree",
            .help = "directories five levels deep on an SDF volume",
            .make = [](Numbers) { return tests::sdf_image(tests::five_levels()).bytes; },
            .numbers = {},
        },
    };
    return rows;
}

int usage()
{
    for (const VolumeRow &row : volume_rows()) {
        std::cerr << "make_volume " << row.name;
        for (const NumberRow &number : row.numbers) std::cerr << ' ' << number.name;
        std::cerr << " FILE: " << row.help << '\n';
    }
    return 2;
}

bool take_number(const std::string &word, const NumberRow &row, std::vector<uint32_t> *numbers)
{
    uint32_t value = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), value);
    if (error != std::errc{} || end != word.data() + word.size() || value > row.most) return false;
    numbers->push_back(value);
    return true;
}

int make(const std::vector<std::string> &words)
{
    const auto &rows = volume_rows();
    const auto row = std::find_if(rows.begin(), rows.end(), [&words](const VolumeRow &candidate) {
        return !words.empty() && words[0] == candidate.name && words.size() == candidate.numbers.size() + 2;
    });
    if (row == rows.end()) return usage();
    std::vector<uint32_t> numbers;
    for (size_t i = 0; i < row->numbers.size(); i++) {
        if (!take_number(words[i + 1], row->numbers[i], &numbers)) return usage();
    }
    tests::write_file(words.back(), row->make(numbers));
    return 0;
}

}

int main(int argc, char **argv)
{
    try {
        return make(std::vector<std::string>(argv + 1, argv + argc));
    } catch (const std::exception &failure) {
        std::cerr << "make_volume: " << failure.what() << '\n';
        return 1;
    }
}
