// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_BASE_RATIO_H
#define VIREO_APP_BASE_RATIO_H

namespace vireo {

struct Ratio {
    int numerator = 0;
    int denominator = 1;
};

}  // namespace vireo

#endif
