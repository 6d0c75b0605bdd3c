// SPDX-License-Identifier: MIT
#ifndef VIREO_HOST_QRB_EXCEPTIONS_H
#define VIREO_HOST_QRB_EXCEPTIONS_H

#include "host/host_export.h"

#include <exception>

namespace QRB {

class VIREO_HOST_API Exception : public std::exception {
public:
    ~Exception() override;
};

/// A suite's function returned a negative value.
class VIREO_HOST_API SuiteCallFailed : public Exception {
public:
    ~SuiteCallFailed() override;
    const char* what() const noexcept override;
};

}  // namespace QRB

#endif
