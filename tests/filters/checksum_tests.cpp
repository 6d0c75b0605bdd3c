// SPDX-License-Identifier: MIT
// What every filter renders, as checksums that lie beside this file: whatever changes a byte has to change
// that file as well. VIREO_RENEW_CHECKSUMS=1 writes it anew.
#include "tests/support/golden_file.h"
#include "tests/support/test_frame.h"

#include "host/heapkit/memory_handles.h"
#include "host/hosting/filter_instance.h"
#include "host/hosting/meta_plugin.h"
#include "host/pixkit/pixel_formats.h"
#include "host/pixkit/pixkit.h"
#include "host/vireo_host.h"

#include <cstring>
#include <map>

namespace {

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
std::map<std::string, std::vector<std::int64_t>> settingsOf(const hosting::Filter& filter) {
    std::map<std::string, std::vector<std::int64_t>> all{{"defaults", {}}};
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
    Rendering(const hosting::Filter& filter, const std::string& settings,
              const std::vector<std::int64_t>& values)
        : filter_(filter), instance_(filter.entry), withoutSettings_(settings == "without settings") {
        for (std::size_t i = 0; i < values.size(); ++i) {
            const hosting::Parameter& parameter = filter.properties.parameters[i];
            std::memcpy(instance_.settings().data() + parameter.offset, &values[i],
                        static_cast<std::size_t>(parameter.size));
        }
    }

    std::vector<std::uint32_t> pixelFormats() const {
        std::vector<std::uint32_t> formats = instance_.pixelFormats();
        if (formats.empty()) formats.push_back(PixKit::formatBgra);
        return formats;
    }

    std::string checksum(const Handing& handing, std::uint32_t format) const {
        Checksum checksum;
        for (Geometry geometry : geometries) {
            geometry.pixelBytes = PixKit::bytesPerPixel(format);
            TestFrame source(geometry), destination(geometry);
            draw(source, handing.time);
            vireoHostSetPixelFormat(source.handle(), format);
            vireoHostSetPixelFormat(destination.handle(), format);
            render({.source = source.handle(),
                    .destination = destination.handle(),
                    .time = handing.time,
                    .duration = clipDuration,
                    .fieldFlags = handing.fieldFlags,
                    .getFrame = otherFrame,
                    .getFrameData = &geometry});
            for (int y = 0; y < geometry.height; ++y) {
                checksum.add({destination.row(y), static_cast<std::size_t>(geometry.width) *
                                                      static_cast<std::size_t>(geometry.pixelBytes)});
            }
            vireoHostSetPixelFormat(source.handle(), PixKit::formatBgra);
            vireoHostSetPixelFormat(destination.handle(), PixKit::formatBgra);
        }
        return checksum.text();
    }

private:
    void render(const hosting::FrameRequest& request) const {
        if (!withoutSettings_) {
            EXPECT_EQ(instance_.render(request), 0);
            return;
        }
        static const TimeBase timeBase{{}, hosting::fieldDuration};
        vpixCopy(request.source, request.destination, &request.source->bounds, &request.source->bounds,
                 VPixCopyReplace);
        FilterInvocation invocation{};
        invocation.sourceFrame = request.source;
        invocation.destFrame = request.destination;
        invocation.frameTime = request.time;
        invocation.clipDuration = request.duration;
        invocation.fieldFlags = request.fieldFlags;
        invocation.getFrameCallback = request.getFrame;
        invocation.frameCallbackData = request.getFrameData;
        invocation.hostInstanceData = static_cast<const UtilityServices*>(vireoHostServices());
        invocation.hostCallbacks = vireoHostCallbacks();
        invocation.timeBase = &timeBase;
        FilterInvocation* pointer = &invocation;
        EXPECT_EQ(filter_.entry(nullptr, FilterSelectorExecute, &pointer), 0);
    }

    const hosting::Filter& filter_;
    hosting::FilterInstance instance_;
    bool withoutSettings_;
};

TEST(Checksums, FiltersRenderTheBytesThatTheyAlwaysDid) {
    GoldenLines lines;
    const hosting::MetaPlugin plugin(VIREO_TESTED_MODULE);
    for (const hosting::Filter& filter : plugin.filters()) {
        for (const auto& [settings, values] : settingsOf(filter)) {
            const Rendering rendering(filter, settings, values);
            for (const std::uint32_t format : rendering.pixelFormats()) {
                std::string name = filter.properties.name + ", " + settings;
                if (format != PixKit::formatBgra)
                    name += ", " + std::string(reinterpret_cast<const char*>(&format), 4);
                std::string& line = lines[name];
                for (const Handing& handing : handings)
                    line += (line.empty() ? "" : " ") + rendering.checksum(handing, format);
            }
        }
    }
    expectGolden(
        VIREO_CHECKSUMS,
        "# SPDX-License-Identifier: MIT\n"
        "# CRC-32 of what each filter renders of a whole frame, an upper and a lower field: the same with "
        "every\n"
        "# instruction set and on every system, since no value here hangs on the last bit of pow, sin or "
        "cos.\n"
        "# VIREO_RENEW_CHECKSUMS=1 build/linux/bin/checksum_tests writes this file.\n",
        lines);
}

}  // namespace
