// SPDX-License-Identifier: MIT
#include "engine/catalogue/host_identity.h"

#include "engine/catalogue/languages.h"
#include "host/vireo_host.h"

namespace vireo {

void present(const HostIdentity& identity) {
    if (identity.applicationType) vireoHostSetApplicationType(*identity.applicationType);
    if (!identity.language.empty()) vireoHostSetLanguage(languageId(identity.language));
}

}  // namespace vireo
