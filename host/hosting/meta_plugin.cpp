// SPDX-License-Identifier: MIT
#include "host/hosting/meta_plugin.h"

#include "host/hosting/module_library.h"
#include "host/qrb/language.h"

#include <map>
#include <mutex>
#include <stdexcept>
#include <string>

namespace hosting {

struct MetaPlugin::State {
    std::filesystem::path path;
    ModuleLibrary library;
    MetaPluginFunction* function;
    std::vector<Filter> filters;

    explicit State(const std::filesystem::path& module)
        : path(module), library(module), function(library.function()) {
        if (function == nullptr) {
            throw std::runtime_error(path.string() + " is no Vireo module: it does not export " +
                                     exportedName);
        }
        try {
            MetaPluginInitialiseRecord record{QRB::GetLanguageID()};
            call(MetaPluginInitialise, &record, "initialise");
            readFilters();
        } catch (...) {
            function(MetaPluginTerminate, nullptr);
            throw;
        }
    }
    State(const State&) = delete;
    State& operator=(const State&) = delete;
    ~State() { function(MetaPluginTerminate, nullptr); }

    void call(std::int32_t selector, void* record, const char* what) const {
        const std::int32_t result = function(selector, record);
        if (result != MetaPluginDone) {
            throw std::runtime_error("the module " + path.string() + " failed to " + what + " (result " +
                                     std::to_string(result) + ")");
        }
    }

    void readFilters() {
        MetaPluginCountRecord count{};
        call(MetaPluginCount, &count, "count its filters");
        for (std::uint32_t index = 0; index < static_cast<std::uint32_t>(count.count); ++index) {
            MetaPluginEntryRecord entry{};
            entry.index = index;
            call(MetaPluginEntryInformation, &entry, "tell a filter's entry");

            MetaPluginPropertyListRecord list{};
            list.index = index;
            call(MetaPluginPropertyList, &list, "tell the size of a property list");
            std::vector<std::uint8_t> bytes(list.size < 0 ? 0 : static_cast<std::size_t>(list.size));
            list.buffer = bytes.data();
            call(MetaPluginPropertyList, &list, "hand out a property list");
            filters.push_back({entry.id, entry.entry.get(), readPropertyList(bytes)});
        }
    }
};

MetaPlugin::MetaPlugin(const std::filesystem::path& module) : state_(std::make_unique<State>(module)) {}
MetaPlugin::~MetaPlugin() = default;

std::shared_ptr<const MetaPlugin> MetaPlugin::shared(const std::filesystem::path& module) {
    // Also held while one goes: a library must not be terminated for one user while another initialises it.
    // Without memory for its pointer a new one goes at once.
    static std::recursive_mutex mutex;
    static std::map<std::filesystem::path, std::weak_ptr<const MetaPlugin>> loaded;
    const std::lock_guard lock(mutex);
    std::weak_ptr<const MetaPlugin>& known = loaded[module];
    if (auto plugin = known.lock()) return plugin;
    const std::shared_ptr<const MetaPlugin> plugin(new MetaPlugin(module), [](const MetaPlugin* unused) {
        const std::lock_guard unloading(mutex);
        delete unused;
    });
    known = plugin;
    return plugin;
}

const std::filesystem::path& MetaPlugin::path() const { return state_->path; }
const std::vector<Filter>& MetaPlugin::filters() const { return state_->filters; }

std::int32_t MetaPlugin::call(std::int32_t selector, void* record) const {
    return state_->function(selector, record);
}

}  // namespace hosting
