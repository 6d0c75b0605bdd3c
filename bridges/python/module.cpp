// SPDX-License-Identifier: MIT
// vireo._engine: the engine as the package vireo wants it. Arrays are anything with Python's buffer protocol.
#include "bridges/python/catalogue.h"
#include "bridges/python/chain.h"
#include "bridges/python/error.h"

#include <pybind11/pybind11.h>

namespace py = pybind11;
using namespace vireo::python;

PYBIND11_MODULE(_engine, module) {
    defineError(module);
    module.def("version", &vireoVersion);
    module.def("instruction_set", &vireoInstructionSet);
    module.def("filters", &filters);
    module.def("presets", &presets);

    py::class_<VireoTime>(module, "Time")
        .def(py::init([](std::int64_t number, std::int64_t frames, double rate, double seconds,
                         std::int32_t interlacing) {
                 return VireoTime{sizeof(VireoTime), interlacing, number, frames, rate, seconds};
             }),
             py::arg("number"), py::arg("frames"), py::arg("rate"), py::arg("seconds"),
             py::arg("interlacing"));
    py::class_<PixelOrder>(module, "PixelOrder")
        .def(py::init([](bool isBgr, bool isPremultiplied) {
                 return PixelOrder{isBgr, isPremultiplied};
             }),
             py::arg("is_bgr"), py::arg("is_premultiplied"));

    py::class_<Chain>(module, "Chain")
        .def(py::init<>())
        .def("add_text", &Chain::addText)
        .def("add_preset", &Chain::addPreset)
        .def("add_file", &Chain::addFile)
        .def("add_settings", &Chain::addSettings)
        .def("remove", &Chain::remove)
        .def("move", &Chain::move)
        .def("set_threads", &Chain::setThreads)
        .def("length", &Chain::length)
        .def("filter", &Chain::filter)
        .def("text", &Chain::text)
        .def("filter_text", &Chain::filterText)
        .def("settings", &Chain::settings)
        .def("find_parameter", &Chain::findParameter)
        .def("set", &Chain::set)
        .def("unset", &Chain::unset)
        .def("get", &Chain::get)
        .def("is_set", &Chain::isSet)
        .def("value_at", &Chain::valueAt)
        .def("earlier_frames", [](const Chain& chain) { return chain.needs().earlierFrames; })
        .def("depths", [](const Chain& chain) { return chain.needs().depths; })
        .def("render", &Chain::render);
    py::class_<Stream>(module, "Stream")
        .def(py::init<Chain&>(), py::keep_alive<1, 2>())
        .def("render", &Stream::render);
}
