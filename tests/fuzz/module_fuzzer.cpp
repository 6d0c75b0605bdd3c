// SPDX-License-Identifier: MIT
// Calls the filters as no sane host would. Whatever the settings, the frames' geometry and the times are, a
// filter reads the source's rows and writes the destination's, and nothing else.
#include "host/heapkit/memory_handles.h"
#include "host/pixkit/pixel_formats.h"
#include "host/qrb/exceptions.h"
#include "host/vireo_host.h"
#include "host/vrm/suites.h"
#include "tests/fuzz/guarded_frame.h"
#include "tests/fuzz/linked_filters.h"
#include "tests/fuzz/require.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <numeric>
#include <span>
#include <vector>

namespace {

#pragma pack(push, 1)

struct ShapeCase {
    std::int32_t left;
    std::int32_t top;
    std::int16_t width;
    std::int16_t height;
    std::uint8_t
        layout;  ///< Row bytes: see shapeOf(). The highest bit puts the rows against the memory's end.
    std::int16_t padding;
};

/// An input is this record, zeros standing for what it lacks, and the bytes of the settings behind it.
struct ModuleCase {
    enum Options : std::uint8_t {
        NoSettings = 1,
        OwnDestination = 2,  ///< The destination has a shape of its own.
        InPlace = 4,
        NoFrameCallback = 8,
        NoServices = 16,
        NoFormatFunction = 32,
        NoSuite = 64,
        OpaquePixels = 128
    };
    enum Calls : std::uint8_t {
        InitBefore = 1,
        InitAfter = 2,
        Format = 4,
        Flags = 8,
        Setup = 16,
        Other = 32
    };

    std::uint8_t filter;
    std::uint8_t options;
    std::uint8_t calls;
    std::uint8_t format;  ///< Of both frames.
    std::int16_t otherSelector;
    std::uint32_t formatIndex;
    ShapeCase source;
    ShapeCase destination;
    std::uint32_t frameTime;
    std::uint32_t clipDuration;
    std::uint32_t fieldDuration;
    std::uint16_t fieldFlags;
    std::uint8_t failingAllocation;  ///< Counted from 1; 0 for none.
    std::uint8_t settingsSurplus;    ///< Bytes of the handle behind the parameters.
    std::uint32_t noise;

    bool has(Options option) const { return (options & option) != 0; }
    bool has(Calls call) const { return (calls & call) != 0; }
};

#pragma pack(pop)

/// Small frames show nearly everything and take microseconds. Others take a millisecond, or some where no
/// cache may hold them.
struct SizeLimits {
    std::int64_t pixels;
    std::int64_t length;
};
constexpr SizeLimits small{1 << 11, 1 << 15}, medium{1 << 16, 1 << 19}, large{5 << 20, 20 << 20};

FrameShape shapeOf(const ShapeCase& shape, std::int64_t pixelBytes, const SizeLimits& limits) {
    constexpr std::int32_t longestSide = 6000;
    constexpr std::int32_t furthest = std::numeric_limits<std::int32_t>::max() - longestSide;
    const std::int32_t width = std::clamp<std::int32_t>(shape.width, -8, longestSide);
    std::int64_t height = std::clamp<std::int32_t>(shape.height, -8, longestSide);
    const std::int64_t rowLength = std::max(width, 0) * pixelBytes;

    const std::int64_t wholePixels = rowLength + 4 * (shape.padding & 0xFF);
    const std::int64_t anyBytes = rowLength + (shape.padding & 0x3FF), far = 16 * std::int64_t{shape.padding};
    const std::int64_t choices[] = {wholePixels, -wholePixels,  anyBytes, -anyBytes,
                                    rowLength,   shape.padding, far,      far};
    const std::int64_t rowBytes = choices[shape.layout & 7];
    if (width > 0) height = std::min(height, std::max<std::int64_t>(1, limits.pixels / width));
    if (rowBytes != 0) {
        height =
            std::min(height, 1 + std::max<std::int64_t>(0, limits.length - rowLength) / std::abs(rowBytes));
    }
    const std::int32_t left = std::clamp(std::int32_t{shape.left}, -furthest, furthest),
                       top = std::clamp(std::int32_t{shape.top}, -furthest, furthest);
    return {{left, top, left + width, top + static_cast<std::int32_t>(height)},
            static_cast<std::int32_t>(rowBytes),
            pixelBytes,
            (shape.layout & 0x80) != 0};
}

constexpr std::uint32_t horizontalFlip = 10030;
constexpr std::uint32_t verticalFlip = 10052;

/// The reference host's tables with memory that runs out.
class Host {
public:
    explicit Host(const ModuleCase& given)
        : memory_(*vireoHostCallbacks()->memory.get()),
          vpix_(*vireoHostCallbacks()->vpix.get()),
          callbacks_(*vireoHostCallbacks()) {
        memory_.newHandle = newHandle;
        memory_.newContextHandle = newHandle;
        memory_.disposeHandle = disposeHandle;
        vpix_.newVPix = newVPix;
        vpix_.disposeVPix = disposeVPix;
        callbacks_.memory = &memory_;
        callbacks_.vpix = &vpix_;
        if (given.has(ModuleCase::NoFormatFunction)) callbacks_.pixelFormat = nullptr;
        vireoHostOfferSuite(VIREO_VPIX_SUITE, !given.has(ModuleCase::NoSuite));
        failing = given.failingAllocation;
        live = 0;
    }

