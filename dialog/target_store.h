// Where the last targets are kept: in the user's own part of the registry, HKEY_CURRENT_USER\Software\Tarvo, as the
// value LastTargets (REG_MULTI_SZ).
#pragma once

#include "dialog/last_targets.h"

constexpr const char *target_store_key = "Software\\Tarvo";
constexpr const char *target_store_value = "LastTargets";

LastTargets load_targets(); // empty when nothing usable is kept
bool save_targets(const LastTargets &targets);
