// The arithmetic of the upload limit: a running average since the start of a window, without a clock of its own.
#pragma once

#include <chrono>

// How long to pause before the next block, or zero. i_limit is in KiB per second, 0 for none; i_bytes went out in the
// i_elapsed since the window began. The average may run ahead by 1000 bytes, and pauses below 100 ms are not taken.
// After a stall there is no pause until the average has caught up.
std::chrono::milliseconds PauseBeforeBlock(int i_limit, std::chrono::milliseconds i_elapsed, long long i_bytes);

// Bytes per second, at most what an int holds; 0 while no millisecond has passed.
int AverageRate(long long i_bytes, std::chrono::milliseconds i_elapsed);
