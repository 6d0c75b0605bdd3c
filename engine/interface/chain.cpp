// SPDX-License-Identifier: MIT
// The C interface: chains, their texts and values.
#include "engine/interface/handles.h"
#include "engine/settings/parameter_value.h"
#include "engine/settings/settings_file.h"

#include <cmath>
#include <cstdio>

using namespace vireo;

namespace {

constexpr char unnamedSettings[] = "settings";

const FilterSettings& filterAt(const VireoChain* chain, std::uint32_t position) {
    require(chain);
    require(position < chain->settings.filters().size(), "the chain has no filter at this position");
    return chain->settings.filters()[position];
}

/// Changes one filter of a chain by way of a copy, so that a failure leaves the chain as it was.
template <class Change>
void edit(VireoChain* chain, std::uint32_t position, Change&& change) {
    FilterSettings changed = filterAt(chain, position);
    change(changed);
    chain->settings.edit(position) = std::move(changed);
    chain->changed();
}

/// Adds to a chain.
template <class Add>
VireoStatus add(VireoChain* chain, Add&& addTo, const char* text = nullptr) {
    return guarded(
        [&] {
            require(chain);
            addTo(chain->settings);
            chain->changed();
        },
        text);
}

bool isColor(const FilterSettings& filter, std::int32_t parameter) {
    return parameter >= 0 &&
           filter.filter().properties.parameters[static_cast<std::size_t>(parameter)].kind ==
               hosting::ParameterKind::Color;
}

/// A value as settings store it. What is no colour stays, so that it is refused as it was given.
std::int64_t stored(const FilterSettings& filter, std::int32_t parameter, std::int64_t value) {
    return isColor(filter, parameter) && value >= 0 && value <= 0xFFFFFF ? swapRedAndBlue(value) : value;
}

/// A stored value as the caller has it. The fourth byte of a colour means nothing.
std::int64_t shown(const FilterSettings& filter, std::int32_t parameter, std::int64_t value) {
    return isColor(filter, parameter) ? swapRedAndBlue(value) : value;
}

Transition transitionOf(const VireoKey& key) {
    switch (numberOf(key.transition)) {
        case VireoLinear: return Transition::Linear;
        case VireoHold: return Transition::Hold;
        case VireoSmooth: return Transition::Smooth;
        default: throw Error(Fault::Usage, "a transition is linear, hold or smooth");
    }
}

/// What was given as bytes is written out as values. Throws Error where no text can say them.
std::string textOf(FilterSettings filter, const VireoSpelling& spelling) {
    const std::int32_t number = numberOf(spelling);
    require(number == VireoSpellingFull || number == VireoSpellingCompact, "a spelling is full or compact");
    if (filter.hasBytes()) filter.assignFromBytes();
    return filterText(filter, number == VireoSpellingCompact ? Spelling::Compact : Spelling::Full);
}

/// A time as it would be typed.
ClipTime clipTime(const VireoKey& key) {
    if (key.frame >= 0) return *parseClipTime(std::to_string(key.frame) + 'f');
    require(std::isfinite(key.seconds) && key.seconds >= 0 && key.seconds <= 1e9,
            "a key frame's seconds are from 0 to 1000000000");
    constexpr long long second = 1'000'000'000;
    const long long nanoseconds = std::llround(key.seconds * static_cast<double>(second));
    char text[64];
    std::snprintf(text, sizeof text, "%lld.%09lld", nanoseconds / second, nanoseconds % second);
    std::string digits(text);
    digits.erase(digits.find_last_not_of('0') + 1);
    if (digits.back() == '.') digits.pop_back();
    return *parseClipTime(digits + 's');
}

void give(const void* bytes, std::size_t count, void** copy, std::size_t* length) {
    *copy = copyOf({static_cast<const char*>(bytes), count});
    *length = count;
}

}  // namespace

VireoStatus vireoChainNew(const VireoEngine* engine, VireoChain** chain) {
    return guarded([&] {
        require(engine, chain);
        *chain = new VireoChain(engine->library);
    });
}

VireoStatus vireoChainCopy(const VireoChain* chain, VireoChain** copy) {
    return guarded([&] {
        require(chain, copy);
        auto made = std::make_unique<VireoChain>(chain->library);
        made->settings = chain->settings;
        made->threads = chain->threads;
        *copy = made.release();
    });
}

