// SPDX-License-Identifier: MIT
#include "bridges/gstreamer/elements.h"

#include "bridges/gstreamer/video_filter.h"

#include <array>
#include <string>
#include <utility>

namespace vireo::gstreamer {
namespace {

/// What a chain is made from, in the order in which it is put together.
enum Part : guint { Location = 1, Preset, Filters };
using Parts = std::array<std::string, Filters + 1>;

struct ChainElement {
    VideoFilter parent;
    Parts* parts;      ///< Under the object's lock.
    bool isOutOfDate;  ///< Whether they changed since; under the object's lock.
};

struct ChainElementClass {
    VideoFilterClass parent;
};

GObjectClass* parentClass = nullptr;

/// Empty, or why the parts cannot be added.
std::string add(const Parts& parts, VireoChain* chain) {
    using Add = VireoStatus (*)(VireoChain*, const char*);
    constexpr std::array<std::pair<Part, Add>, Filters> adds = {
        {{Location, vireoChainAddFile}, {Preset, vireoChainAddPreset}, {Filters, vireoChainAddText}}};
    for (const auto& [part, addPart] : adds)
        if (!parts[part].empty() && addPart(chain, parts[part].c_str()) != VireoDone)
            return vireoLastError()->sentence;
    return {};
}

void removeFilters(VireoChain* chain, std::uint32_t begin, std::uint32_t end) {
    for (std::uint32_t i = begin; i < end; ++i) vireoChainRemove(chain, begin);
}

/// Filters are exchanged within the chain, whose stream keeps its frames.
std::string updateChain(VideoFilter* filter, VireoChain* chain) {
    auto* const element = reinterpret_cast<ChainElement*>(filter);
    GST_OBJECT_LOCK(filter);
    const bool isNew = std::exchange(element->isOutOfDate, false);
    const Parts parts = isNew ? *element->parts : Parts();
    GST_OBJECT_UNLOCK(filter);
    if (!isNew) return {};

    const std::uint32_t former = vireoChainLength(chain);
    std::string failure = add(parts, chain);
    if (failure.empty()) {
        removeFilters(chain, 0, former);
    } else {
        removeFilters(chain, former, vireoChainLength(chain));
    }
    return failure;
}

void setProperty(GObject* object, guint id, const GValue* value, GParamSpec* property) {
    if (id >= sharedProperties) return setSharedProperty(object, id, value, property);
    auto* const element = reinterpret_cast<ChainElement*>(object);
    const char* const text = g_value_get_string(value);
    GST_OBJECT_LOCK(object);
    (*element->parts)[id] = text == nullptr ? "" : text;
    element->isOutOfDate = true;
    GST_OBJECT_UNLOCK(object);
}

void getProperty(GObject* object, guint id, GValue* value, GParamSpec* property) {
    if (id >= sharedProperties) return getSharedProperty(object, id, value, property);
    GST_OBJECT_LOCK(object);
    const std::string& part = (*reinterpret_cast<ChainElement*>(object)->parts)[id];
    g_value_set_string(value, part.empty() ? nullptr : part.c_str());
    GST_OBJECT_UNLOCK(object);
}

void initInstance(GTypeInstance* instance, gpointer) {
    reinterpret_cast<ChainElement*>(instance)->parts = new Parts;
}

void finalize(GObject* object) {
    delete reinterpret_cast<ChainElement*>(object)->parts;
    parentClass->finalize(object);
}

void initClass(gpointer type, gpointer) {
    parentClass = static_cast<GObjectClass*>(g_type_class_peek_parent(type));
    auto* const object = static_cast<GObjectClass*>(type);
    object->finalize = finalize;
    object->set_property = setProperty;
    object->get_property = getProperty;
    const auto install = [object](Part part, const char* name, const char* nick, const char* blurb) {
        constexpr auto flags = static_cast<GParamFlags>(G_PARAM_READWRITE | GST_PARAM_MUTABLE_PLAYING);
        g_object_class_install_property(object, part, g_param_spec_string(name, nick, blurb, nullptr, flags));
    };
    install(Location, "location", "Location",
            "File of settings, or of Levels, with the first filters of the chain");
    install(Preset, "preset", "Preset",
            "Ready-made look whose filters come next, as vireo presets lists them");
    install(Filters, "filters", "Filters",
            "Filters that come last: NAME:parameter=value,parameter=value; NAME");
    installClipLength(object);
    static_cast<VideoFilterClass*>(type)->updateChain = updateChain;
    describeElement(type, "Vireo chain",
                    "Renders a chain of Vireo filters, with key frames, stretches and mixes");
}

}  // namespace

bool registerChainElement(GstPlugin* plugin) {
    return registerElement(plugin, {.element = "vireo",
                                    .type = "GstVireo",
                                    .initClass = initClass,
                                    .classSize = sizeof(ChainElementClass),
                                    .instanceSize = sizeof(ChainElement),
                                    .initInstance = initInstance});
}

}  // namespace vireo::gstreamer
