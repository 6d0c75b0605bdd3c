// SPDX-License-Identifier: MIT
#include "bridges/python/error.h"

#include <exception>
#include <new>
#include <utility>

namespace py = pybind11;

namespace vireo::python {
namespace {

constexpr char errorDocumentation[] =
    "What cannot be done, in the sentence that the command line prints.\n\n"
    "offset: where in the text that was given, in bytes of UTF-8; None for nowhere\n"
    "filter, parameter, value: what the sentence is about; empty where it is not about one";

/// Lives as long as the interpreter.
PyObject* errorType = nullptr;

void raise(const Failure& failure) {
    py::object error = py::reinterpret_borrow<py::object>(errorType)(failure.what());
    error.attr("offset") = failure.offset < 0 ? py::none() : py::object(py::int_(failure.offset));
    error.attr("filter") = failure.filter;
    error.attr("parameter") = failure.parameter;
    error.attr("value") = failure.value;
    PyErr_SetObject(errorType, error.ptr());
}

}  // namespace

void check(VireoStatus status) {
    if (status == VireoDone) return;
    if (status == VireoNoMemory) throw std::bad_alloc();
    const VireoError& last = *vireoLastError();
    Failure failure(last.sentence);
    failure.offset = last.offset;
    failure.filter = last.filter;
    failure.parameter = last.parameter;
    failure.value = last.value;
    throw failure;
}

void defineError(py::module_& module) {
    py::dict members;
    members["offset"] = py::none();
    for (const char* name : {"filter", "parameter", "value"}) members[name] = "";
    errorType = PyErr_NewExceptionWithDoc("vireo.Error", errorDocumentation, PyExc_ValueError, members.ptr());
    if (errorType == nullptr) throw py::error_already_set();
    module.attr("Error") = py::reinterpret_borrow<py::object>(errorType);
    py::register_exception_translator([](std::exception_ptr thrown) {
        try {
            if (thrown) std::rethrow_exception(std::move(thrown));
        } catch (const Failure& failure) {
            raise(failure);
        }
    });
}

}  // namespace vireo::python
