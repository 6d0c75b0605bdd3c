// SPDX-License-Identifier: MIT
#ifndef VIREO_TESTS_BRIDGES_OPENFX_HOST_PROPERTY_SET_H
#define VIREO_TESTS_BRIDGES_OPENFX_HOST_PROPERTY_SET_H

#include "bridges/openfx/ofx.h"

#include <map>
#include <string>
#include <variant>
#include <vector>

namespace openfx::test {

/// What the host keeps of an object. Calls that the interface does not allow are answered with its errors and
/// remembered.
class PropertySet {
public:
    using Value = std::variant<void*, std::string, double, int>;

    /// `kind` is the standard's object: "effect", "clip", a parameter's type, or an action's answer.
    explicit PropertySet(std::string kind = "") : kind_(std::move(kind)) {}

    OfxPropertySetHandle handle() { return reinterpret_cast<OfxPropertySetHandle>(this); }
    static PropertySet* of(OfxPropertySetHandle handle) { return reinterpret_cast<PropertySet*>(handle); }

    /// The host's own way.
    template <class Type>
    void put(const std::string& name, std::initializer_list<Type> values) {
        values_[name].assign(values.begin(), values.end());
    }
    void erase(const std::string& name) { values_.erase(name); }

    template <class Type>
    std::vector<Type> all(const std::string& name) const {
        std::vector<Type> found;
        const auto at = values_.find(name);
        if (at == values_.end()) return found;
        for (const Value& value : at->second) found.push_back(std::get<Type>(value));
        return found;
    }
    template <class Type>
    Type one(const std::string& name) const {
        const auto found = all<Type>(name);
        return found.size() == 1 ? found.front() : Type{};
    }

    /// The plug-in's way.
    OfxStatus set(const char* name, int index, const Value& value);
    OfxStatus get(const char* name, int index, Value& value) const;
    int dimension(const char* name) const;

    /// A host that knows nothing: everything is refused.
    bool refusesAll = false;

    /// What plug-ins did that they must not, in all sets.
    static std::vector<std::string> faults();
    static void fault(const std::string& sentence);

private:
    std::string kind_;
    std::map<std::string, std::vector<Value>> values_;
};

extern const OfxPropertySuiteV1 propertySuite;

}  // namespace openfx::test

#endif
