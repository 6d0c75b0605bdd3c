// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_MEDIA_WIC_OBJECTS_H
#define VIREO_APP_MEDIA_WIC_OBJECTS_H

#include "host/win32.h"

#include <objbase.h>
#include <wincodec.h>
#include <memory>

namespace vireo {

struct ReleaseObject {
    void operator()(IUnknown* object) const { object->Release(); }
};

template <class Interface>
using ComPtr = std::unique_ptr<Interface, ReleaseObject>;

/// Calls `make(&pointer)` and owns what it gives; null where it fails.
template <class Interface, class Make>
ComPtr<Interface> made(Make make) {
    Interface* object = nullptr;
    return ComPtr<Interface>(SUCCEEDED(make(&object)) ? object : nullptr);
}

/// COM on the current thread, for as long as this lives.
class ComScope {
public:
    ComScope() : result_(CoInitializeEx(nullptr, COINIT_MULTITHREADED)) {}
    ComScope(const ComScope&) = delete;
    ComScope& operator=(const ComScope&) = delete;
    ~ComScope() {
        if (SUCCEEDED(result_)) CoUninitialize();
    }

private:
    HRESULT result_;
};

}  // namespace vireo

#endif
