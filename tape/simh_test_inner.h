// The passes of the test of an image, and what they learn beyond its result.
#pragma once

#include <cstdint>

#include "tape/percent.h"
#include "tape/simh.h"
#include "tape/view.h"

struct TapeSums { // what the forward pass met
    uint32_t records = 0;
    uint32_t marks = 0;
    uint32_t longest = 0; // bytes of the longest record
    uint64_t bytes = 0;   // of all records
};

struct TapeCheck {
    TapeImage *tape;
    TapeView *view;
    uint64_t size = 0; // bytes of the file
    bool xml = false;
    TapeSums sums = {};
    bool slots_are_plain = false; // false: not looked at; true: until a slot is met that isn't
};

struct TestOrder {
    uint32_t blocksize; // bytes of a slot; 0: worked out from the file
    bool both_ways;     // the first two passes too
    bool xml;
};

// simh_test_image, with what the forward pass met.
int32_t test_image(FileHandle fd, TapeImage *tape, const TestOrder &order, TapeSums *ret_sums);

// The first two passes alone, on a tape of their own: false for what can't be an image, with error 301 or 302 set where
// the file can't be read, and 101 where tape_progress stops it. The reverse pass is left out where it can't but
// succeed.
bool test_both_ways(FileHandle fd, TapeSums *ret_sums);

// The pass over slots alone. True where the image is an array of slots that each are plain: a mark or nothing, and then
// only gap, or a record with its length at both ends, and gap in whole words. The first two passes have nothing to find
// in such an image, so that they can be left out.
bool test_plain_slots(FileHandle fd, TapeImage *tape, uint32_t blocksize);

// Each is false for what can't be an image; the reverse pass begins where the forward pass ended.
bool check_forward(TapeCheck *check);
bool check_reverse(TapeCheck *check);

// Decides between the layouts and sets format, blocksize, num_records and max_record. False: it was stopped.
//   blocksize  0: worked out from the file, where that can be done
bool check_slots(TapeCheck *check, uint32_t blocksize);
