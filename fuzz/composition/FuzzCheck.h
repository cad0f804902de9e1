#pragma once

#include <cstdio>
#include <cstdlib>

// An invariant that must hold for every input: a failure is a finding, reported like a crash.
#define FUZZ_CHECK(condition)                                                                                          \
    do {                                                                                                               \
        if (!(condition)) {                                                                                            \
            std::fprintf(stderr, "invariant failed: %s (%s:%d)\n", #condition, __FILE__, __LINE__);                    \
            std::abort();                                                                                              \
        }                                                                                                              \
    } while (false)