    const HostCallbacks* callbacks() const { return &callbacks_; }
    static int liveObjects() { return live; }

private:
    static bool fails() { return failing > 0 && --failing == 0; }
    template <class Pointer>
    static Pointer counted(Pointer object, int change) {
        if (object != nullptr) live += change;
        return object;
    }
    static MemoryHandle newHandle(std::size_t size) {
        return counted(fails() ? nullptr : HeapKit::newHandle(size), 1);
    }
    static FrameBuffer* newVPix(const FrameRect* bounds) {
        return counted(fails() ? nullptr : vpixNew(bounds), 1);
    }
    static void disposeHandle(MemoryHandle handle) { HeapKit::disposeHandle(counted(handle, -1)); }
    static void disposeVPix(FrameBuffer* buffer) { vpixDispose(counted(buffer, -1)); }

    // The host's functions carry no context of their own.
    static inline int failing = 0;
    static inline int live = 0;

    MemoryFunctions memory_;
    VPixFunctions vpix_;
    HostCallbacks callbacks_;
};

/// Another picture in the target's rows.
std::int32_t otherFrame(std::uint32_t time, FrameBuffer* target, const FrameRect*, void*) {
    const FrameRect& bounds = target->bounds;
    const std::int64_t width = std::int64_t{bounds.right} - bounds.left;
    for (std::int64_t y = 0; width > 0 && y < std::int64_t{bounds.bottom} - bounds.top; ++y) {
        std::memset(static_cast<std::uint8_t*>(target->pixels.get()) + y * target->rowBytes,
                    static_cast<int>(time),
                    static_cast<std::size_t>(width * PixKit::bytesPerPixel(PixKit::pixelFormat(target))));
    }
    return 0;
}

constexpr std::uint32_t formats[] = {PixKit::formatBgra,         PixKit::formatVuya,
                                     PixKit::formatCode("argb"), PixKit::formatCode("VUya"),
                                     PixKit::formatCode("BGra"), PixKit::formatCode("Bgra"),
                                     PixKit::formatCode("Argb"), PixKit::formatCode("badf")};
constexpr std::int16_t selectors[] = {FilterSelectorExecute, FilterSelectorSetup, FilterSelectorInitSettings,
                                      FilterSelectorGetPixelFormat, FilterSelectorGetFilterFlags};

/// Whether filters keep to the pixels of the rows: they walk both frames with one frame's geometry, cut to
/// whole pixels and by some to 16 bits, and then meet the padding of frames that differ in it.
bool staysOffPadding(const hosting::Filter& filter, const FrameShape& source, const FrameShape& destination) {
    constexpr int largest = std::numeric_limits<std::int16_t>::max();
    return source.width() == destination.width() && source.height() == destination.height() &&
           source.rowBytes == destination.rowBytes && source.rowBytes % 4 == 0 &&
           std::abs(source.rowBytes) <= largest && std::abs(source.rowBytes) >= source.rowLength() &&
           filter.id != verticalFlip;
}

class Run {
public:
    Run(const ModuleCase& given, std::span<const std::uint8_t> settings, bool mayBeSlow)
        : given_(given),
          mayBeSlow_(mayBeSlow),
          filter_(linkedFilters()[given.filter % linkedFilters().size()]),
          host_(given) {
        *invocation_ = {};
        invocation_->frameTime = given.frameTime;
        invocation_->clipDuration = given.clipDuration;
        invocation_->fieldFlags = given.fieldFlags;
        invocation_->pixelFormatIndex = given.formatIndex;
        invocation_->hostCallbacks = host_.callbacks();
        timeBase_->fieldDuration = given.fieldDuration;
        invocation_->timeBase = timeBase_.get();
        if (!given.has(ModuleCase::NoFrameCallback)) invocation_->getFrameCallback = otherFrame;
        if (!given.has(ModuleCase::NoServices)) {
            invocation_->hostInstanceData = static_cast<const UtilityServices*>(vireoHostServices());
        }
        if (given.has(ModuleCase::NoSettings)) return;
        const std::size_t size = filter_.properties.recordSize() + given.settingsSurplus;
        invocation_->settingsHandle = HeapKit::newHandle(size);
        std::copy_n(settings.begin(), std::min(size, settings.size()),
                    static_cast<std::uint8_t*>(*invocation_->settingsHandle));
    }

    ~Run() { HeapKit::disposeHandle(invocation_->settingsHandle); }

