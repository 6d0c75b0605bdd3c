// SPDX-License-Identifier: MIT
#include "bridges/gstreamer/elements.h"

#include "bridges/gstreamer/properties.h"
#include "bridges/gstreamer/video_filter.h"

#include <string>
#include <vector>

namespace vireo::gstreamer {
namespace {

constexpr gint fullMix = 100;

/// Parameters have the properties from 1 on, and mix is behind them.
using Values = std::vector<std::int64_t>;

struct FilterElement {
    VideoFilter parent;
    Values* values;    ///< As properties say, under the object's lock.
    Values* rendered;  ///< As the chain has them.
};

struct FilterElementClass {
    VideoFilterClass parent;
    std::uint32_t filter;
    Values* initial;
};

/// What a type is made from.
struct Facts {
    std::uint32_t filter;
    std::string type;
    std::string element;
};

GObjectClass* parentClass = nullptr;

FilterElement* of(gpointer object) { return static_cast<FilterElement*>(object); }

std::string updateChain(VideoFilter* filter, VireoChain* chain) {
    FilterElement& element = *of(filter);
    GST_OBJECT_LOCK(filter);
    const Values values = *element.values;
    GST_OBJECT_UNLOCK(filter);
    Values& rendered = *element.rendered;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (values[i] == rendered[i]) continue;
        const std::int32_t parameter = i + 1 < values.size() ? static_cast<std::int32_t>(i) : VireoMix;
        if (vireoChainSetValue(chain, 0, parameter, values[i]) != VireoDone)
            return vireoLastError()->sentence;
        rendered[i] = values[i];
    }
    return {};
}

void setProperty(GObject* object, guint id, const GValue* value, GParamSpec* property) {
    if (id >= sharedProperties) return setSharedProperty(object, id, value, property);
    GST_OBJECT_LOCK(object);
    of(object)->values->at(id - 1) = storedValue(*value);
    GST_OBJECT_UNLOCK(object);
}

void getProperty(GObject* object, guint id, GValue* value, GParamSpec* property) {
    if (id >= sharedProperties) return getSharedProperty(object, id, value, property);
    GST_OBJECT_LOCK(object);
    setStoredValue(*value, of(object)->values->at(id - 1));
    GST_OBJECT_UNLOCK(object);
}

void initInstance(GTypeInstance* instance, gpointer type) {
    const auto& facts = *static_cast<FilterElementClass*>(type);
    FilterElement& element = *of(instance);
    element.values = new Values(*facts.initial);
    element.rendered = new Values(*facts.initial);
    VireoChain* const chain = element.parent.rendering->chain.get();
    if (chain != nullptr && vireoChainAddFilter(chain, facts.filter) != VireoDone)
        GST_ERROR_OBJECT(instance, "%s", vireoLastError()->sentence);
}

void finalize(GObject* object) {
    delete of(object)->values;
    delete of(object)->rendered;
    parentClass->finalize(object);
}

void initClass(gpointer type, gpointer data) {
    parentClass = static_cast<GObjectClass*>(g_type_class_peek_parent(type));
    const auto& [index, typeName, elementName] = *static_cast<const Facts*>(data);
    const VireoFilter filter = describeFilter(index);
    auto* const own = static_cast<FilterElementClass*>(type);
    own->filter = index;
    own->initial = new Values;

    auto* const object = static_cast<GObjectClass*>(type);
    object->finalize = finalize;
    object->set_property = setProperty;
    object->get_property = getProperty;
    for (std::uint32_t i = 0; i < filter.parameterCount; ++i) {
        own->initial->push_back(describeParameter(index, i).initial);
        g_object_class_install_property(object, i + 1, newProperty(typeName.c_str(), index, i));
    }
    own->initial->push_back(fullMix);
    g_object_class_install_property(
        object, filter.parameterCount + 1,
        g_param_spec_int("mix", "Mix",
                         "How much of the filter's picture is seen over what it was given, in %", 0, fullMix,
                         fullMix, parameterFlags));
    if (filter.readsTime != 0) installClipLength(object);

    own->parent.updateChain = updateChain;
    const std::string name = std::string("Vireo ") + filter.englishName;
    const std::string description =
        std::string("Renders ") + filter.englishName + ", a filter of the category " + filter.englishCategory;
    describeElement(type, name.c_str(), description.c_str());
}

/// "lensdistortion" and "LensDistortion" of "lens_distortion".
Facts factsOf(std::uint32_t index) {
    Facts facts{index, "GstVireo", "vireo"};
    bool isBegin = true;
    for (const char c : std::string(describeFilter(index).fileName)) {
        if (c != '_') {
            facts.element += c;
            facts.type += isBegin ? g_ascii_toupper(c) : c;
        }
        isBegin = c == '_';
    }
    return facts;
}

}  // namespace

bool registerFilterElements(GstPlugin* plugin) {
    // Types live as long as the process, and so do their facts.
    static std::vector<Facts> filters;
    for (std::uint32_t i = 0; i < vireoFilterCount(engine()); ++i) filters.push_back(factsOf(i));
    for (const Facts& facts : filters) {
        const ElementType type{.element = facts.element.c_str(),
                               .type = facts.type.c_str(),
                               .initClass = initClass,
                               .classData = &facts,
                               .classSize = sizeof(FilterElementClass),
                               .instanceSize = sizeof(FilterElement),
                               .initInstance = initInstance};
        if (!registerElement(plugin, type)) return false;
    }
    return true;
}

}  // namespace vireo::gstreamer
