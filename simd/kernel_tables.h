// SPDX-License-Identifier: MIT
// Kernels compiled once for each instruction set.
//
// A *_kernels.cpp file is compiled once per set with VIREO_KERNEL_NAMESPACE naming its namespace. Its header
// declares one table of function pointers per set with VIREO_KERNEL_TABLES, and chosen() picks the table when
// the library loads. Every set gives the same bytes.
#ifndef VIREO_SIMD_KERNEL_TABLES_H
#define VIREO_SIMD_KERNEL_TABLES_H

#include "simd/instruction_set.h"

#include <iterator>

namespace simd {

template <class Kernels>
struct KernelTables {
    const Kernels* tables[std::size(allInstructionSets)];

    const Kernels& at(InstructionSet set) const { return *tables[static_cast<int>(set)]; }
    const Kernels& chosen() const { return at(chosenInstructionSet()); }
};

}  // namespace simd

#if defined(VIREO_X86_KERNELS)
#define VIREO_KERNEL_TABLES(Kernels, name) \
    namespace baseline {                   \
    extern const Kernels name;             \
    }                                      \
    namespace avx2 {                       \
    extern const Kernels name;             \
    }                                      \
    namespace avx512 {                     \
    extern const Kernels name;             \
    }                                      \
    inline constexpr simd::KernelTables<Kernels> name##Tables{{&baseline::name, &avx2::name, &avx512::name}};
#else
#define VIREO_KERNEL_TABLES(Kernels, name)                     \
    namespace baseline {                                       \
    extern const Kernels name;                                 \
    }                                                          \
    inline constexpr simd::KernelTables<Kernels> name##Tables{ \
        {&baseline::name, &baseline::name, &baseline::name}};
#endif

#endif
