// The row of the Structured Directory Format.
#pragma once

#include "volume/format.h"

extern const VolumeFormat sdf_format;
