// SPDX-License-Identifier: MIT
// What the program shows to scripts: plain C, addresses and numbers. No exception leaves it. Texts are UTF-8
// with a zero behind them and live until the next call that gives a text.
#include "bridges/web/chain.h"
#include "bridges/web/picture.h"
#include "host/commit.h"
#include "host/mtkcore/instruction_set.h"
#include "host/mtkcore/localizer.h"
#include "host/mtkcore/utility.h"
#include "host/vireo_host.h"
#include "host/vrm/filter_traits.h"
#include "host/vrm/parameter_value.h"

#include <cstdlib>
#include <exception>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>

#define VIREO_WEB_EXPORT(name) extern "C" __attribute__((export_name(name), visibility("default")))

/// Writes the chain's input at a frame, rows from the bottom, to `pixels`. 0 when it is there.
extern "C" __attribute__((import_module("vireo"), import_name("fetch"))) int vireoFetch(
    std::int32_t frame, std::uint8_t* pixels, std::int32_t rowBytes);

namespace web {
namespace {

/// Four times the bytes of such a picture fit the memory that the program may have. What does not fit is
/// never asked for, since memory that was refused once comes in pieces from then on.
constexpr std::int64_t mostPixels = 120'000'000;

struct Engine {
    VRM::MetaPlugin module{"VireoFiltersMetaPlugin.vrmp"};
    Chain chain;
    std::shared_ptr<Picture> input;
    PicturePtr result;
    std::string text;
    std::string failure;
};

Engine& engine() {
    static Engine engine;
    return engine;
}

const VRM::Filter& filterAt(std::size_t index) { return engine().module.filters().at(index); }

const VRM::FilterTraits& traitsOf(std::size_t filter) {
    return VRM::filterTraits(filterAt(filter).properties.matchName);
}

const char* keep(std::string text) {
    engine().text = std::move(text);
    return engine().text.c_str();
}

const char* localised(const std::string& key) {
    return keep(mtkcore::utility::UTF16ToUtf8(mtkcore::config::Localizer::Get().Translate(key)));
}

/// Whether `work` went through; else vireo_failure() tells why.
template <class Work>
int succeeded(Work&& work) {
    try {
        work();
        return 1;
    } catch (const std::bad_alloc&) {
        engine().failure = "there is not enough memory for this picture";
    } catch (const std::exception& exception) {
        engine().failure = exception.what();
    } catch (...) {
        engine().failure = "the filter failed";
    }
    return 0;
}

PicturePtr fetchedInput(std::int32_t frame) {
    const Picture& now = *engine().input;
    auto picture = std::make_shared<Picture>(now.width(), now.height());
    if (vireoFetch(frame, picture->pixels(), picture->rowBytes()) != 0) {
        throw std::runtime_error("frame " + std::to_string(frame) + " is not there");
    }
    picture->exchangeRedAndBlue();
    return picture;
}

}  // namespace

VIREO_WEB_EXPORT("vireo_failure") const char* failure() { return engine().failure.c_str(); }

VIREO_WEB_EXPORT("vireo_instruction_set") const char* instructionSet() {
    return keep(std::string(mtkcore::instructionSetName(mtkcore::chosenInstructionSet())));
}

VIREO_WEB_EXPORT("vireo_version") const char* version() { return VIREO_VERSION; }

VIREO_WEB_EXPORT("vireo_commit") const char* commit() { return vireo::builtFrom(); }

VIREO_WEB_EXPORT("vireo_allocate") void* allocate(std::size_t bytes) { return std::malloc(bytes); }

VIREO_WEB_EXPORT("vireo_free") void release(void* memory) { std::free(memory); }

VIREO_WEB_EXPORT("vireo_set_language") void setLanguage(std::uint16_t language) {
    vireoHostSetLanguage(language);
}

VIREO_WEB_EXPORT("vireo_translated") const char* translated(const char* key) { return localised(key); }

VIREO_WEB_EXPORT("vireo_filter_count") std::size_t filterCount() { return engine().module.filters().size(); }

VIREO_WEB_EXPORT("vireo_filter_id") std::uint32_t filterId(std::size_t filter) { return filterAt(filter).id; }

VIREO_WEB_EXPORT("vireo_filter_name_key") const char* filterNameKey(std::size_t filter) {
    return filterAt(filter).properties.nameKey.c_str();
}

VIREO_WEB_EXPORT("vireo_filter_category_key") const char* filterCategoryKey(std::size_t filter) {
    return filterAt(filter).properties.categoryKey.c_str();
}

VIREO_WEB_EXPORT("vireo_filter_match_name") const char* filterMatchName(std::size_t filter) {
    return filterAt(filter).properties.matchName.c_str();
}

VIREO_WEB_EXPORT("vireo_filter_reads_time") int filterReadsTime(std::size_t filter) {
    return traitsOf(filter).readsTime ? 1 : 0;
}

VIREO_WEB_EXPORT("vireo_filter_look_back") int filterLookBack(std::size_t filter) {
    return traitsOf(filter).earlierFrames;
}

VIREO_WEB_EXPORT("vireo_parameter_count") std::size_t parameterCount(std::size_t filter) {
    return filterAt(filter).properties.parameters.size();
}

VIREO_WEB_EXPORT("vireo_parameter_key") const char* parameterKey(std::size_t filter, std::size_t parameter) {
    return filterAt(filter).properties.parameters.at(parameter).key.c_str();
}

/// Seven numbers: kind (0 number, 1 check box, 2 colour), minimum, maximum, display minimum, display maximum,
/// the value that InitSettings gives, bytes in the record.
VIREO_WEB_EXPORT("vireo_describe_parameter")
void describeParameter(std::size_t filter, std::size_t index, double* numbers) {
    const VRM::Parameter& parameter = filterAt(filter).properties.parameters.at(index);
    const VRM::FilterInstance instance = VRM::newInstance(filterAt(filter));
    *numbers++ = static_cast<int>(parameter.kind);
    *numbers++ = parameter.minimum;
    *numbers++ = parameter.maximum;
    *numbers++ = parameter.displayMinimum;
    *numbers++ = parameter.displayMaximum;
    *numbers++ = static_cast<double>(VRM::readValue(parameter, instance.settings()));
    *numbers++ = parameter.size;
}

/// Forgets the last rendering and begins another: an empty chain, and an input whose rows begin at the
/// address given back and run from the bottom, every row vireo_row_bytes() after the one before. 0 without
/// memory.
VIREO_WEB_EXPORT("vireo_begin") std::uint8_t* begin(std::int32_t width, std::int32_t height) {
    Engine& it = engine();
    it.chain = {};
    it.result.reset();
    it.input.reset();
    const bool isThere = succeeded([&] {
        if (std::int64_t{width} * height > mostPixels) throw std::bad_alloc();
        it.input = std::make_shared<Picture>(width, height);
        // Room for a filter's source and result and what it keeps aside: filters say nothing where it is
        // missing.
        const Picture source(width, height), result(width, height), aside(width, height);
    });
    if (!isThere) it.input.reset();
    return isThere ? it.input->pixels() : nullptr;
}

VIREO_WEB_EXPORT("vireo_row_bytes") std::int32_t rowBytes() { return engine().input->rowBytes(); }

/// Adds a filter to the chain. 1, or 0 with vireo_failure().
VIREO_WEB_EXPORT("vireo_add")
int add(std::size_t filter, const double* values, std::size_t count, double mix) {
    return succeeded([&] { engine().chain.add(filterAt(filter), {values, count}, mix); });
}

/// Renders the input, which is used up. Gives the result in the input's layout, or 0 with vireo_failure().
/// vireo_end() or the next vireo_begin() frees it.
VIREO_WEB_EXPORT("vireo_render") const std::uint8_t* render(std::int32_t frame, std::int32_t frames) {
    Engine& it = engine();
    const bool isDone = succeeded([&] {
        it.input->exchangeRedAndBlue();
        it.result = it.chain.render(it.input, {frame, frames}, fetchedInput);
        std::const_pointer_cast<Picture>(it.result)->exchangeRedAndBlue();
    });
    return isDone ? it.result->pixels() : nullptr;
}

/// Frees the pictures and the chain of the last rendering.
VIREO_WEB_EXPORT("vireo_end") void end() {
    Engine& it = engine();
    it.chain = {};
    it.result.reset();
    it.input.reset();
}

}  // namespace web
