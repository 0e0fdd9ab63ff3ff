// Small blocks, cut from large pieces of memory and handed out again by their size: a directory takes tens of thousands
// of them. The pieces go when the last block has come back.
#pragma once

#include <array>
#include <cstddef>

constexpr size_t pieces_unit = 16;       // sizes are counted in it, blocks are aligned to it
constexpr size_t pieces_most_units = 16; // of one block

struct Pieces { // all zero: there are none
    struct Piece *latest;
    char *fresh; // what of the latest piece was never handed out
    char *fresh_end;
    std::array<void *, pieces_most_units + 1> given_back; // by their units; each begins with a pointer to the next
    size_t blocks_out;
};

void *pieces_take(Pieces *pieces, size_t units); // zeros, or null
void pieces_give_back(Pieces *pieces, void *block, size_t units);
void pieces_release(Pieces *pieces); // with the blocks that are still out
