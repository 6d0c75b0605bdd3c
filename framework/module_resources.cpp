// SPDX-License-Identifier: MIT
#include "framework/module_resources.h"

#if defined(_WIN32)
#include "host/win32.h"

extern "C" IMAGE_DOS_HEADER __ImageBase;  // Where the linker puts the library in memory.
#else
#include "resources/linked_resources.h"
#endif

namespace {

#if defined(_WIN32)
QRB::NativeModule ownModule() { return &__ImageBase; }
const auto dialogType = reinterpret_cast<const char16_t*>(RT_DIALOG);
#else
QRB::NativeModule ownModule() { return linkedResources; }
const auto dialogType = u"#5";
#endif

const QRB::ObjectPtr<QRB::Module> module = QRB::Module::Create(ownModule());

}  // namespace

QRB::ObjectPtr<QRB::Module> moduleObject() { return module; }

const void* LoadModuleResource(const char16_t* typeName, std::uint16_t id, std::size_t* outSize) {
    const auto loaded = moduleObject();
    return loaded ? loaded->LoadResource(typeName, id, outSize) : nullptr;
}

void ReleaseModuleResource(const void* bytes) {
    if (const auto loaded = moduleObject()) loaded->ReleaseResource(bytes);
}

const void* LoadDialogTemplate(std::uint16_t id) {
    std::size_t size = 0;
    return LoadModuleResource(dialogType, id, &size);
}
