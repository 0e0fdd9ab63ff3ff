// The list of the last targets, newest first, and the form in which it is kept: texts one behind the other, each with
// its NUL, and one more NUL at the end.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

constexpr size_t last_targets_kept = 10;

using LastTargets = std::vector<std::string>;

// Puts a target in front; it stands only once, and the oldest go.
void put_in_front(LastTargets *targets, const std::string &target);

// The list that a kept form holds. The form may be anything: ends that are missing, texts that are no targets and
// texts beyond the tenth are passed over.
LastTargets unpack_targets(const std::string &packed);

std::string pack_targets(const LastTargets &targets);
