// The private heap: the C library's blocks, each behind a link of a ring, so that all can be released at once.
#include <cerrno>
#include <cstdint>
#include <cstdlib>

#include <malloc.h>

#include "platform/platform.h"

namespace
{

struct Link {
    Link *next;
    Link *previous;
};

static_assert(sizeof(Link) == 16 && alignof(max_align_t) == 16); // so a block behind a link is aligned as it is

} // namespace

void *platform_heap_create(size_t initial_bytes)
{
#ifdef __GLIBC__
    mallopt(M_TOP_PAD, static_cast<int>(initial_bytes)); // grow in large steps: an entry at a time is a call each
#else
    static_cast<void>(initial_bytes);
#endif
    auto *ring = static_cast<Link *>(malloc(sizeof(Link)));
    if (ring != nullptr) *ring = {ring, ring};
    return ring;
}

void *platform_heap_allocate(void *heap, size_t bytes)
{
    if (bytes > SIZE_MAX - sizeof(Link)) {
        errno = ENOMEM;
        return nullptr;
    }
    auto *link = static_cast<Link *>(calloc(1, sizeof(Link) + bytes));
    if (link == nullptr) return nullptr;
    auto *ring = static_cast<Link *>(heap);
    *link = {ring->next, ring};
    ring->next->previous = link;
    ring->next = link;
    return link + 1;
}

void platform_heap_free(void *, void *block)
{
    Link *link = static_cast<Link *>(block) - 1;
    link->next->previous = link->previous;
    link->previous->next = link->next;
    free(link);
}

void platform_heap_destroy(void *heap)
{
    auto *ring = static_cast<Link *>(heap);
    for (Link *link = ring->next; link != ring;) {
        Link *next = link->next;
        free(link);
        link = next;
    }
    free(ring);
}
