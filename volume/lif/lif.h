// The row of the Logical Interchange Format.
#pragma once

#include "volume/format.h"

extern const VolumeFormat lif_format;
