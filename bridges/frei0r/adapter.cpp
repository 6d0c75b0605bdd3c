// SPDX-License-Identifier: GPL-2.0-or-later
// The frei0r functions of a plug-in, driven by its filter's property list.
#include "bridges/frei0r/instance.h"
#include "bridges/frei0r/module.h"
#include "bridges/frei0r/plugin.h"

#include <cstdio>
#include <exception>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <utility>
#include <vector>

namespace frei0r {
namespace {

struct ParameterText {
    std::string name;
    std::string explanation;
    int type;
};

/// What a plug-in holds while it is loaded; hosts keep pointers to its texts.
struct Description {
    Effect effect;
    std::string name;
    std::string explanation;
    std::vector<ParameterText> parameters;
};

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

Description describeFilter(std::uint32_t filterId) {
    Description made{loadEffect(filterId), {}, {}, {}};
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

class FilterPlugin final : public Plugin {
public:
    FilterPlugin(std::uint32_t filterId, const char* fileName) : filterId_(filterId), fileName_(fileName) {}

    int init() override {
        bool done = false;
        guarded([&] {
            const std::lock_guard lock(mutex_);
            if (loaded_ == nullptr) loaded_ = std::make_shared<const Description>(describeFilter(filterId_));
            ++users_;
            done = true;
        });
        return done ? 1 : 0;
    }

    void deinit() override {
        guarded([&] {
            std::shared_ptr<const Description> last;
            const std::lock_guard lock(mutex_);
            if (users_ > 0 && --users_ == 0) last = std::move(loaded_);
        });
    }

    void describe(f0r_plugin_info_t* info) override {
        const auto loaded = description();
        if (loaded == nullptr) return;
        info->name = loaded->name.c_str();
        info->explanation = loaded->explanation.c_str();
        info->num_params = static_cast<int>(loaded->parameters.size());
    }

    void describeParameter(f0r_param_info_t* info, int index) override {
        const auto loaded = description();
        if (loaded == nullptr || index < 0 || index >= static_cast<int>(loaded->parameters.size())) return;
        const ParameterText& parameter = loaded->parameters[static_cast<std::size_t>(index)];
        *info = {parameter.name.c_str(), parameter.type, parameter.explanation.c_str()};
    }

    f0r_instance_t construct(unsigned width, unsigned height) override {
        Instance* instance = nullptr;
        guarded([&] {
            const auto loaded = description();
            if (loaded == nullptr) return;
            instance = new Instance(std::shared_ptr<const Effect>(loaded, &loaded->effect), width, height);
        });
        return instance;
    }

    void destruct(f0r_instance_t instance) override { delete static_cast<Instance*>(instance); }

    void setParameter(f0r_instance_t instance, f0r_param_t value, int index) override {
        guarded([&] { static_cast<Instance*>(instance)->setParameter(index, value); });
    }

    void getParameter(f0r_instance_t instance, f0r_param_t value, int index) override {
        guarded([&] { static_cast<Instance*>(instance)->getParameter(index, value); });
    }

    void update(f0r_instance_t instance, double time, const std::uint32_t* source,
                std::uint32_t* destination) override {
        guarded([&] { static_cast<Instance*>(instance)->update(time, source, destination); });
    }

private:
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

    void report(const char* what) const { std::fprintf(stderr, "%s: %s\n", fileName_, what); }

    std::shared_ptr<const Description> description() {
        const std::lock_guard lock(mutex_);
        return loaded_;
    }

    const std::uint32_t filterId_;
    const char* const fileName_;
    std::mutex mutex_;
    // Between the first f0r_init and the last f0r_deinit. Some hosts initialise once for every instance, and
    // some destruct instances behind the last f0r_deinit: those keep what they use.
    std::shared_ptr<const Description> loaded_;
    int users_ = 0;
};

}  // namespace
}  // namespace frei0r

#if defined(_WIN32)
#define VIREO_FREI0R_EXPORT __declspec(dllexport)
#else
#define VIREO_FREI0R_EXPORT __attribute__((visibility("default")))
#endif

extern "C" VIREO_FREI0R_EXPORT frei0r::Plugin* vireoFrei0rPlugin(std::uint32_t filterId,
                                                                 const char* fileName) {
    return new (std::nothrow) frei0r::FilterPlugin(filterId, fileName);
}
