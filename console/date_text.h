// Dates as users write and read them.
#pragma once

#include <string>

#include "base/time_record.h"

// "YYYY-MM-DD", or with "Thh:mm" or "Thh:mm:ss" behind it; a blank may take the place of the T. The years are those
// that a LIF volume can tell, 1946 to 2045. False for what is no such date.
bool read_date(const std::string &text, TimeRecord *ret_date);

std::string date_text(const TimeRecord &date); // "YYYY-MM-DD hh:mm:ss", "none" for no date

// A date as it is read again from a LIF volume, where an October has a month of its own.
TimeRecord date_as_stored(TimeRecord date);
