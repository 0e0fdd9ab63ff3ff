// What the library does with the log when it is left.
#pragma once

// Closes the log file if one is set and forgets it, an unfinished line and the reference of the times.
void log_close();
