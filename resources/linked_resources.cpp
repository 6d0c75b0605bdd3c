// SPDX-License-Identifier: MIT
#include "resources/linked_resources.h"
const QRB::LinkedResource linkedResources[] = {{nullptr, 0, nullptr, 0}};
