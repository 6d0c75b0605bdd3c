// SPDX-License-Identifier: GPL-2.0-or-later
#ifndef VIREO_BRIDGES_FREI0R_PLUGIN_H
#define VIREO_BRIDGES_FREI0R_PLUGIN_H

#include "bridges/frei0r/frei0r_api.h"

#include <cstdint>

namespace frei0r {

/// A plug-in's functions, in the library that all plug-ins share. No exception leaves them.
class Plugin {
public:
    Plugin() = default;
    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;
    virtual ~Plugin() = default;

    virtual int init() = 0;
    virtual void deinit() = 0;
    /// Leaves what is only known between f0r_init and f0r_deinit as it was.
    virtual void describe(f0r_plugin_info_t* info) = 0;
    virtual void describeParameter(f0r_param_info_t* info, int index) = 0;
    virtual f0r_instance_t construct(unsigned width, unsigned height) = 0;
    virtual void destruct(f0r_instance_t instance) = 0;
    virtual void setParameter(f0r_instance_t instance, f0r_param_t value, int index) = 0;
    virtual void getParameter(f0r_instance_t instance, f0r_param_t value, int index) = 0;
    virtual void update(f0r_instance_t instance, double time, const std::uint32_t* source,
                        std::uint32_t* destination) = 0;
};

/// What the shared library exports under this name: the plug-in of a filter, to be deleted, or null without
/// memory. `fileName` is what messages begin with.
using MakePlugin = Plugin*(std::uint32_t filterId, const char* fileName);
inline constexpr const char* makePluginName = "vireoFrei0rPlugin";

}  // namespace frei0r

#endif
