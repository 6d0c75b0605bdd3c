// SPDX-License-Identifier: MIT
#ifndef VIREO_HOST_HOSTING_FILTER_INSTANCE_H
#define VIREO_HOST_HOSTING_FILTER_INSTANCE_H

#include "host/host_export.h"
#include "host/vrm/filter_invocation.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace hosting {

struct Filter;

/// The default clock: fields, two to a frame.
inline constexpr std::uint32_t fieldDuration = 1;

/// One Execute. Both buffers have the same geometry and format.
struct FrameRequest {
    FrameBuffer* source = nullptr;
    FrameBuffer* destination = nullptr;
    std::uint32_t time = 0;      ///< In fields: frame n is at 2 n.
    std::uint32_t duration = 0;  ///< Of the whole clip, in fields; 0 where unknown.
    std::uint16_t fieldFlags = 0;
    GetFrameFunction* getFrame = nullptr;
    void* getFrameData = nullptr;
    /// So many rows at the destination's top become copies of the source's before the filter writes there;
    /// null: all.
    std::optional<std::int32_t> filledRows = {};
};

/// A filter in use with settings of its own. The constructor runs InitSettings; the settings handle goes with
/// the instance. render() may run on several threads at once while nobody writes the settings.
class VIREO_HOST_API FilterInstance {
public:
    explicit FilterInstance(FilterEntryProc entry);
    FilterInstance(const FilterInstance&) = delete;
    FilterInstance& operator=(const FilterInstance&) = delete;
    FilterInstance(FilterInstance&& other) noexcept;
    FilterInstance& operator=(FilterInstance&& other) noexcept;
    ~FilterInstance();

    /// The bytes of the settings handle; empty for filters that keep none.
    std::span<std::uint8_t> settings() const;

    /// The formats that the filter offers at selector 6, in its order; empty for filters that do not answer.
    std::vector<std::uint32_t> pixelFormats() const;

    /// Fills the destination with a copy of the source unless told otherwise, then runs Execute and returns
    /// its result. Exceptions of the module pass through.
    std::int32_t render(const FrameRequest& request) const;

    /// Runs the settings dialog over a picture; the destination is its scratch. Returns the dialog's result.
    std::int32_t setup(FrameBuffer* source, FrameBuffer* destination);

private:
    FilterEntryProc entry_;
    MemoryHandle settings_ = nullptr;
};

/// The filter with the settings that it starts with, whose record holds every parameter. Throws
/// std::bad_alloc.
VIREO_HOST_API FilterInstance newInstance(const Filter& filter);

}  // namespace hosting

#endif
