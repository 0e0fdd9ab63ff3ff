// What the program hands back to its caller.
#pragma once

enum ExitCode : int {
    exit_done = 0,
    exit_failed = 1,
    exit_partly = 2, // something was done, something was left out
    exit_faults = 3, // a check has found faults
    exit_usage = 64
};
