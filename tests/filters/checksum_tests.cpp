// SPDX-License-Identifier: MIT
// What every filter renders, as checksums that lie beside this file: whatever changes a byte has to change
// that file as well. VIREO_RENEW_CHECKSUMS=1 writes it anew.
#include "tests/support/filter_under_test.h"
#include "tests/support/golden_file.h"

#include "host/hosting/filter_instance.h"
#include "host/hosting/meta_plugin.h"
#include "host/pixkit/pixkit.h"

#include <algorithm>
#include <map>

namespace {

using Values = std::vector<std::int64_t>;

/// How a frame is handed over: one column of the file each.
struct Handing {
    std::uint32_t time;
    std::uint16_t fieldFlags;
};
constexpr Handing handings[] = {{12, 0}, {13, FieldFlagUpper}, {41, FieldFlagLower}};
constexpr std::uint32_t clipDuration = 60;

constexpr Geometry geometries[] = {{.width = 1, .height = 1},
                                   {.width = 37, .height = 23, .padding = 12, .left = -7, .top = 12},
                                   {.width = 64, .height = 48, .negativeRowBytes = true},
                                   {.width = 203, .height = 117, .padding = 4}};

std::uint8_t triangle(std::uint32_t value) {
    return static_cast<std::uint8_t>(value & 0x100 ? ~value : value);
}

/// Slopes with a little noise, which move with time; a third of the frame is opaque, a third shows through.
void draw(TestFrame& frame, std::uint32_t time) {
    const Geometry& geometry = frame.geometry();
    Random random(time + 1);
    for (int y = 0; y < geometry.height; ++y) {
        std::uint8_t* byte = frame.row(y);
        for (int x = 0; x < geometry.width; ++x) {
            const auto at = static_cast<std::uint32_t>(3 * x + 5 * y) + 7 * time;
            const auto noise = static_cast<std::uint32_t>(random());
            std::uint8_t pixel[] = {triangle(at + (noise & 15)), triangle(2 * at + (noise >> 8 & 15)),
                                    triangle(at / 2 + static_cast<std::uint32_t>(9 * y)),
                                    static_cast<std::uint8_t>(noise >> 16)};
            if (3 * x < geometry.width) pixel[3] = 255;
            if (3 * x >= 2 * geometry.width) pixel[3] = 0;
            for (int i = 0; i < geometry.pixelBytes; ++i) *byte++ = pixel[i % 4];
        }
    }
}

/// The clip at another time, for filters that look back; `data` is the frame's geometry.
std::int32_t otherFrame(std::uint32_t time, FrameBuffer* target, const FrameRect* bounds, void* data) {
    TestFrame frame(*static_cast<const Geometry*>(data));
    draw(frame, time);
    vpixCopy(frame.handle(), target, bounds, bounds, VPixCopyReplace);
    return 0;
}

std::int64_t nextValue(const hosting::Parameter& parameter, Random& random) {
    switch (parameter.kind) {
        case hosting::ParameterKind::Boolean: return random() & 1;
        case hosting::ParameterKind::Color: return random() & 0xFFFFFF;
        default: break;
    }
    const auto first = static_cast<std::int64_t>(parameter.minimum);
    const auto last = static_cast<std::int64_t>(parameter.maximum);
    return first + random() % (last - first + 1);
}

/// The values that a filter is rendered with, by what the file calls them.
std::map<std::string, Values> settingsOf(const hosting::Filter& filter) {
    std::map<std::string, Values> all{{"defaults", {}}};
    const auto& parameters = filter.properties.parameters;
    if (parameters.empty()) return all;
    all["without settings"] = {};
    for (const hosting::Parameter& parameter : parameters) {
        const bool isColor = parameter.kind == hosting::ParameterKind::Color;
        all["lowest"].push_back(isColor ? 0 : static_cast<std::int64_t>(parameter.minimum));
        all["highest"].push_back(isColor ? 0xFFFFFF : static_cast<std::int64_t>(parameter.maximum));
    }
    for (std::uint32_t number = 1; number <= 6; ++number) {
        Random random(1000 * filter.id + number);
        auto& values = all["mixed " + std::to_string(number)];
        for (const hosting::Parameter& parameter : parameters) values.push_back(nextValue(parameter, random));
    }
    return all;
}

class Rendering {
public:
    Rendering(const hosting::Filter& filter, std::uint32_t format) : filter_(filter), tested_(filter.id) {
        tested_.pixelFormat = format;
        tested_.invocation.getFrameCallback = otherFrame;
    }

