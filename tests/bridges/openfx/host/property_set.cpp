// SPDX-License-Identifier: MIT
#include "tests/bridges/openfx/host/property_set.h"

#include "tests/bridges/openfx/host/standard.h"

#include <mutex>
#include <utility>

namespace openfx::test {
namespace {

std::mutex faultMutex;
std::vector<std::string> faultList;

/// A default is what its parameter holds.
PropertyType typeOn(const std::string& kind, const std::string& name, PropertyType type) {
    return name == "OfxParamPropDefault" && kind == "OfxParamTypeRGB" ? PropertyType::Double : type;
}

template <class Type, class From>
OfxStatus setN(OfxPropertySetHandle handle, const char* name, int count, From values) {
    for (int i = 0; i < count; ++i) {
        const OfxStatus status = PropertySet::of(handle)->set(name, i, Type(values[i]));
        if (status != 0) return status;
    }
    return 0;
}

template <class Type, class Out>
OfxStatus getOne(OfxPropertySetHandle handle, const char* name, int index, Out* out) {
    if (handle == nullptr) return 9;
    PropertySet::Value value = Type{};
    const OfxStatus status = PropertySet::of(handle)->get(name, index, value);
    if (status == 0) *out = std::get<Type>(value);
    return status;
}

/// Texts stay where they are until they are set again.
OfxStatus getText(OfxPropertySetHandle handle, const char* name, int index, char** out) {
    thread_local std::string kept;
    const OfxStatus status = getOne<std::string>(handle, name, index, &kept);
    if (status == 0) *out = kept.data();
    return status;
}

template <class Get, class Out>
OfxStatus getN(Get get, OfxPropertySetHandle handle, const char* name, int count, Out* out) {
    for (int i = 0; i < count; ++i) {
        const OfxStatus status = get(handle, name, i, &out[i]);
        if (status != 0) return status;
    }
    return 0;
}

template <class Type, class Given>
OfxStatus setOne(OfxPropertySetHandle handle, const char* name, int index, Given value) {
    return handle == nullptr ? 9 : PropertySet::of(handle)->set(name, index, Type(value));
}

}  // namespace

std::vector<std::string> PropertySet::faults() {
    const std::lock_guard lock(faultMutex);
    return std::exchange(faultList, {});
}

void PropertySet::fault(const std::string& sentence) {
    const std::lock_guard lock(faultMutex);
    faultList.push_back(sentence);
}

OfxStatus PropertySet::set(const char* name, int index, const Value& value) {
    const StandardProperty* const known = standardProperty(name);
    const std::string what = kind_ + "'s " + name;
    if (known == nullptr || !known->of.contains(kind_)) {
        fault(what + " is nothing that a plug-in may set");
        return 3;
    }
    if (static_cast<std::size_t>(typeOn(kind_, name, known->type)) != value.index()) {
        fault(what + " is set with a value of another type");
        return 11;
    }
    std::vector<Value>& values = values_[name];
    if (index < 0 || (known->dimension != 0 && index >= known->dimension) ||
        static_cast<std::size_t>(index) > values.size()) {
        fault(what + " has no place " + std::to_string(index));
        return 10;
    }
    const auto* const text = std::get_if<std::string>(&value);
    if (text != nullptr && !known->words.empty() && !known->words.contains(*text)) {
        fault(what + " cannot be " + *text);
        return 11;
    }
    if (refusesAll) return 5;
    if (static_cast<std::size_t>(index) == values.size()) values.emplace_back();
    values[static_cast<std::size_t>(index)] = value;
    return 0;
}

OfxStatus PropertySet::get(const char* name, int index, Value& value) const {
    if (standardProperty(name) == nullptr) fault(std::string(name) + " is asked for, which is no property");
    const auto found = values_.find(name);
    if (found == values_.end() || refusesAll) return 3;
    if (index < 0 || static_cast<std::size_t>(index) >= found->second.size()) return 10;
    const Value& kept = found->second[static_cast<std::size_t>(index)];
    if (kept.index() != value.index()) {
        fault(std::string(name) + " is asked for as another type");
        return 11;
    }
    value = kept;
    return 0;
}

int PropertySet::dimension(const char* name) const {
    const auto found = values_.find(name);
    return found == values_.end() ? 0 : static_cast<int>(found->second.size());
}

const OfxPropertySuiteV1 propertySuite{setOne<void*, void*>,
                                       setOne<std::string, const char*>,
                                       setOne<double, double>,
                                       setOne<int, int>,
                                       setN<void*, void* const*>,
                                       setN<std::string, const char* const*>,
                                       setN<double, const double*>,
                                       setN<int, const int*>,
                                       getOne<void*, void*>,
                                       getText,
                                       getOne<double, double>,
                                       getOne<int, int>,
                                       [](auto... all) { return getN(getOne<void*, void*>, all...); },
                                       [](auto... all) { return getN(getText, all...); },
                                       [](auto... all) { return getN(getOne<double, double>, all...); },
                                       [](auto... all) { return getN(getOne<int, int>, all...); },
                                       [](OfxPropertySetHandle handle, const char* name) {
                                           PropertySet::of(handle)->erase(name);
                                           return 0;
                                       },
                                       [](OfxPropertySetHandle handle, const char* name, int* count) {
                                           *count = PropertySet::of(handle)->dimension(name);
                                           return 0;
                                       }};

}  // namespace openfx::test
