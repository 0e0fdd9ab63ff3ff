// The parts of a name that a user gives to a file of a volume.
#pragma once

#include <cstddef>
#include <string>

constexpr size_t longest_type_ending = 6; // of a type at the end of a name

// STEM, STEM.TYPE or STEM.&BYTES.TYPE, as the engine takes it apart.
struct NameParts {
    std::string stem;
    std::string record; // digits, empty for none
    std::string type;   // empty for none
};

NameParts take_apart(const std::string &name);
