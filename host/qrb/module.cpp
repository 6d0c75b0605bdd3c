// SPDX-License-Identifier: MIT
#include "host/qrb/module.h"

#include <cstdlib>
#include <string_view>

#if defined(_WIN32)
#include "host/win32.h"
#endif

namespace QRB {

void* Allocator::Allocate(std::size_t size) {
    void* block = std::malloc(size);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

void Allocator::Dispose(void* block, std::size_t) { std::free(block); }

ObjectPtr<Module> Module::Create(NativeModule native) { return ObjectPtr<Module>(new Module(native)); }

#if defined(_WIN32)

const void* Module::LoadResource(const char16_t* type, std::uint16_t id, std::size_t* size) const {
    const auto instance = static_cast<HINSTANCE>(native_);
    const HRSRC resource =
        FindResourceW(instance, MAKEINTRESOURCEW(id), reinterpret_cast<const wchar_t*>(type));
    if (resource == nullptr) return nullptr;
    const HGLOBAL loaded = ::LoadResource(instance, resource);
    if (loaded == nullptr) return nullptr;
    *size = SizeofResource(instance, resource);
    return LockResource(loaded);
}

#else

const void* Module::LoadResource(const char16_t* type, std::uint16_t id, std::size_t* size) const {
    for (const LinkedResource* resource = native_; resource->type != nullptr; ++resource) {
        if (resource->id == id && std::u16string_view(resource->type) == type) {
            *size = resource->size;
            return resource->bytes;
        }
    }
    return nullptr;
}

#endif

// The bytes are part of the mapped library.
void Module::ReleaseResource(const void*) const {}

}  // namespace QRB
