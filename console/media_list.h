// The table of media, printed.
#pragma once

int print_media_list(bool as_json); // an ExitCode
