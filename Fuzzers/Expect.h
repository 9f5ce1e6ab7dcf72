#pragma once

#include <cstdio>
#include <cstdlib>

// A property that has to hold for every input; the fuzzer keeps the input that breaks one.
inline void expect(bool holds, const char *property)
{
    if (holds)
        return;
    static_cast<void>(std::fprintf(stderr, "does not hold: %s\n", property));
    std::abort();
}
