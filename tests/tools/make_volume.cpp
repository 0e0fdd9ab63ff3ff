// Writes the volumes of tests and trials into a file:
//   make_volume demo FILE
//   make_volume files N FILE
#include <charconv>
#include <cstdint>
#include <exception>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "tests/support/volume_builder.h"

namespace
{

constexpr uint32_t most_files = 1000000; // what the six digits of the names tell apart

int usage()
{
    std::cerr << "Usage: make_volume demo FILE\n       make_volume files N FILE\n";
    return 2;
}

int make(const std::vector<std::string> &words)
{
    if (words.size() == 2 && words[0] == "demo") {
        tests::write_file(words[1], tests::lif_image(tests::demo_volume()));
        return 0;
    }
    if (words.size() != 3 || words[0] != "files") return usage();
    uint32_t count = 0;
    const std::string &number = words[1];
    const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), count);
    if (error != std::errc{} || end != number.data() + number.size() || count > most_files) return usage();
    tests::write_file(words[2], tests::lif_image(tests::lif_volume_with_files(count)));
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
