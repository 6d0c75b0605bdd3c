// SPDX-License-Identifier: GPL-2.0-or-later
// frei0r.h with the linkage and visibility that its functions need in C++.
#ifndef VIREO_BRIDGES_FREI0R_FREI0R_API_H
#define VIREO_BRIDGES_FREI0R_FREI0R_API_H

#pragma GCC visibility push(default)
extern "C" {
#include <frei0r.h>
}
#pragma GCC visibility pop

#endif
