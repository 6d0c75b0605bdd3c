// SPDX-License-Identifier: MIT
#include "bridges/python/catalogue.h"

#include "bridges/python/chain.h"
#include "bridges/python/error.h"

#include <cstdint>

namespace py = pybind11;
using namespace py::literals;

namespace vireo::python {
namespace {

const char* wordOf(VireoKind kind) {
    switch (kind) {
        case VireoBoolean: return "boolean";
        case VireoColor: return "colour";
        default: return "number";
    }
}

py::dict parameterOf(std::uint32_t filter, std::uint32_t index) {
    VireoParameter parameter{};
    parameter.structSize = sizeof parameter;
    check(vireoDescribeParameter(engine(), filter, index, &parameter));
    py::list choices;
    for (std::uint32_t i = 0; i < parameter.choiceCount; ++i) {
        const char* word;
        check(vireoDescribeChoice(engine(), filter, index, i, &word));
        choices.append(word);
    }
    return py::dict("name"_a = parameter.name, "label"_a = parameter.label, "kind"_a = wordOf(parameter.kind),
                    "minimum"_a = parameter.minimum, "maximum"_a = parameter.maximum,
                    "display_minimum"_a = parameter.displayMinimum,
                    "display_maximum"_a = parameter.displayMaximum, "unit"_a = parameter.unit,
                    "initial"_a = parameter.initial, "takes_percent"_a = parameter.takesPercent != 0,
                    "choices"_a = choices);
}

py::dict filterOf(std::uint32_t index) {
    VireoFilter filter{};
    filter.structSize = sizeof filter;
    check(vireoDescribeFilter(engine(), index, &filter));
    py::list parameters;
    for (std::uint32_t i = 0; i < filter.parameterCount; ++i) parameters.append(parameterOf(index, i));
    return py::dict("name"_a = filter.name, "category"_a = filter.category, "id"_a = filter.id,
                    "key"_a = filter.key, "match_name"_a = filter.matchName, "file_name"_a = filter.fileName,
                    "parameters"_a = parameters, "reads_time"_a = filter.readsTime != 0,
                    "earlier_frames"_a = filter.earlierFrames, "depths"_a = filter.depths,
                    "maximum_width"_a = filter.maximumWidth, "maximum_height"_a = filter.maximumHeight,
                    "maximum_row_bytes"_a = filter.maximumRowBytes);
}

}  // namespace

py::list filters() {
    py::list all;
    for (std::uint32_t i = 0; i < vireoFilterCount(engine()); ++i) all.append(filterOf(i));
    return all;
}

py::list presets() {
    std::uint32_t count;
    check(vireoPresetCount(engine(), &count));
    py::list all;
    for (std::uint32_t i = 0; i < count; ++i) {
        VireoPreset preset{};
        preset.structSize = sizeof preset;
        check(vireoDescribePreset(engine(), i, &preset));
        all.append(py::dict("name"_a = takeText(preset.name), "description"_a = takeText(preset.description),
                            "file"_a = takeText(preset.file)));
    }
    return all;
}

}  // namespace vireo::python
