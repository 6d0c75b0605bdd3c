// SPDX-License-Identifier: MIT
// What filters and presets there are, as dictionaries from which the package makes its records.
#ifndef VIREO_PYTHON_CATALOGUE_H
#define VIREO_PYTHON_CATALOGUE_H

#include <pybind11/pybind11.h>

namespace vireo::python {

pybind11::list filters();
pybind11::list presets();

}  // namespace vireo::python

#endif
