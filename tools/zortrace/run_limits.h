// When follow and listen stop: Ctrl+C (or Ctrl+Break, or the console
// closing), a number of records printed, or a time limit.
#pragma once

#include <windows.h>

#include "trace_line.h"

class RunLimits {
public:
    RunLimits(long count, long seconds);

    // Waits up to `ms` milliseconds for a stop; false when the run is over.
    bool wait(DWORD ms);
    // Prints a record; false when it was the last one asked for.
    bool print(const Record& record);
    long printed() const { return printed_; }

private:
    long count_;
    long printed_ = 0;
    ULONGLONG deadline_;
};
