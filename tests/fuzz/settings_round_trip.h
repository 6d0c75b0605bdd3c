// SPDX-License-Identifier: MIT
#ifndef VIREO_TESTS_FUZZ_SETTINGS_ROUND_TRIP_H
#define VIREO_TESTS_FUZZ_SETTINGS_ROUND_TRIP_H

#include "engine/error.h"
#include "engine/settings/settings_file.h"
#include "tests/fuzz/linked_filters.h"
#include "tests/fuzz/require.h"

inline const vireo::Catalogue& linkedCatalogue() {
    static const vireo::Catalogue catalogue(linkedFilters());
    return catalogue;
}

/// The settings handle's bytes at a frame, or nothing where key frames turn out to be out of order.
inline auto recordAt(const vireo::FilterSettings& settings, std::int64_t frame) {
    vireo::FramePosition position;
    position.number = frame;
    position.seconds = static_cast<double>(frame) / position.frameRate;
    return readOrRefused<vireo::Error>([&] {
        settings.covers(position);
        REQUIRE(settings.mixAt(position) >= 0 && settings.mixAt(position) <= 100);
        return settings.record(position);
    });
}

/// A chain that was read is written as a file that reads as the same chain.
template <class Read>
void requireRoundTrip(Read&& read) {
    const auto chain = readOrRefused<vireo::Error>(read);
    if (!chain || chain->empty()) return;
    const std::string text = vireo::settingsText(*chain);
    const auto again = vireo::parseSettings(linkedCatalogue(), "written", text);
    REQUIRE(vireo::settingsText(again) == text);
    REQUIRE(again.size() == chain->size());
    for (std::size_t i = 0; i < again.size(); ++i) {
        REQUIRE(&again[i].filter() == &chain->at(i).filter());
        for (const std::int64_t frame : {0, 1, 30, 100000})
            REQUIRE(recordAt(again[i], frame) == recordAt(chain->at(i), frame));
    }
}

#endif
