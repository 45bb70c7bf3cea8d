// What the fuzz targets hold the code to. The program stops at once, with the place, so that the input is
// kept.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>

#define FUZZ_CHECK(condition)                                                              \
    do {                                                                                   \
        if (!(condition)) {                                                                \
            std::fprintf(stderr, "%s:%d: not true: %s\n", __FILE__, __LINE__, #condition); \
            std::abort();                                                                  \
        }                                                                                  \
    } while (0)

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);
