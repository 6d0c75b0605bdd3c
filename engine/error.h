// SPDX-License-Identifier: MIT
#ifndef VIREO_ENGINE_ERROR_H
#define VIREO_ENGINE_ERROR_H

#include <exception>
#include <string>
#include <string_view>
#include <utility>

namespace vireo {

/// Kinds of failure that a program may want to tell apart.
enum class Fault {
    Failed,            ///< Something could not be done.
    Usage,             ///< Something was asked for that makes no sense.
    NoModule,          ///< There is no module, or it cannot be loaded.
    UnknownFilter,     ///< No filter, or more than one, goes by a name.
    UnknownParameter,  ///< The same of a filter's parameter.
    BadValue,          ///< A parameter does not take a value.
    BadText,           ///< A text has not the form that it needs.
    BadSettings,    ///< A settings file, a Levels file or a handle's bytes are damaged or for something else.
    UnknownPreset,  ///< No preset, or more than one, goes by a name.
    TooLarge,       ///< A filter does not take frames of a size.
    Unsupported,    ///< A chain does not render frames of a format.
    NoFrame,        ///< An earlier frame that a filter needs is not there.
    Cancelled,      ///< The caller asked for an end.
};

/// Something the user can read: one sentence without a full stop.
class Error : public std::exception {
public:
    /// `status` is the exit status that it gives a program: 1 failed, 130 interrupted, 143 terminated.
    explicit Error(std::string sentence, int status = 1)
        : sentence_(std::move(sentence)), status_(status), fault_(Fault::Failed) {}

    /// `place` begins where the sentence points to in a text that the caller has.
    Error(Fault fault, std::string sentence, std::string_view place = {})
        : sentence_(std::move(sentence)), status_(exitStatus(fault)), fault_(fault), place_(place.data()) {}

    const char* what() const noexcept override { return sentence_.c_str(); }
    int status() const { return status_; }
    Fault fault() const { return fault_; }

    /// An address in the text that was read, to be compared and never followed; null where there is none.
    const char* place() const { return place_; }

    /// What the sentence is about, for programs that say it in other words; empty where it is not about one.
    const std::string& filter() const { return filter_; }
    const std::string& parameter() const { return parameter_; }
    const std::string& value() const { return value_; }

    /// Names what the sentence is about.
    Error& about(std::string filter, std::string parameter = {}, std::string value = {}) {
        filter_ = std::move(filter);
        parameter_ = std::move(parameter);
        value_ = std::move(value);
        return *this;
    }

    /// Points to a text, unless the sentence points more closely already.
    Error& within(std::string_view text) {
        if (place_ == nullptr) place_ = text.data();
        return *this;
    }

private:
    /// What was written wrongly is wrong usage on a command line; what lies in files or frames is not.
    static int exitStatus(Fault fault) {
        switch (fault) {
            case Fault::Usage:
            case Fault::UnknownFilter:
            case Fault::UnknownParameter:
            case Fault::BadValue:
            case Fault::BadText:
            case Fault::UnknownPreset: return 2;
            default: return 1;
        }
    }

    std::string sentence_;
    int status_;
    Fault fault_;
    const char* place_ = nullptr;
    std::string filter_, parameter_, value_;
};

}  // namespace vireo

#endif
