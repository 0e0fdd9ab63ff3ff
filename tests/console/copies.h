// What the tests of get and put share: sources with a known date, runs, and volumes to compare with.
#pragma once

#include <string>
#include <vector>

#include "tests/console/folder.h"
#include "tests/console/program.h"
#include "tests/support/volume_builder.h"

namespace tests
{

using Names = std::vector<std::string>;

constexpr BcdDate source_date = {0x87, 0x03, 0x09, 0x08, 0x07, 0x06}; // of the files in Sources

struct Sources {
    TemporaryFolder folder;

    // Makes a file and returns its path.
    std::string add(const std::string &name, const Bytes &content) const;
    std::string add(const std::string &name, const std::string &text = "some text\n") const;
};

LifVolume volume_of(const std::vector<LifEntry> &entries);
LifVolume one_file(); // FIRST

Outcome put(const TemporaryFile &volume, const Names &words); // "put VOLUME WORD..."
void expect_good(const Outcome &outcome);                     // with nothing said
void expect_usage_error(const Names &words, const std::string &text);

// The image of a volume with an entry more.
Bytes image_with(LifVolume contents, const LifEntry &added);

// The visible names on a volume, with a blank between them.
std::string listed(const TemporaryFile &volume);

}
