// SPDX-License-Identifier: MIT
#ifndef VIREO_TESTS_HOST_REFERENCE_COPY_H
#define VIREO_TESTS_HOST_REFERENCE_COPY_H

#include "tests/host/test_buffer.h"

/// What vpixCopy makes, pixel by pixel from the definition: reads `before`, writes `after`.
void referenceCopy(const TestBuffer& source, const TestBuffer& destination, const FrameRect& sourceRect,
                   const FrameRect& destinationRect, std::uint32_t mode, const Memory& sourceBefore,
                   Memory& after);

#endif
