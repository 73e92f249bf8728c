#pragma once

// Exit statuses of ondrels-synth, the same for every mode.
enum ExitStatus : int
{
    ExitSuccess = 0,
    ExitFailure = 1, // an input could not be read, or nothing was written
    ExitUsage = 2    // the command line is wrong
};
