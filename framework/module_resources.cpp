// SPDX-License-Identifier: MIT
#include "framework/module_resources.h"

#if defined(_WIN32)
#include "host/win32.h"
#else
#include "resources/linked_resources.h"
#endif

namespace {

QRB::ObjectPtr<QRB::Module> module;
std::uint32_t resourceLanguage = 0;

void attach(QRB::NativeModule native) { module = QRB::Module::Create(native); }

void detach() { module = {}; }

}  // namespace

QRB::ObjectPtr<QRB::Module> moduleObject() { return module; }

void setResourceLanguage(std::uint32_t language) { resourceLanguage = language; }

const void* LoadModuleResource(const char16_t* typeName, std::uint16_t id, std::size_t* outSize) {
    const auto loaded = moduleObject();
    return loaded ? loaded->LoadResource(typeName, id, outSize) : nullptr;
}

const void* LoadModuleResourceForLanguage(const char16_t* typeName, std::uint16_t id, std::size_t* outSize) {
    return LoadModuleResource(typeName, id, outSize);
}

void ReleaseModuleResource(const void* bytes) {
    if (const auto loaded = moduleObject()) loaded->ReleaseResource(bytes);
}

#if defined(_WIN32)

const void* LoadDialogTemplate(std::uint16_t id) {
    std::size_t size = 0;
    return LoadModuleResource(reinterpret_cast<const char16_t*>(RT_DIALOG), id, &size);
}

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) attach(instance);
    if (reason == DLL_PROCESS_DETACH) detach();
    return TRUE;
}

#else

const void* LoadDialogTemplate(std::uint16_t id) {
    std::size_t size = 0;
    return LoadModuleResource(u"#5", id, &size);
}

namespace {

struct Attachment {
    Attachment() { attach(linkedResources); }
    ~Attachment() { detach(); }
} const attachment;

}  // namespace

#endif
