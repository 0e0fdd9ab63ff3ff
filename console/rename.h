// Another name for a file of a medium.
#pragma once

#include "console/change.h"
#include "console/medium.h"

// mv on one medium: items, of which one may be there, become `name`. Returns an ExitCode.
int rename_item(const Arguments &arguments, MediaDescriptor *md, std::vector<ChangeItem> items, const std::string &name,
                Tally tally);
