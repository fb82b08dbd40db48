#include "store/contract.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

void ContractFault(const char* ip_file, int i_line, const char* ip_function, const char* ip_condition) {
    const char* lp_slash = std::strrchr(ip_file, '/');
    std::fprintf(stderr, "%s:%d: %s: Assertion `%s' failed.\n", lp_slash != nullptr ? lp_slash + 1 : ip_file, i_line,
                 ip_function, ip_condition);
    std::fflush(stderr);
    std::abort();
}
