// The rows of the System 45 family: disk (with the 9825 form) and DC100 tape.
#pragma once

#include "volume/format.h"

extern const VolumeFormat disk45_format;
extern const VolumeFormat tape45_format;
