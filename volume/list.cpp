// Linked lists of entries and of free runs: built at the tail and sorted once, so that no number of entries costs more
// than n log n steps.
#include "volume/list.h"

#include <cstddef>

namespace
{
// Merge sort from the bottom up over any node with `location` and `next`; stable, no recursion, no memory.
template <typename Node> Node *sort_by_location(Node *head)
{
    for (size_t width = 1;; width *= 2) {
        Node *rest = head;
        Node **link = &head;
        size_t merges = 0;
        while (rest != nullptr) {
            merges++;
            Node *left = rest;
            size_t left_count = 0;
            while (left_count < width && rest != nullptr) {
                left_count++;
                rest = rest->next;
            }
            size_t right_count = width;
            while (left_count > 0 || (right_count > 0 && rest != nullptr)) {
                bool right_next =
                    left_count == 0 || (right_count > 0 && rest != nullptr && rest->location < left->location);
                Node *&taken = right_next ? rest : left;
                size_t &count = right_next ? right_count : left_count;
                *link = taken;
                link = &taken->next;
                taken = taken->next;
                count--;
            }
        }
        *link = nullptr;
        if (merges <= 1) return head;
    }
}
}

void append_to_list(FileList *list, FileInfo *info)
{
    info->next = nullptr;
    info->prev = list->tail;
    if (list->tail == nullptr) {
        list->head = info;
    } else {
        list->tail->next = info;
    }
    list->tail = info;
}

void sort_list(FileList *list)
{
    list->head = sort_by_location(list->head);
    list->tail = nullptr;
    for (FileInfo *info = list->head; info != nullptr; info = info->next) {
        info->prev = list->tail;
        list->tail = info;
    }
}

AllocEntry *sort_runs(AllocEntry *head)
{
    return sort_by_location(head);
}
