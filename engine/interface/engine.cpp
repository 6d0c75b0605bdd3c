// SPDX-License-Identifier: MIT
// The C interface: the engine, its filters and presets.
#include "engine/catalogue/languages.h"
#include "engine/commit.h"
#include "engine/files.h"
#include "engine/interface/handles.h"
#include "engine/locations.h"
#include "engine/settings/parameter_value.h"
#include "engine/settings/presets.h"
#include "engine/settings/settings_file.h"
#include "host/hosting/parameter_value.h"
#include "simd/instruction_set.h"

#include <cstdlib>

using namespace vireo;

namespace {

const hosting::Filter& filterAt(const Library& library, std::uint32_t index) {
    const auto& filters = library.module->filters();
    require(index < filters.size(), "there is no filter of this index");
    return filters[index];
}

const hosting::Parameter& parameterAt(const Library& library, std::uint32_t filter, std::uint32_t index) {
    const auto& parameters = filterAt(library, filter).properties.parameters;
    require(index < parameters.size(), "there is no parameter of this index");
    return parameters[index];
}

}  // namespace

const char* vireoVersion(void) { return VIREO_VERSION; }

const char* vireoCommit(void) { return builtFrom(); }

const char* vireoInstructionSet(void) {
    return simd::instructionSetName(simd::chosenInstructionSet()).data();
}

void vireoFree(void* memory) { std::free(memory); }

VireoStatus vireoOpen(const VireoOpenOptions* given, VireoEngine** engine) {
    return guarded([&] {
        require(engine);
        const VireoOpenOptions options = read(given);
        const std::uint16_t language = languageId(options.language == nullptr ? "en" : options.language);
        const auto path = findModule(options.module == nullptr ? "" : options.module);
        std::shared_ptr<const hosting::MetaPlugin> module;
        try {
            module = hosting::MetaPlugin::shared(path);
        } catch (const std::bad_alloc&) {
            throw;
        } catch (const std::exception& error) {
            throw Error(Fault::NoModule, error.what());
        }
        *engine = new VireoEngine{std::make_shared<const Library>(std::move(module), language)};
    });
}

void vireoClose(VireoEngine* engine) { delete engine; }

VireoStatus vireoSetLanguage(VireoEngine* engine, const char* language) {
    return guarded([&] {
        require(engine, language);
        engine->library = std::make_shared<const Library>(engine->library->module, languageId(language));
    });
}

VireoStatus vireoTranslate(const VireoEngine* engine, const char* key, char** text) {
    return guarded([&] {
        require(engine, key, text);
        *text = copyOf(localised(key, engine->library->catalogue.language()));
    });
}

uint32_t vireoFilterCount(const VireoEngine* engine) {
    return engine == nullptr ? 0 : static_cast<std::uint32_t>(engine->library->module->filters().size());
}

VireoStatus vireoDescribeFilter(const VireoEngine* engine, uint32_t index, VireoFilter* description) {
    return guarded([&] {
        require(engine, description);
        const Library& library = *engine->library;
        const hosting::Filter& filter = filterAt(library, index);
        const FilterTexts& texts = library.texts[index];
        const hosting::FilterTraits& traits = traitsOf(filter);
        VireoFilter filled{};
        filled.id = filter.id;
        filled.name = texts.name.c_str();
        filled.englishName = filter.properties.name.c_str();
        filled.category = texts.category.c_str();
        filled.englishCategory = filter.properties.category.c_str();
        filled.key = texts.key.c_str();
        filled.matchName = filter.properties.matchName.c_str();
        filled.fileName = texts.fileName.c_str();
        filled.parameterCount = static_cast<std::uint32_t>(filter.properties.parameters.size());
        filled.readsTime = traits.readsTime ? 1 : 0;
        filled.earlierFrames = static_cast<std::uint32_t>(traits.earlierFrames);
        filled.depths = texts.depths;
        filled.maximumWidth = traits.limits.width;
        filled.maximumHeight = traits.limits.height;
        filled.maximumRowBytes = traits.limits.rowBytes;
        filled.countsPixels = traits.countsPixels ? 1 : 0;
        write(filled, description);
    });
}

VireoStatus vireoFindFilter(const VireoEngine* engine, const char* name, uint32_t* filter) {
    return guarded(
        [&] {
            require(engine, name, filter);
            const hosting::Filter& found = engine->library->catalogue.find(name);
            *filter = static_cast<std::uint32_t>(&found - engine->library->module->filters().data());
        },
        name);
}

VireoStatus vireoDescribeParameter(const VireoEngine* engine, uint32_t filter, uint32_t index,
                                   VireoParameter* description) {
    return guarded([&] {
        require(engine, description);
        const Library& library = *engine->library;
        const hosting::Parameter& parameter = parameterAt(library, filter, index);
        const FilterTexts::Parameter& texts = library.texts[filter].parameters[index];
        const std::int64_t initial = readValue(parameter, library.texts[filter].initialRecord);
        VireoParameter filled{};
        filled.kind = parameter.kind == hosting::ParameterKind::Boolean ? VireoBoolean
                      : parameter.kind == hosting::ParameterKind::Color ? VireoColor
                                                                        : VireoNumber;
        filled.name = texts.name.c_str();
        filled.englishName = parameter.name.c_str();
        filled.unit = texts.unit.c_str();
        filled.minimum = parameter.minimum;
        filled.maximum = parameter.maximum;
        filled.displayMinimum = parameter.displayMinimum;
        filled.displayMaximum = parameter.displayMaximum;
        filled.initial = filled.kind == VireoColor ? swapRedAndBlue(initial) : initial;
        filled.takesPercent = filled.kind == VireoNumber && takesPercent(parameter) ? 1 : 0;
        filled.choiceCount = static_cast<std::uint32_t>(texts.choices.size());
        filled.size = static_cast<std::uint32_t>(parameter.size);
        filled.label = texts.label.c_str();
        filled.inPixels = texts.inPixels ? 1 : 0;
        write(filled, description);
    });
}

VireoStatus vireoDescribeChoice(const VireoEngine* engine, uint32_t filter, uint32_t parameter,
                                uint32_t choice, const char** word) {
    return guarded([&] {
        require(engine, word);
        parameterAt(*engine->library, filter, parameter);
        const auto& choices = engine->library->texts[filter].parameters[parameter].choices;
        require(choice < choices.size(), "there is no choice of this index");
        *word = choices[choice].c_str();
    });
}

VireoStatus vireoPresetCount(const VireoEngine* engine, uint32_t* count) {
    return guarded([&] {
        require(engine, count);
        *count = static_cast<std::uint32_t>(allPresets().size());
    });
}

VireoStatus vireoDescribePreset(const VireoEngine* engine, uint32_t index, VireoPreset* description) {
    return guarded([&] {
        require(engine, description);
        const std::vector<Preset> presets = allPresets();
        require(index < presets.size(), "there is no preset of this index");
        const Preset& preset = presets[index];
        const std::string about = settingsDescription(preset.file, readFile(preset.file));
        require(description->structSize >= sizeof *description, "a struct does not tell its size");
        using Text = std::unique_ptr<char, void (*)(void*)>;
        Text name(copyOf(preset.name), std::free), text(copyOf(about), std::free),
            file(copyOf(preset.file), std::free);
        description->name = name.release();
        description->description = text.release();
        description->file = file.release();
    });
}
