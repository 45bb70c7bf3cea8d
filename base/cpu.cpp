#include "base/cpu.h"

#include <cpuid.h>

#include <cstdint>
#include <cstring>

namespace {

struct CpuidLeaf {
    uint32_t eax = 0, ebx = 0, ecx = 0, edx = 0;
};

CpuidLeaf cpuid(uint32_t leaf) {
    CpuidLeaf r;
    if (!__get_cpuid_count(leaf, 0, &r.eax, &r.ebx, &r.ecx, &r.edx)) return {};
    return r;
}

bool detect_popcnt() { return (cpuid(1).ecx >> 23 & 1) != 0; }

bool is_vendor(const char* name) {
    const CpuidLeaf leaf = cpuid(0);
    char vendor[12];
    std::memcpy(vendor, &leaf.ebx, 4);
    std::memcpy(vendor + 4, &leaf.edx, 4);
    std::memcpy(vendor + 8, &leaf.ecx, 4);
    return std::memcmp(vendor, name, sizeof vendor) == 0;
}

}  // namespace

bool have_bmi2() { return (cpuid(7).ebx >> 8 & 1) != 0; }

bool have_popcnt = detect_popcnt();
bool use_pext = have_bmi2() && is_vendor("GenuineIntel");
