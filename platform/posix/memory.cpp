// The private heap: small blocks are cut from pieces, a larger one is the C library's, behind a link of a ring, so that
// all can be released at once.
#include <cerrno>
#include <cstdint>
#include <cstdlib>

#include "platform/platform.h"
#include "platform/posix/pieces.h"

namespace
{

// What watches the memory sees a block of the C library's after its release too, one from a piece it doesn't.
#ifdef __has_feature
constexpr bool is_watched = __has_feature(address_sanitizer);
#elif defined(__SANITIZE_ADDRESS__)
constexpr bool is_watched = true;
#else
constexpr bool is_watched = false;
#endif

struct Link {
    Link *next;
    Link *previous;
};

struct Heap {
    Link ring; // of the larger blocks
    Pieces pieces;
};

struct Mark {     // in front of each block
    size_t units; // of a small one, with its mark; 0 for a larger one, whose link stands in front of this
    size_t unused;
};

static_assert(sizeof(Link) == 16 && sizeof(Mark) == 16 && alignof(max_align_t) == 16); // so that blocks are aligned

void *allocate_small(Heap *heap, size_t units)
{
    auto *mark = static_cast<Mark *>(pieces_take(&heap->pieces, units));
    if (mark == nullptr) return nullptr;
    mark->units = units;
    return mark + 1;
}

void *allocate_large(Heap *heap, size_t bytes)
{
    constexpr size_t ahead = sizeof(Link) + sizeof(Mark);
    if (bytes > SIZE_MAX - ahead) {
        errno = ENOMEM;
        return nullptr;
    }
    auto *link = static_cast<Link *>(calloc(1, ahead + bytes));
    if (link == nullptr) return nullptr;
    *link = {heap->ring.next, &heap->ring};
    heap->ring.next->previous = link;
    heap->ring.next = link;
    return reinterpret_cast<Mark *>(link + 1) + 1;
}

void free_large(Link *link)
{
    link->next->previous = link->previous;
    link->previous->next = link->next;
    free(link);
}

} // namespace

void *platform_heap_create(size_t)
{
    auto *heap = static_cast<Heap *>(calloc(1, sizeof(Heap)));
    if (heap != nullptr) heap->ring = {&heap->ring, &heap->ring};
    return heap;
}

void *platform_heap_allocate(void *heap, size_t bytes)
{
    constexpr size_t most = is_watched ? 0 : pieces_most_units * pieces_unit - sizeof(Mark);
    if (bytes == 0 || bytes > most) return allocate_large(static_cast<Heap *>(heap), bytes);
    return allocate_small(static_cast<Heap *>(heap), 1 + (bytes + pieces_unit - 1) / pieces_unit);
}

void platform_heap_free(void *heap, void *block)
{
    Mark *mark = static_cast<Mark *>(block) - 1;
    if (mark->units == 0) {
        free_large(reinterpret_cast<Link *>(mark) - 1);
    } else {
        pieces_give_back(&static_cast<Heap *>(heap)->pieces, mark, mark->units);
    }
}

void platform_heap_destroy(void *heap)
{
    auto *mine = static_cast<Heap *>(heap);
    for (Link *link = mine->ring.next; link != &mine->ring;) {
        Link *next = link->next;
        free(link);
        link = next;
    }
    pieces_release(&mine->pieces);
    free(mine);
}
