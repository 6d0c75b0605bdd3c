// SPDX-License-Identifier: MIT
#ifndef VIREO_RESOURCES_LINKED_RESOURCES_H
#define VIREO_RESOURCES_LINKED_RESOURCES_H

#include "host/qrb/module.h"

/// Every resource of the module, where the platform's libraries hold none of their own. Ends with a null
/// type.
extern const QRB::LinkedResource linkedResources[];

#endif
