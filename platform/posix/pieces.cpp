// Small blocks, cut from large pieces of memory.
#include "platform/posix/pieces.h"

#include <cstring>

#include <sys/mman.h>

struct Piece {
    Piece *earlier;
    size_t size;
};

namespace
{

constexpr size_t first_piece_size = 0x40000;
constexpr size_t further_piece_size = 0x100000;
static_assert(sizeof(Piece) == pieces_unit && alignof(max_align_t) == pieces_unit); // so all blocks are aligned

// The pages of a first piece come as they are used, since most media need few of them. Those of a further piece come at
// once: one by one they cost twice as much.
bool add_piece(Pieces *pieces)
{
    const bool first = pieces->latest == nullptr;
    const size_t size = first ? first_piece_size : further_piece_size;
    const int flags = MAP_PRIVATE | MAP_ANONYMOUS | (first ? 0 : MAP_POPULATE);
    void *memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, flags, -1, 0);
    if (memory == MAP_FAILED) return false;
    auto *piece = static_cast<Piece *>(memory);
    *piece = {pieces->latest, size};
    pieces->latest = piece;
    pieces->fresh = reinterpret_cast<char *>(piece + 1);
    pieces->fresh_end = reinterpret_cast<char *>(piece) + size;
    return true;
}

} // namespace

void *pieces_take(Pieces *pieces, size_t units)
{
    const size_t bytes = units * pieces_unit;
    void *block = pieces->given_back[units];
    if (block != nullptr) {
        memcpy(&pieces->given_back[units], block, sizeof(void *));
        memset(block, 0, bytes);
    } else {
        if (static_cast<size_t>(pieces->fresh_end - pieces->fresh) < bytes && !add_piece(pieces)) return nullptr;
        block = pieces->fresh;
        pieces->fresh += bytes;
    }
    ++pieces->blocks_out;
    return block;
}

void pieces_give_back(Pieces *pieces, void *block, size_t units)
{
    memcpy(block, &pieces->given_back[units], sizeof(void *));
    pieces->given_back[units] = block;
    if (--pieces->blocks_out == 0) pieces_release(pieces);
}

void pieces_release(Pieces *pieces)
{
    while (pieces->latest != nullptr) {
        Piece *piece = pieces->latest;
        pieces->latest = piece->earlier;
        munmap(piece, piece->size);
    }
    *pieces = {};
}
