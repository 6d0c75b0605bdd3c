// SPDX-License-Identifier: GPL-2.0-or-later
#include "bench/bench.h"

#include <dlfcn.h>
#include <frei0r.h>

#include <memory>

namespace bench {
namespace {

constexpr char folder[] = "/usr/lib/frei0r-1/";

/// One instance of a plug-in; null where the machine does not have it.
class Plugin {
public:
    static std::shared_ptr<Plugin> load(const std::string& name, const FrameSize& size) {
        void* library = dlopen((folder + name + ".so").c_str(), RTLD_NOW | RTLD_LOCAL);
        if (library == nullptr) return nullptr;
        const auto init = reinterpret_cast<decltype(&f0r_init)>(dlsym(library, "f0r_init"));
        init();
        return std::make_shared<Plugin>(library, size);
    }

    Plugin(void* library, const FrameSize& size)
        : update_(reinterpret_cast<decltype(&f0r_update)>(dlsym(library, "f0r_update"))) {
        const auto construct = reinterpret_cast<decltype(&f0r_construct)>(dlsym(library, "f0r_construct"));
        instance_ = construct(static_cast<unsigned>(size.width), static_cast<unsigned>(size.height));
    }

    void update(const Frames& f) const {
        update_(instance_, 0, reinterpret_cast<const std::uint32_t*>(f.source),
                reinterpret_cast<std::uint32_t*>(f.destination));
    }

private:
    decltype(&f0r_update) update_;
    f0r_instance_t instance_;
};

struct Peer {
    const char* subject;
    const char* plugin;
};

constexpr Peer peers[] = {{"Gamma Correction, 0.7", "gamma"},
                          {"Levels, gamma 1.5", "levels"},
                          {"Color Pass", "select0r"},
                          {"Black & White", "bw0r"},
                          {"Camera Blur, 25 %", "IIRblur"},
                          {"Alpha Glow, 25", "glow"},
                          {"Camera View, turned", "perspective"},
                          {"Lens Distortion, all five set", "defish0r"}};

}  // namespace

void addFrei0r() {
    for (const Peer& peer : peers) {
        if (Plugin::load(peer.plugin, frameSizes[0]) == nullptr) continue;
        add(peer.subject, std::string("frei0r ") + peer.plugin, [peer](Frames& f) -> std::function<void()> {
            const auto plugin = Plugin::load(peer.plugin, f.size);
            return [plugin, &f] { plugin->update(f); };
        });
    }
}

}  // namespace bench
