// SPDX-License-Identifier: MIT
// The module's own resources, read through the module object that lives as long as the library is loaded.
#ifndef VIREO_FRAMEWORK_MODULE_RESOURCES_H
#define VIREO_FRAMEWORK_MODULE_RESOURCES_H

#include "host/qrb/module.h"

#include <cstddef>
#include <cstdint>

/// The module object; empty while the library is not loaded.
QRB::ObjectPtr<QRB::Module> moduleObject();

/// A resource's bytes and their number, or null. Hand them back with ReleaseModuleResource.
const void* LoadModuleResource(const char16_t* typeName, std::uint16_t id, std::size_t* outSize);

/// The bytes of a dialog template, or null.
const void* LoadDialogTemplate(std::uint16_t id);

void ReleaseModuleResource(const void* bytes);

#endif
