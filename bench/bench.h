// SPDX-License-Identifier: MIT
#ifndef VIREO_BENCH_BENCH_H
#define VIREO_BENCH_BENCH_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace bench {

struct FrameSize {
    const char* name;
    int width;
    int height;

    std::size_t bytes() const { return std::size_t{4} * static_cast<std::size_t>(width * height); }
};

inline constexpr FrameSize frameSizes[] = {{"1080p", 1920, 1080}, {"2160p", 3840, 2160}};

/// A source and a destination of 4-byte pixels without padding. The source is a smooth picture with noise, a
/// transparent border and an opaque middle.
struct Frames {
    explicit Frames(const FrameSize& size);

    FrameSize size;
    std::unique_ptr<std::uint8_t[]> memory;
    std::uint8_t* source;
    std::uint8_t* destination;
};

/// Makes what is timed for one frame size; everything that a user would do once happens here.
using Setup = std::function<std::function<void()>(Frames&)>;

/// Times a job at both frame sizes. `subject` is the filter; `who` is "Vireo" or a peer's function.
void add(const std::string& subject, const std::string& who, Setup setup);

inline const std::string ourselves = "Vireo";

}  // namespace bench

#endif
