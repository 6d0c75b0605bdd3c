// SPDX-License-Identifier: GPL-2.0-or-later
// The frei0r functions of every plug-in, driven by its filter's property list. No exception leaves them.
#include "bridges/frei0r/instance.h"
#include "bridges/frei0r/module.h"
#include "bridges/frei0r/plugin.h"

#include <cstdio>
#include <exception>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace frei0r {
namespace {

constexpr int majorVersion = 1;
constexpr int minorVersion = 0;

struct ParameterText {
    std::string name;
    std::string explanation;
    int type;
};

/// What a loaded plug-in holds; hosts keep pointers to its texts.
struct Plugin {
    Effect effect;
    std::string name;
    std::string explanation;
    std::vector<ParameterText> parameters;
};

/// Between the first f0r_init and the last f0r_deinit. Some hosts initialise once for every instance, and
/// some destruct instances behind the last f0r_deinit: those keep what they use.
struct Loaded {
    std::mutex mutex;
    std::shared_ptr<const Plugin> plugin;
    int users = 0;
};

Loaded loaded;

std::shared_ptr<const Plugin> loadedPlugin() {
    const std::lock_guard lock(loaded.mutex);
    return loaded.plugin;
}

void report(const char* what) { std::fprintf(stderr, "%s: %s\n", pluginFileName, what); }

std::string plain(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", value);
    return text;
}

ParameterText describe(const hosting::Parameter& parameter) {
    switch (parameter.kind) {
        case hosting::ParameterKind::Boolean:
            return {parameter.name, parameter.name + ", on or off", F0R_PARAM_BOOL};
        case hosting::ParameterKind::Color: return {parameter.name, parameter.name, F0R_PARAM_COLOR};
        default:
            return {parameter.name,
                    parameter.name + ", 0 to 1 for " + plain(parameter.minimum) + " to " +
                        plain(parameter.maximum),
                    F0R_PARAM_DOUBLE};
    }
}

Plugin makePlugin() {
    Plugin made{loadEffect(pluginFilterId), {}, {}, {}};
    const hosting::PropertyList& properties = made.effect.filter->properties;
    made.name = "Vireo " + properties.name;
    made.explanation =
        properties.name + ", one of the classic Vireo video filters (" + properties.category + ")";
    for (const hosting::Parameter& parameter : properties.parameters)
        made.parameters.push_back(describe(parameter));
    if (made.effect.traits->readsTime) {
        made.parameters.push_back(
            {"Frame Rate",
             "Frames a second, a number or a ratio such as 30000/1001, to find the frame's "
             "number from the host's time; empty: frames are counted as they come",
             F0R_PARAM_STRING});
        made.parameters.push_back(
            {"Time Unit", "Unit of the host's time: s, ms or seconds as a number", F0R_PARAM_STRING});
        made.parameters.push_back(
            {"Clip Length", "Length of the clip in frames; empty: unknown", F0R_PARAM_STRING});
    }
    return made;
}

template <class Work>
void guarded(Work&& work) {
    try {
        work();
    } catch (const std::exception& error) {
        report(error.what());
    } catch (...) {
        report("a filter failed");
    }
}

}  // namespace
}  // namespace frei0r

using frei0r::Instance;
using frei0r::loaded;

int f0r_init() {
    bool done = false;
    frei0r::guarded([&] {
        const std::lock_guard lock(loaded.mutex);
        if (loaded.plugin == nullptr) {
            loaded.plugin = std::make_shared<const frei0r::Plugin>(frei0r::makePlugin());
        }
        ++loaded.users;
        done = true;
    });
    return done ? 1 : 0;
}

void f0r_deinit() {
    frei0r::guarded([] {
        std::shared_ptr<const frei0r::Plugin> last;
        const std::lock_guard lock(loaded.mutex);
        if (loaded.users > 0 && --loaded.users == 0) last = std::move(loaded.plugin);
    });
}

void f0r_get_plugin_info(f0r_plugin_info_t* info) {
    *info = {pluginFileName,
             "The Vireo Filters developers",
             F0R_PLUGIN_TYPE_FILTER,
             F0R_COLOR_MODEL_BGRA8888,
             FREI0R_MAJOR_VERSION,
             frei0r::majorVersion,
             frei0r::minorVersion,
             0,
             ""};
    const auto plugin = frei0r::loadedPlugin();
    if (plugin == nullptr) return;
    info->name = plugin->name.c_str();
    info->explanation = plugin->explanation.c_str();
    info->num_params = static_cast<int>(plugin->parameters.size());
}

void f0r_get_param_info(f0r_param_info_t* info, int index) {
    *info = {"", F0R_PARAM_DOUBLE, ""};
    const auto plugin = frei0r::loadedPlugin();
    if (plugin == nullptr || index < 0 || index >= static_cast<int>(plugin->parameters.size())) return;
    const frei0r::ParameterText& parameter = plugin->parameters[static_cast<std::size_t>(index)];
    *info = {parameter.name.c_str(), parameter.type, parameter.explanation.c_str()};
}

f0r_instance_t f0r_construct(unsigned width, unsigned height) {
    Instance* instance = nullptr;
    frei0r::guarded([&] {
        const auto plugin = frei0r::loadedPlugin();
        if (plugin == nullptr) return;
        instance =
            new Instance(std::shared_ptr<const frei0r::Effect>(plugin, &plugin->effect), width, height);
    });
    return instance;
}

void f0r_destruct(f0r_instance_t instance) { delete static_cast<Instance*>(instance); }

void f0r_set_param_value(f0r_instance_t instance, f0r_param_t value, int index) {
    if (instance == nullptr || value == nullptr) return;
    frei0r::guarded([&] { static_cast<Instance*>(instance)->setParameter(index, value); });
}

void f0r_get_param_value(f0r_instance_t instance, f0r_param_t value, int index) {
    if (instance == nullptr || value == nullptr) return;
    frei0r::guarded([&] { static_cast<Instance*>(instance)->getParameter(index, value); });
}

void f0r_update(f0r_instance_t instance, double time, const std::uint32_t* source,
                std::uint32_t* destination) {
    if (instance == nullptr || source == nullptr || destination == nullptr) return;
    frei0r::guarded([&] { static_cast<Instance*>(instance)->update(time, source, destination); });
}
