// SPDX-License-Identifier: MIT
#ifndef VIREO_HOST_QRB_MODULE_H
#define VIREO_HOST_QRB_MODULE_H

#include "host/host_export.h"
#include "host/qrb/object_ptr.h"

#include <cstddef>
#include <cstdint>

namespace QRB {

/// One resource linked into a library where the platform's format has none of its own.
struct LinkedResource {
    const char16_t* type;  ///< Null for the end of the list. Standard dialogs have the type "#5".
    std::uint16_t id;
    const std::uint8_t* bytes;
    std::size_t size;
};

/// What stands for a loaded library: its instance handle on Windows, elsewhere its linked resources.
#if defined(_WIN32)
using NativeModule = void*;
#else
using NativeModule = const LinkedResource*;
#endif

/// A loaded library seen as a store of resources.
class VIREO_HOST_API Module {
public:
    static ObjectPtr<Module> Create(NativeModule native);

    NativeModule GetNativeModule() const { return native_; }

    /// The bytes of a resource and their number, or null. They belong to the library; hand them back with
    /// ReleaseResource.
    const void* LoadResource(const char16_t* type, std::uint16_t id, std::size_t* size) const;
    void ReleaseResource(const void* bytes) const;

private:
    explicit Module(NativeModule native) : native_(native) {}

    NativeModule native_;
};

}  // namespace QRB

#endif