    /// Those of a fresh instance, but for the first values.
    void store(const Values& values) {
        tested_.dropSettings();
        tested_.call(FilterSelectorInitSettings);
        std::vector<std::uint8_t> record = tested_.settings();
        for (std::size_t i = 0; i < values.size(); ++i) {
            const hosting::Parameter& parameter = filter_.properties.parameters[i];
            std::memcpy(record.data() + parameter.offset, &values[i],
                        static_cast<std::size_t>(parameter.size));
        }
        if (!record.empty()) tested_.setSettings(record);
    }

    void dropSettings() { tested_.dropSettings(); }

    std::string checksum(const Handing& handing) {
        Checksum checksum;
        for (const Geometry& geometry : geometries) add(checksum, geometry, handing, clipDuration);
        return checksum.text();
    }

    /// Of frames of every width, each with settings, a time and a field of its own. Some settings are such as
    /// no host lets anybody choose. Camera View gets none of these and no single line, which hang on the last
    /// bit of a sine.
    std::string checksumOfAnything() {
        constexpr std::int64_t odd[] = {0, 1, -1, 127, 128, 255, 256, 32767, 32768, INT32_MAX, INT32_MIN};
        Checksum checksum;
        constexpr std::uint32_t cameraViewId = 10011;
        const bool isCameraView = filter_.id == cameraViewId;
        Random random(filter_.id);
        for (const Geometry& geometry : geometriesOfEveryWidth()) {
            if (isCameraView && std::min(geometry.width, geometry.height) < 2) continue;
            Values values;
            for (const hosting::Parameter& parameter : filter_.properties.parameters) {
                const std::int64_t value = nextValue(parameter, random);
                values.push_back(!isCameraView && random() % 16 == 0 ? odd[random() % std::size(odd)]
                                                                     : value);
            }
            store(values);
            if (random() % 8 == 0) tested_.dropSettings();
            const auto time = static_cast<std::uint32_t>(random());
            const auto fieldFlags = static_cast<std::uint16_t>(random());
            add(checksum, geometry, {random() % 4 == 0 ? time : time % 100, fieldFlags}, time >> 8 & 127);
        }
        return checksum.text();
    }

private:
    void add(Checksum& checksum, Geometry geometry, const Handing& handing, std::uint32_t duration) {
        geometry.pixelBytes = PixKit::bytesPerPixel(tested_.pixelFormat);
        TestFrame source(geometry), destination(geometry);
        draw(source, handing.time);
        draw(destination, handing.time);  // Hosts hand out a copy.
        tested_.invocation.frameTime = handing.time;
        tested_.invocation.clipDuration = duration;
        tested_.invocation.fieldFlags = handing.fieldFlags;
        tested_.invocation.frameCallbackData = &geometry;
        tested_.render(source, destination);
        for (int y = 0; y < geometry.height; ++y) {
            checksum.add(
                {destination.row(y), static_cast<std::size_t>(geometry.width * geometry.pixelBytes)});
        }
    }

    const hosting::Filter& filter_;
    FilterUnderTest tested_;
};

TEST(Checksums, FiltersRenderTheBytesThatTheyAlwaysDid) {
    GoldenLines lines;
    for (const hosting::Filter& filter : testedFilters()) {
        auto formats = hosting::FilterInstance(filter.entry).pixelFormats();
        if (formats.empty()) formats.push_back(PixKit::formatBgra);
        for (const std::uint32_t format : formats) {
            const std::string suffix =
                format == PixKit::formatBgra
                    ? ""
                    : ", " + std::string(reinterpret_cast<const char*>(&format), sizeof format);
            Rendering rendering(filter, format);
            lines[filter.properties.name + ", anything" + suffix] = rendering.checksumOfAnything();
            for (const auto& [settings, values] : settingsOf(filter)) {
                rendering.store(values);
                if (settings == "without settings") rendering.dropSettings();
                std::string& line = lines[filter.properties.name + ", " + settings + suffix];
                for (const Handing& handing : handings)
                    line += (line.empty() ? "" : " ") + rendering.checksum(handing);
            }
        }
    }
    expectGolden(VIREO_CHECKSUMS,
                 "# SPDX-License-Identifier: MIT\n"
                 "# CRC-32 of what each filter renders of a whole frame, an upper and a lower field, and of "
                 "frames of\n"
                 "# every width with anything: the same with every instruction set and on every system, "
                 "since no value\n"
                 "# here hangs on the last bit of pow, sin or cos.\n"
                 "# VIREO_RENEW_CHECKSUMS=1 build/linux/bin/checksum_tests writes this file.\n",
                 lines);
}

}  // namespace
