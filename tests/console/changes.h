// What the tests of the verbs that change a medium share: the same three files on a LIF volume, a System 45 disk and a
// DC100 tape.
#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "tests/console/folder.h"
#include "tests/console/program.h"
#include "tests/support/stored_volume.h"
#include "tests/support/volume_builder.h"

namespace tests
{

using Names = std::vector<std::string>;

// ALPHA, BETA and GAMMA, of 3, 5 and 8 records of 256 bytes.
struct VolumeCase {
    const char *name;
    Layout layout;
    Bytes (*image)();
};
std::ostream &operator<<(std::ostream &stream, const VolumeCase &volume); // its name
extern const std::vector<VolumeCase> three_volumes;

Bytes lif_of_three();
Bytes disk_of_three(); // GAMMA isn't protected
Bytes disk_with_protected_gamma();
Bytes tape_of_three();

// "tarvo VERB VOLUME WORD..."; input is what the program reads.
Outcome change(const std::string &verb, const TemporaryFile &volume, const Names &words);
Outcome change_asked(const std::string &verb, const TemporaryFile &volume, const Names &words,
                     const std::string &input);

Names names_on(Layout layout, const TemporaryFile &volume); // and that its spare tables are like the main ones
StoredFile file_on(Layout layout, const TemporaryFile &volume, const std::string &name);
Bytes content_on(Layout layout, const TemporaryFile &volume, const std::string &name);

void expect_silent(const Outcome &outcome);
void expect_refused(const Outcome &outcome, const std::string &errors); // with 1, and nothing on standard output

}
