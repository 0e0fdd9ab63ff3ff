// The passes of the test of an image.
#pragma once

#include <cstdint>

#include "tape/percent.h"
#include "tape/simh.h"
#include "tape/view.h"

struct TapeCheck {
    TapeImage *tape;
    TapeView *view;
    uint64_t size = 0; // bytes of the file
    bool xml = false;
    uint32_t records = 0; // met by the forward pass
    uint32_t files = 1;   // the number of the one that the pass is in
    uint32_t largest = 0; // bytes of the largest record
};

// Each is false for what can't be an image; the reverse pass begins where the forward pass ended.
bool check_forward(TapeCheck *check);
bool check_reverse(TapeCheck *check);

// Decides between the layouts and sets format, blocksize, num_records and max_record. False: it was stopped.
//   blocksize  0: worked out from the file, where that can be done
bool check_slots(TapeCheck *check, uint32_t blocksize);
