// SPDX-License-Identifier: MIT
#ifndef VIREO_BRIDGES_OPENFX_PROPERTIES_H
#define VIREO_BRIDGES_OPENFX_PROPERTIES_H

#include "bridges/openfx/ofx.h"

#include <initializer_list>
#include <string>

namespace openfx {

/// What a host keeps of one of its objects. Hosts differ in what they know: what is missing has a value that
/// the caller gives, and what a host does not take is left out.
class Properties {
public:
    Properties(const OfxPropertySuiteV1& suite, OfxPropertySetHandle handle)
        : suite_(suite), handle_(handle) {}

    void set(const char* name, int value, int index = 0) const {
        suite_.propSetInt(handle_, name, index, value);
    }
    void set(const char* name, double value, int index = 0) const {
        suite_.propSetDouble(handle_, name, index, value);
    }
    void set(const char* name, const std::string& value, int index = 0) const {
        suite_.propSetString(handle_, name, index, value.c_str());
    }
    void set(const char* name, void* value) const { suite_.propSetPointer(handle_, name, 0, value); }

    template <class Value>
    void setAll(const char* name, std::initializer_list<Value> values) const {
        int index = 0;
        for (const Value& value : values) set(name, value, index++);
    }

    int integer(const char* name, int missing, int index = 0) const {
        int value = missing;
        return suite_.propGetInt(handle_, name, index, &value) == ofx::Ok ? value : missing;
    }
    double number(const char* name, double missing, int index = 0) const {
        double value = missing;
        return suite_.propGetDouble(handle_, name, index, &value) == ofx::Ok ? value : missing;
    }
    std::string text(const char* name) const {
        char* value = nullptr;
        const bool isThere = suite_.propGetString(handle_, name, 0, &value) == ofx::Ok && value != nullptr;
        return isThere ? value : "";
    }
    void* pointer(const char* name) const {
        void* value = nullptr;
        return suite_.propGetPointer(handle_, name, 0, &value) == ofx::Ok ? value : nullptr;
    }
    OfxRectI rectangle(const char* name) const {
        return {integer(name, 0, 0), integer(name, 0, 1), integer(name, 0, 2), integer(name, 0, 3)};
    }

private:
    const OfxPropertySuiteV1& suite_;
    OfxPropertySetHandle handle_;
};

}  // namespace openfx

#endif
