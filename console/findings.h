// What a check has found.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "console/json.h"
#include "volume/media.h"

enum class FindingKind : uint8_t {
    entry,   // of the directory, which can't be read
    end,     // a file reaches behind the end of the volume
    overlap, // two files, or a file and a table, in the same records
    name,    // borne by two files
    spare,   // a spare table that isn't like the main one
    space,   // free space that doesn't add up
    date,    // that is none
    october  // written as month 16
};

struct Finding {
    FindingKind kind;
    std::string text;
};

// A damaged volume has as many faults as it likes: the first ones are kept, the others only counted.
struct Findings {
    std::vector<Finding> faults;
    std::vector<Finding> notes; // what is no fault
    uint64_t more_faults = 0;
    uint64_t more_notes = 0;
};

void add_fault(Findings *findings, FindingKind kind, const char *format, ...) __attribute__((format(printf, 3, 4)));
void add_note(Findings *findings, FindingKind kind, const char *format, ...) __attribute__((format(printf, 3, 4)));

bool has_faults(const Findings &findings);
bool has_faults_of(const Findings &findings, FindingKind kind);
uint64_t count_faults(const Findings &findings);

void print_findings(const Findings &findings);                                 // a line for each
void write_findings(const Findings &findings, JsonObject *object, Json *json); // the last members of an object
