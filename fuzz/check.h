// What must hold whatever comes in. A fuzzing engine keeps the input of a process that aborts.
#pragma once

#include <cstdio>
#include <cstdlib>

namespace fuzz {

inline void check(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "violated: %s\n", what);
        std::abort();
    }
}

}  // namespace fuzz
