// SPDX-License-Identifier: MIT
// Failures on their way to Python.
#ifndef VIREO_PYTHON_ERROR_H
#define VIREO_PYTHON_ERROR_H

#include "vireo/vireo.h"

#include <pybind11/pybind11.h>

#include <cstdint>
#include <stdexcept>
#include <string>

namespace vireo::python {

/// Becomes vireo.Error.
struct Failure : std::runtime_error {
    using std::runtime_error::runtime_error;
    std::int64_t offset = -1;
    std::string filter, parameter, value;
};

/// Throws what the thread's last call of the engine failed with.
void check(VireoStatus status);

void defineError(pybind11::module_& module);

}  // namespace vireo::python

#endif
