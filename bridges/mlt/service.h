// SPDX-License-Identifier: MIT
// The filter services.
#ifndef VIREO_MLT_SERVICE_H
#define VIREO_MLT_SERVICE_H

#include "vireo/vireo.h"

#include <framework/mlt.h>

namespace vireo::mlt {

/// Makes the MLT filter of a service, with its properties as they are when fresh; null where it cannot.
/// `chain` is a text for the chain's service, and may be null.
mlt_filter makeFilter(const VireoEngine* engine, const char* service, const char* chain);

}  // namespace vireo::mlt

#endif
