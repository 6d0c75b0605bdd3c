// SPDX-License-Identifier: MIT
// Calls the filters as no sane host would. Whatever the settings, the frames' geometry and the times are, a
// filter reads the source's rows and writes the destination's, and nothing else.
#include "host/heapkit/memory_handles.h"
#include "host/pixkit/pixel_formats.h"
#include "host/qrb/exceptions.h"
#include "host/vireo_host.h"
#include "host/vrm/suites.h"
#include "tests/fuzz/linked_filters.h"
#include "tests/fuzz/module_case.h"
#include "tests/fuzz/require.h"

#include <cstdlib>
#include <vector>

namespace {

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
    static MemoryHandle newHandle(std::size_t size) {
        if (fails()) return nullptr;
        ++live;
        return HeapKit::newHandle(size);
    }
    static void disposeHandle(MemoryHandle handle) {
        if (handle != nullptr) --live;
        HeapKit::disposeHandle(handle);
    }
    static FrameBuffer* newVPix(const FrameRect* bounds) {
        FrameBuffer* const buffer = fails() ? nullptr : vpixNew(bounds);
        if (buffer != nullptr) ++live;
        return buffer;
    }
    static void disposeVPix(FrameBuffer* buffer) {
        if (buffer != nullptr) --live;
        vpixDispose(buffer);
    }

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

std::uint32_t formatOf(std::uint8_t choice) {
    static constexpr std::uint32_t formats[] = {PixKit::formatBgra,         PixKit::formatVuya,
                                                PixKit::formatCode("argb"), PixKit::formatCode("VUya"),
                                                PixKit::formatCode("BGra"), PixKit::formatCode("Bgra"),
                                                PixKit::formatCode("Argb"), PixKit::formatCode("badf")};
    return formats[choice % std::size(formats)];
}

class FormattedFrame : public GuardedFrame {
public:
    template <class... Arguments>
    explicit FormattedFrame(std::uint32_t format, Arguments&&... arguments) : GuardedFrame(arguments...) {
        vireoHostSetPixelFormat(handle(), format);
    }
    ~FormattedFrame() { vireoHostSetPixelFormat(handle(), PixKit::formatBgra); }
};

/// Whether filters keep to the pixels of the rows: they walk both frames with one frame's geometry, cut to
/// whole pixels and by some to 16 bits, and then meet the padding of frames that differ in it.
bool staysOffPadding(const hosting::Filter& filter, const FrameShape& source, const FrameShape& destination) {
    constexpr int largest = std::numeric_limits<std::int16_t>::max();
    return source == destination && source.rowBytes % 4 == 0 && std::abs(source.rowBytes) <= largest &&
           std::abs(source.rowBytes) >= source.rowLength() && filter.id != verticalFlip;
}

class Run {
public:
    Run(const ModuleCase& given, std::span<const std::uint8_t> settings)
        : given_(given), filter_(linkedFilters()[given.filter % linkedFilters().size()]), host_(given) {
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
        if (!given.has(ModuleCase::NoSettings)) storeSettings(settings);
    }

    ~Run() { HeapKit::disposeHandle(invocation_->settingsHandle); }

    void run() {
        const int lentHandles = Host::liveObjects();
        if (given_.has(ModuleCase::InitBefore)) callInit();
        if (given_.has(ModuleCase::Format)) REQUIRE(call(FilterSelectorGetPixelFormat) >> 1 == 0);
        if (given_.has(ModuleCase::Flags)) call(FilterSelectorGetFilterFlags);
        callExecute();
        if (given_.has(ModuleCase::Setup)) callSetup();
        if (given_.has(ModuleCase::Other)) callOther();
        if (given_.has(ModuleCase::InitAfter)) callInit();
        const bool made = invocation_->settingsHandle != nullptr && given_.has(ModuleCase::NoSettings);
        REQUIRE(Host::liveObjects() == lentHandles + (made ? 1 : 0));
    }

private:
    void storeSettings(std::span<const std::uint8_t> settings) {
        const std::size_t size = filter_.properties.recordSize() + given_.settingsSurplus;
        invocation_->settingsHandle = HeapKit::newHandle(size);
        std::copy_n(settings.begin(), std::min(size, settings.size()),
                    static_cast<std::uint8_t*>(*invocation_->settingsHandle));
    }

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
        const std::uint32_t format = formatOf(given_.format);
        const std::int64_t pixelBytes = PixKit::bytesPerPixel(format);
        // Those that treat large frames differently.
        const bool large = filter_.id == horizontalFlip || filter_.id == verticalFlip;
        const FrameShape sourceShape = shapeOf(given_.source, pixelBytes, large);
        const FrameShape destinationShape = given_.has(ModuleCase::OwnDestination)
                                                ? shapeOf(given_.destination, pixelBytes, large)
                                                : sourceShape;
        const auto padding = staysOffPadding(filter_, sourceShape, destinationShape)
                                 ? GuardedFrame::Padding::Guarded
                                 : GuardedFrame::Padding::Open;
        const bool opaque = given_.has(ModuleCase::OpaquePixels);
        FormattedFrame source(format, sourceShape, padding, given_.noise, opaque);
        FormattedFrame destination(format, destinationShape, padding, ~given_.noise, opaque);
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

        source.open();
        destination.open();
        REQUIRE(inPlace ? source.changedInRowsOnly() : source.unchanged());
        REQUIRE(inPlace ? destination.unchanged() : destination.changedInRowsOnly());
        invocation_->sourceFrame = nullptr;
        invocation_->destFrame = nullptr;
    }

    // No dialog runs here.
    void callSetup() {
        const std::int32_t result = call(FilterSelectorSetup);
        REQUIRE(result == 0 || result == -1 || result == 65535);
    }

    void callOther() {
        const std::int16_t selector = given_.otherSelector;
        const bool known = selector == FilterSelectorExecute || selector == FilterSelectorSetup ||
                           selector == FilterSelectorInitSettings ||
                           selector == FilterSelectorGetPixelFormat ||
                           selector == FilterSelectorGetFilterFlags;
        if (!known) REQUIRE(call(selector) == 0);
    }

    const ModuleCase& given_;
    const hosting::Filter& filter_;
    const Host host_;
    // On the heap, where nothing else lies beside them.
    const std::unique_ptr<FilterInvocation> invocation_ = std::make_unique<FilterInvocation>();
    const std::unique_ptr<TimeBase> timeBase_ = std::make_unique<TimeBase>();
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::span input(data, size);
    const ModuleCase given = moduleCase(input);
    Run(given, input.subspan(std::min(size, sizeof given))).run();
    return 0;
}
