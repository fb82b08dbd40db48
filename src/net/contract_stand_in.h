// Stands in for the store's contract macro until that lands.
#pragma once

#include <cstdio>
#include <cstdlib>

#define NET_CONTRACT(condition)                                                                                        \
    ((condition)                                                                                                       \
         ? static_cast<void>(0)                                                                                        \
         : (static_cast<void>(std::fprintf(stderr, "%s:%d: %s\n", __FILE__, __LINE__, #condition)), std::abort()))