    void run() {
        const int lentHandles = Host::liveObjects();
        if (given_.has(ModuleCase::InitBefore)) callInit();
        if (given_.has(ModuleCase::Format)) REQUIRE(call(FilterSelectorGetPixelFormat) >> 1 == 0);
        if (given_.has(ModuleCase::Flags)) call(FilterSelectorGetFilterFlags);
        callExecute();
        if (given_.has(ModuleCase::Setup)) {
            // No dialog runs here.
            const std::int32_t result = call(FilterSelectorSetup);
            REQUIRE(result == 0 || result == -1 || result == 65535);
        }
        const bool isOther = std::ranges::count(selectors, given_.otherSelector) == 0;
        if (given_.has(ModuleCase::Other) && isOther) REQUIRE(call(given_.otherSelector) == 0);
        if (given_.has(ModuleCase::InitAfter)) callInit();
        const bool made = invocation_->settingsHandle != nullptr && given_.has(ModuleCase::NoSettings);
        REQUIRE(Host::liveObjects() == lentHandles + (made ? 1 : 0));
    }

private:
    std::vector<std::uint8_t> settings() const {
        if (invocation_->settingsHandle == nullptr) return {};
        const auto* bytes = static_cast<const std::uint8_t*>(*invocation_->settingsHandle);
        return {bytes, bytes + HeapKit::handleSize(invocation_->settingsHandle)};
    }

    /// A call that leaves the invocation alone, but for what it is asked to write.
    std::int32_t call(std::int16_t selector) {
        FilterInvocation expected = *invocation_;
        FilterInvocation* pointer = invocation_.get();
        const std::int32_t result = filter_.entry(nullptr, selector, &pointer);
        if (selector == FilterSelectorGetPixelFormat) expected.pixelFormat = invocation_->pixelFormat;
        if (selector == FilterSelectorInitSettings || selector == FilterSelectorSetup) {
            expected.settingsHandle = invocation_->settingsHandle;
        }
        REQUIRE(std::memcmp(&expected, invocation_.get(), sizeof expected) == 0);
        return result;
    }

    void callInit() {
        const MemoryHandle before = invocation_->settingsHandle;
        REQUIRE(call(FilterSelectorInitSettings) == (filter_.properties.recordSize() > 0 ? 1 : 0));
        REQUIRE(before == nullptr || before == invocation_->settingsHandle.get());
    }

    void callExecute() {
        const std::uint32_t format = formats[given_.format % std::size(formats)];
        const std::int64_t pixelBytes = PixKit::bytesPerPixel(format);
        // The flips treat large frames differently.
        const bool turns = filter_.id == horizontalFlip || filter_.id == verticalFlip;
        const SizeLimits& limits = !mayBeSlow_ ? small : turns ? large : medium;
        const FrameShape sourceShape = shapeOf(given_.source, pixelBytes, limits);
        const FrameShape destinationShape = given_.has(ModuleCase::OwnDestination)
                                                ? shapeOf(given_.destination, pixelBytes, limits)
                                                : sourceShape;
        const auto padding = staysOffPadding(filter_, sourceShape, destinationShape)
                                 ? GuardedFrame::Padding::Guarded
                                 : GuardedFrame::Padding::Open;
        const bool opaque = given_.has(ModuleCase::OpaquePixels);
        GuardedFrame source(sourceShape, padding, given_.noise, opaque);
        GuardedFrame destination(destinationShape, padding, ~given_.noise, opaque);
        for (GuardedFrame* frame : {&source, &destination}) vireoHostSetPixelFormat(frame->handle(), format);
        const bool inPlace = given_.has(ModuleCase::InPlace);
        invocation_->sourceFrame = source.handle();
        invocation_->destFrame = inPlace ? source.handle() : destination.handle();

        const std::vector<std::uint8_t> stored = settings();
        try {
            // Bend alone tells of a buffer that cannot be made.
            REQUIRE(call(FilterSelectorExecute) >> 1 == 0);
        } catch (const QRB::Exception&) {
            REQUIRE(given_.has(ModuleCase::NoSuite));
        }
        REQUIRE(stored == settings());

        for (GuardedFrame* frame : {&source, &destination})
            vireoHostSetPixelFormat(frame->handle(), PixKit::formatBgra);
        REQUIRE(source.kept(inPlace) && destination.kept(!inPlace));
        invocation_->sourceFrame = nullptr;
        invocation_->destFrame = nullptr;
    }

    const ModuleCase& given_;
    const bool mayBeSlow_;
    const hosting::Filter& filter_;
    const Host host_;
    // On the heap, where nothing else lies beside them.
    const std::unique_ptr<FilterInvocation> invocation_ = std::make_unique<FilterInvocation>();
    const std::unique_ptr<TimeBase> timeBase_ = std::make_unique<TimeBase>();
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span input(data, size);
    ModuleCase given{};
    std::memcpy(&given, data, std::min(size, sizeof given));
    // Few inputs may, and few of what a fuzzer makes of these.
    const bool mayBeSlow = std::accumulate(data, data + size, 0) % 64 == 0;
    Run(given, input.subspan(std::min(size, sizeof given)), mayBeSlow).run();
    return 0;
}
