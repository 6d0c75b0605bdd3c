// SPDX-License-Identifier: GPL-2.0-or-later
#include "bridges/obs/settings.h"

#include <cmath>
#include <memory>
#include <stdexcept>
#include <string_view>

namespace vireo::obs {
namespace {

struct Release {
    void operator()(obs_data_t* data) const { obs_data_release(data); }
    void operator()(obs_data_array_t* array) const { obs_data_array_release(array); }
};

using Data = std::unique_ptr<obs_data_t, Release>;
using DataArray = std::unique_ptr<obs_data_array_t, Release>;

/// OBS keeps colours as 0xAABBGGRR.
std::int64_t withRedAndBlueExchanged(std::int64_t color) {
    return (color & 0xFF) << 16 | (color & 0xFF00) | (color >> 16 & 0xFF);
}

constexpr std::int64_t opaque = 0xFF000000;

double toDisplay(const VireoParameter& parameter, std::int64_t value) {
    return parameter.displayMinimum +
           (static_cast<double>(value) - parameter.minimum) * displayStep(parameter);
}

std::int64_t fromDisplay(const VireoParameter& parameter, double value) {
    return static_cast<std::int64_t>(
        std::floor(parameter.minimum + (value - parameter.displayMinimum) / displayStep(parameter) + 0.5));
}

std::int64_t readValue(obs_data_t* settings, const char* name, const VireoParameter& parameter) {
    switch (parameter.kind) {
        case VireoBoolean: return obs_data_get_bool(settings, name) ? 1 : 0;
        case VireoColor: return withRedAndBlueExchanged(obs_data_get_int(settings, name));
        default: break;
    }
    return isScaled(parameter) ? fromDisplay(parameter, obs_data_get_double(settings, name))
                               : obs_data_get_int(settings, name);
}

void writeValue(obs_data_t* settings, const char* name, const VireoParameter& parameter, std::int64_t value) {
    if (parameter.kind == VireoBoolean) {
        obs_data_set_bool(settings, name, value != 0);
    } else if (parameter.kind == VireoColor) {
        obs_data_set_int(settings, name, withRedAndBlueExchanged(value) | opaque);
    } else if (isScaled(parameter)) {
        obs_data_set_double(settings, name, toDisplay(parameter, value));
    } else {
        obs_data_set_int(settings, name, value);
    }
}

void setDefault(obs_data_t* settings, const char* name, const VireoParameter& parameter) {
    if (parameter.kind == VireoBoolean) {
        obs_data_set_default_bool(settings, name, parameter.initial != 0);
    } else if (parameter.kind == VireoColor) {
        obs_data_set_default_int(settings, name, withRedAndBlueExchanged(parameter.initial) | opaque);
    } else if (isScaled(parameter)) {
        obs_data_set_default_double(settings, name, toDisplay(parameter, parameter.initial));
    } else {
        obs_data_set_default_int(settings, name, parameter.initial);
    }
}

/// The filters that the list names, in its order.
std::vector<std::uint32_t> listedFilters(obs_data_t* settings) {
    std::vector<std::uint32_t> filters;
    const DataArray array(obs_data_get_array(settings, key::filters));
    for (std::size_t i = 0; i < obs_data_array_count(array.get()); ++i) {
        const Data item(obs_data_array_item(array.get(), i));
        std::uint32_t filter = 0;
        if (vireoFindFilter(engine(), obs_data_get_string(item.get(), "value"), &filter) != VireoDone) {
            throw std::runtime_error(vireoLastError()->sentence);
        }
        filters.push_back(filter);
    }
    return filters;
}

/// Calls with the key, the description and the index of each parameter of a filter.
template <class Use>
void forEachValue(std::size_t position, std::uint32_t filter, Use use) {
    const VireoFilter description = describeFilter(filter);
    for (std::uint32_t i = 0; i < description.parameterCount; ++i) {
        const VireoParameter parameter = describeParameter(filter, i);
        use(valueKey(position, description, parameter).c_str(), parameter, i);
    }
}

VireoStatus addListed(VireoChain* chain, const ListedFilter& listed) {
    const std::uint32_t position = vireoChainLength(chain);
    VireoStatus status = vireoChainAddFilter(chain, listed.filter);
    for (std::size_t i = 0; status == VireoDone && i < listed.values.size(); ++i) {
        status = vireoChainSetValue(chain, position, static_cast<std::int32_t>(i), listed.values[i]);
    }
    return status;
}

}  // namespace

std::string valueKey(std::size_t position, const VireoFilter& filter, const VireoParameter& parameter) {
    return std::to_string(position + 1) + "." + filter.key + "." + parameter.englishName;
}

bool isScaled(const VireoParameter& parameter) {
    return parameter.displayMinimum != parameter.minimum || parameter.displayMaximum != parameter.maximum;
}

double displayStep(const VireoParameter& parameter) {
    return (parameter.displayMaximum - parameter.displayMinimum) / (parameter.maximum - parameter.minimum);
}

std::vector<ListedFilter> readList(obs_data_t* settings) {
    std::vector<ListedFilter> list;
    for (const std::uint32_t filter : listedFilters(settings)) {
        ListedFilter listed{filter, {}};
        forEachValue(list.size(), filter,
                     [&](const char* name, const VireoParameter& parameter, std::uint32_t) {
                         listed.values.push_back(readValue(settings, name, parameter));
                     });
        list.push_back(std::move(listed));
    }
    return list;
}

void writeList(obs_data_t* settings, const std::vector<ListedFilter>& list) {
    std::vector<std::uint32_t> before;
    try {
        before = listedFilters(settings);
    } catch (const std::runtime_error&) {
        // Values that belong to an unknown filter are not ours to remove.
    }
    for (std::size_t i = 0; i < before.size(); ++i) {
        forEachValue(i, before[i], [settings](const char* name, const VireoParameter&, std::uint32_t) {
            obs_data_erase(settings, name);
        });
    }
    const DataArray array(obs_data_array_create());
    for (std::size_t i = 0; i < list.size(); ++i) {
        const Data item(obs_data_create());
        obs_data_set_string(item.get(), "value", describeFilter(list[i].filter).key);
        obs_data_array_push_back(array.get(), item.get());
        forEachValue(i, list[i].filter,
                     [&](const char* name, const VireoParameter& parameter, std::uint32_t k) {
                         writeValue(settings, name, parameter, list[i].values[k]);
                     });
    }
    obs_data_set_array(settings, key::filters, array.get());
}

ListedFilter freshFilter(std::uint32_t filter) {
    ListedFilter fresh{filter, {}};
    for (std::uint32_t i = 0; i < describeFilter(filter).parameterCount; ++i) {
        fresh.values.push_back(describeParameter(filter, i).initial);
    }
    return fresh;
}

void setDefaults(obs_data_t* settings) {
    obs_data_set_default_string(settings, key::mode, key::filters);
    try {
        std::size_t position = 0;
        for (const std::uint32_t filter : listedFilters(settings)) {
            forEachValue(position++, filter,
                         [settings](const char* name, const VireoParameter& parameter, std::uint32_t) {
                             setDefault(settings, name, parameter);
                         });
        }
    } catch (const std::runtime_error&) {
        // The request says so.
    }
}

ChainRequest::ChainRequest(obs_data_t* settings) : mode_(obs_data_get_string(settings, key::mode)) {
    if (mode_ != key::filters) {
        content_ = obs_data_get_string(settings, mode_.c_str());
        return;
    }
    try {
        list_ = readList(settings);
    } catch (const std::runtime_error& problem) {
        problem_ = problem.what();
    }
}

std::string ChainRequest::addTo(VireoChain* chain) const {
    if (!problem_.empty()) return problem_;
    VireoStatus status = VireoDone;
    if (mode_ == key::filters) {
        for (std::size_t i = 0; status == VireoDone && i < list_.size(); ++i)
            status = addListed(chain, list_[i]);
    } else if (mode_ != key::preset && mode_ != key::file && mode_ != key::text) {
        return "there is no mode \"" + mode_ + "\"";
    } else if (content_.empty()) {
        return {};  // Nothing chosen yet.
    } else if (mode_ == key::preset) {
        status = vireoChainAddPreset(chain, content_.c_str());
    } else if (mode_ == key::file) {
        status = vireoChainAddFile(chain, content_.c_str());
    } else {
        status = vireoChainAddText(chain, content_.c_str());
    }
    return status == VireoDone ? std::string() : vireoLastError()->sentence;
}

}  // namespace vireo::obs
