// What a measurement has cost in memory.
#pragma once

#include <fstream>

#include <malloc.h>
#include <unistd.h>

// Bytes of physical memory in use, without what is free for the next allocation.
inline double ResidentBytes() {
    malloc_trim(0);
    double l_size = 0;
    double l_resident = 0;
    std::ifstream("/proc/self/statm") >> l_size >> l_resident;
    return l_resident * static_cast<double>(sysconf(_SC_PAGESIZE));
}