void vireoChainClose(VireoChain* chain) {
    delete chain;
    Picture::releaseMemory();
}

VireoStatus vireoChainAddText(VireoChain* chain, const char* text) {
    return add(
        chain, [&](ChainSettings& settings) { require(text), settings.addText(text); }, text);
}

VireoStatus vireoChainAddFilter(VireoChain* chain, uint32_t filter) {
    return add(chain, [&](ChainSettings& settings) {
        const auto& filters = chain->library->module->filters();
        require(filter < filters.size(), "there is no filter of this index");
        settings.add(FilterSettings(filters[filter], settings.catalogue().language()));
    });
}

VireoStatus vireoChainAddPreset(VireoChain* chain, const char* name) {
    return add(
        chain, [&](ChainSettings& settings) { require(name), settings.addPreset(name); }, name);
}

VireoStatus vireoChainAddSettings(VireoChain* chain, const char* text, size_t length, const char* shownName) {
    return add(chain, [&](ChainSettings& settings) {
        require(text);
        settings.addSettings(shownName == nullptr ? unnamedSettings : shownName, {text, length});
    });
}

VireoStatus vireoChainAddLevels(VireoChain* chain, const void* content, size_t length,
                                const char* shownName) {
    return add(chain, [&](ChainSettings& settings) {
        require(content);
        settings.addLevels(shownName == nullptr ? unnamedSettings : shownName,
                           {static_cast<const char*>(content), length});
    });
}

VireoStatus vireoChainAddFile(VireoChain* chain, const char* path) {
    return add(chain, [&](ChainSettings& settings) { require(path), settings.addFile(path); });
}

uint32_t vireoChainLength(const VireoChain* chain) {
    return chain == nullptr ? 0 : static_cast<std::uint32_t>(chain->settings.filters().size());
}

VireoStatus vireoChainFilter(const VireoChain* chain, uint32_t position, uint32_t* filter) {
    return guarded([&] {
        require(filter);
        const hosting::Filter& used = filterAt(chain, position).filter();
        *filter = static_cast<std::uint32_t>(&used - chain->library->module->filters().data());
    });
}

VireoStatus vireoChainRemove(VireoChain* chain, uint32_t position) {
    return add(chain, [&](ChainSettings& settings) { settings.remove(position); });
}

VireoStatus vireoChainMove(VireoChain* chain, uint32_t from, uint32_t to) {
    return add(chain, [&](ChainSettings& settings) { settings.move(from, to); });
}

VireoStatus vireoChainText(const VireoChain* chain, VireoSpelling spelling, char** text) {
    return guarded([&] {
        require(chain, text);
        std::string all;
        for (const FilterSettings& filter : chain->settings.filters()) {
            if (!all.empty()) all += "; ";
            all += textOf(filter, spelling);
        }
        *text = copyOf(all);
    });
}

VireoStatus vireoChainFilterText(const VireoChain* chain, uint32_t position, VireoSpelling spelling,
                                 char** text) {
    return guarded([&] {
        require(text);
        *text = copyOf(textOf(filterAt(chain, position), spelling));
    });
}

VireoStatus vireoChainSettings(const VireoChain* chain, char** text) {
    return guarded([&] {
        require(chain, text);
        *text = copyOf(chain->settings.settingsText());
    });
}

VireoStatus vireoChainFindParameter(const VireoChain* chain, uint32_t position, const char* name,
                                    int32_t* parameter) {
    return guarded(
        [&] {
            require(name, parameter);
            *parameter = filterAt(chain, position).find(name);
        },
        name);
}

VireoStatus vireoChainSet(VireoChain* chain, uint32_t position, int32_t parameter, const char* value) {
    return guarded(
        [&] {
            require(value);
            edit(chain, position, [&](FilterSettings& filter) { filter.set(parameter, value); });
        },
        value);
}

VireoStatus vireoChainGet(const VireoChain* chain, uint32_t position, int32_t parameter, char** value) {
    return guarded([&] {
        require(value);
        *value = copyOf(filterAt(chain, position).text(parameter));
    });
}

