// SPDX-License-Identifier: MIT
#ifndef VIREO_HOST_HOSTING_META_PLUGIN_H
#define VIREO_HOST_HOSTING_META_PLUGIN_H

#include "host/host_export.h"
#include "host/hosting/property_list.h"
#include "host/vrm/filter_invocation.h"

#include <filesystem>
#include <memory>
#include <vector>

namespace hosting {

/// A filter that a loaded module announced.
struct Filter {
    std::uint32_t id;
    FilterEntryProc entry;
    PropertyList properties;
};

/// A loaded meta-plug-in. It is initialised when it is made and terminated and unloaded when it goes, so
/// nothing of its filters may be used afterwards.
class VIREO_HOST_API MetaPlugin {
public:
    /// Loads the module and asks it for its filters, under the host's application type and language. Throws
    /// std::runtime_error with one sentence when the module cannot be loaded or answers wrongly.
    explicit MetaPlugin(const std::filesystem::path& module);
    MetaPlugin(const MetaPlugin&) = delete;
    MetaPlugin& operator=(const MetaPlugin&) = delete;
    ~MetaPlugin();

    /// The same for several users of one process: those who name one module share one object.
    static std::shared_ptr<const MetaPlugin> shared(const std::filesystem::path& module);

    const std::filesystem::path& path() const;
    const std::vector<Filter>& filters() const;

    /// The module's exported function.
    std::int32_t call(std::int32_t selector, void* record) const;

private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace hosting

#endif
