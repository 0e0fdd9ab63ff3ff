// The list of the last targets.
#include "dialog/last_targets.h"

#include <algorithm>

#include "dialog/target_rules.h"

void put_in_front(LastTargets *targets, const std::string &target)
{
    targets->erase(std::remove(targets->begin(), targets->end(), target), targets->end());
    targets->insert(targets->begin(), target);
    if (targets->size() > last_targets_kept) targets->resize(last_targets_kept);
}

LastTargets unpack_targets(const std::string &packed)
{
    LastTargets targets;
    size_t start = 0;
    while (start < packed.size() && targets.size() < last_targets_kept) {
        const size_t end = std::min(packed.find('\0', start), packed.size());
        const std::string text = packed.substr(start, end - start);
        const bool known = std::find(targets.begin(), targets.end(), text) != targets.end();
        if (!text.empty() && text.size() < target_size && !known) targets.push_back(text);
        start = end + 1;
    }
    return targets;
}

std::string pack_targets(const LastTargets &targets)
{
    std::string packed;
    for (const std::string &target : targets) packed += target + '\0';
    return packed + '\0';
}