VireoStatus vireoChainUnset(VireoChain* chain, uint32_t position, int32_t parameter) {
    return guarded([&] { edit(chain, position, [&](FilterSettings& filter) { filter.unset(parameter); }); });
}

VireoStatus vireoChainIsSet(const VireoChain* chain, uint32_t position, int32_t parameter, int32_t* isSet) {
    return guarded([&] {
        require(isSet);
        *isSet = filterAt(chain, position).isSet(parameter) ? 1 : 0;
    });
}

VireoStatus vireoChainSetValue(VireoChain* chain, uint32_t position, int32_t parameter, int64_t value) {
    return guarded([&] {
        edit(chain, position, [&](FilterSettings& filter) {
            filter.value(parameter);  // refuses what is no parameter
            filter.set(parameter, ValueTrack(stored(filter, parameter, value)));
        });
    });
}

VireoStatus vireoChainValue(const VireoChain* chain, uint32_t position, int32_t parameter,
                            const VireoTime* time, int64_t* value) {
    return guarded([&] {
        require(value);
        const FilterSettings& filter = filterAt(chain, position);
        *value = shown(filter, parameter, filter.value(parameter).at(positionOf(time)));
    });
}

VireoStatus vireoChainCovers(const VireoChain* chain, uint32_t position, const VireoTime* time,
                             int32_t* covers) {
    return guarded([&] {
        require(covers);
        *covers = filterAt(chain, position).covers(positionOf(time)) ? 1 : 0;
    });
}

VireoStatus vireoChainKeys(const VireoChain* chain, uint32_t position, int32_t parameter, VireoKey* keys,
                           uint32_t capacity, uint32_t* count) {
    return guarded([&] {
        require(count);
        require(keys != nullptr || capacity == 0, "an argument that must not be null is null");
        const FilterSettings& filter = filterAt(chain, position);
        const ValueTrack track = filter.value(parameter);
        *count = track.isKeyed() ? static_cast<std::uint32_t>(track.keys().size()) : 0;
        for (std::uint32_t i = 0; i < std::min(*count, capacity); ++i) {
            const ValueTrack::Key& key = track.keys()[i];
            keys[i] = {key.time.frame.value_or(-1), key.time.seconds, shown(filter, parameter, key.value),
                       key.toNext == Transition::Hold     ? VireoHold
                       : key.toNext == Transition::Smooth ? VireoSmooth
                                                          : VireoLinear};
        }
    });
}

VireoStatus vireoChainSetKeys(VireoChain* chain, uint32_t position, int32_t parameter, const VireoKey* keys,
                              uint32_t count) {
    return guarded([&] {
        require(keys);
        require(count > 0, "key frames are at least one");
        edit(chain, position, [&](FilterSettings& filter) {
            filter.value(parameter);  // refuses what is no parameter
            std::vector<ValueTrack::Key> track;
            for (std::uint32_t i = 0; i < count; ++i) {
                track.push_back(
                    {clipTime(keys[i]), stored(filter, parameter, keys[i].value), transitionOf(keys[i])});
            }
            filter.set(parameter, ValueTrack(std::move(track), isColor(filter, parameter)));
        });
    });
}

VireoStatus vireoChainSetBytes(VireoChain* chain, uint32_t position, const void* bytes, size_t length) {
    return guarded([&] {
        require(bytes);
        edit(chain, position, [&](FilterSettings& filter) {
            filter.setBytes({static_cast<const std::uint8_t*>(bytes), length});
        });
    });
}

VireoStatus vireoChainBytes(const VireoChain* chain, uint32_t position, const VireoTime* time, void** bytes,
                            size_t* length) {
    return guarded([&] {
        require(bytes, length);
        const auto record = filterAt(chain, position).record(positionOf(time));
        give(record.data(), record.size(), bytes, length);
    });
}

VireoStatus vireoChainLevels(const VireoChain* chain, uint32_t position, const VireoTime* time,
                             void** content, size_t* length) {
    return guarded([&] {
        require(content, length);
        const FilterSettings& filter = filterAt(chain, position);
        require(filter.filter().properties.name == levelsFilter, "only Levels has a Levels file");
        const std::string file = levelsFile(filter.record(positionOf(time)));
        give(file.data(), file.size(), content, length);
    });
}
