// What the host has under a path; for the rules of targets.
#pragma once

#include "dialog/target_rules.h"

PathState path_state(const char *path);
