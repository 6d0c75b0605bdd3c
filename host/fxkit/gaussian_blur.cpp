// SPDX-License-Identifier: MIT
#include "host/fxkit/gaussian_blur.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstring>
#include <new>
#include <numbers>
#include <thread>
#include <vector>

namespace FxKit {
namespace {

// Beyond this the picture is a speck in the window and the result stays as it is.
constexpr double longestReach = 1 << 24;

/// Smaller pictures are done before other threads are awake.
constexpr std::int64_t leastPixels = 1 << 14;

std::int64_t wholeReach(double reach) {
    return reach >= 1 ? static_cast<std::int64_t>(std::min(reach, longestReach)) : 0;
}

/// A direction of the blur, with the table it points to.
class Axis {
public:
    /// The results carry `scale` times the weight of the pixels.
    Axis(std::int64_t reach, std::int64_t length, double scale) {
        axis_.reach = reach;
        axis_.length = length;
        setWeights(scale);
        setStart();
    }

    const BlurAxis& operator*() const { return axis_; }

private:
    double frequency(int cosine) const {
        return 2 * std::numbers::pi * cosine / static_cast<double>(2 * axis_.reach + 1);
    }

    /// Places are counted in units of the cosine at the window's ends: what enters and leaves then drives
    /// every pendulum alike.
    double unit(int cosine) const { return std::cos(frequency(cosine) * static_cast<double>(axis_.reach)); }

    void setWeights(double scale) {
        // The weights depend on the shape alone, which no longer changes beyond this reach.
        const auto reach = static_cast<int>(std::min<std::int64_t>(axis_.reach, 4096));
        double sum = 1;
        double cosineSums[1 + blurCosines] = {1, 1, 1, 1};
        for (int i = 1; i <= reach; ++i) {
            const double distance = static_cast<double>(i) / reach;
            const double weight = 2 * std::exp(-4.5 * distance * distance);
            sum += weight;
            for (int k = 1; k <= blurCosines; ++k) {
                cosineSums[k] += weight * std::cos(2 * std::numbers::pi * k * i / (2 * reach + 1));
            }
        }
        const double perPixel = scale / static_cast<double>(2 * axis_.reach + 1);
        axis_.weights[0] = static_cast<float>(perPixel);
        axis_.half = static_cast<float>(0.5 / perPixel);
        for (int k = 1; k <= blurCosines; ++k) {
            // A window this small has no room for the cosine.
            const double amplitude = k <= reach ? 2 * cosineSums[k] / sum : 0;
            axis_.weights[k] = static_cast<float>(perPixel * amplitude * unit(k));
            axis_.pull[k - 1] = static_cast<float>(2 - 2 * std::cos(frequency(k)));
        }
    }

    /// The first pixel stands for all before it, the last in reach for all behind it.
    void setStart() {
        const std::int64_t last = std::min(axis_.reach, axis_.length - 1);
        start_.resize(static_cast<std::size_t>(last) + 1);
        for (BlurState& pixel : start_) pixel.values[0] = 1;
        start_.front().values[0] += static_cast<float>(axis_.reach);
        start_.back().values[0] += static_cast<float>(axis_.reach - last);
        for (int k = 1; k <= blurCosines; ++k) {
            const double w = frequency(k);
            // The cosines of the whole window add up to 0, those of either half to -1/2.
            double placesLeft = -0.5;
            double here = 1;
            for (std::int64_t x = 0; x <= last; ++x) {
                const std::int64_t nextX = x == last ? axis_.reach + 1 : x + 1;
                const double next = std::cos(w * static_cast<double>(nextX));
                double place = here;
                double speed = here - next;
                if (x == 0) {
                    place -= 0.5;
                    speed += unit(k) - here;
                } else {
                    placesLeft -= here;
                }
                if (x == last) place += placesLeft;
                start_[x].values[2 * k - 1] = static_cast<float>(place / unit(k));
                start_[x].values[2 * k] = static_cast<float>(speed / unit(k));
                here = next;
            }
        }
        axis_.start = start_.data();
        axis_.startCount = last + 1;
    }

    BlurAxis axis_;
    std::vector<BlurState> start_;
};

void copyRows(const BlurFrame& frame) {
    for (std::int64_t y = 0; y < frame.height; ++y) {
        std::memmove(frame.destination + y * frame.destinationRowBytes,
                     frame.source + y * frame.sourceRowBytes, static_cast<std::size_t>(4 * frame.width));
    }
}

/// Blurs between pictures that lie apart. The source's rows are readable for at least a strip.
///
/// Bands of rows are blurred down into a block that holds them column by column and stays in the cache, then
/// across from there: both directions are the same walk. Strips are columns that are walked down together,
/// and rows that are walked across together.
class BandedBlur {
public:
    /// So many bands that follow one another may be under way.
    BandedBlur(const BlurKernels& kernels, const BlurFrame& frame, const BlurAxis& down,
               const BlurAxis& across, int blocks)
        : kernels_(kernels),
          frame_(frame),
          down_(down),
          across_(across),
          width_(std::max<std::int64_t>(frame.width, kernels.stripPixels)),
          blocks_(blocks),
          statesDown_(static_cast<std::size_t>(stateSize() * strips())),
          statesAcross_(static_cast<std::size_t>(stateSize() * bandStrips() * blocks)),
          memory_(static_cast<std::size_t>(column * width_ * blocks)) {}

    std::int64_t bands() const { return (frame_.height + bandRows - 1) / bandRows; }

    /// The last one laps over its neighbour.
    std::int64_t strips() const { return (width_ + strip() - 1) / strip(); }

    /// Blurs strips of a band down, behind the band before it.
    void walkDown(std::int64_t band, std::int64_t firstStrip, std::int64_t endStrip) {
        for (std::int64_t s = firstStrip; s < endStrip; ++s) {
            const std::int64_t x = std::min(s * strip(), width_ - strip());
            const std::uint8_t* top = frame_.source + 4 * x;
            float* state = statesDown_.data() + s * stateSize();
            if (band == 0) kernels_.startBytes(down_, top, frame_.sourceRowBytes, state);
            kernels_.walkBytes(down_, top, frame_.sourceRowBytes, band * bandRows, rowsOf(band), state,
                               block(band) + x * column, column, kernels_.stripPixels);
        }
    }

    /// Blurs a band that was blurred down across, as far as those strips reach, behind the strips before.
    void walkAcross(std::int64_t band, std::int64_t firstStrip, std::int64_t endStrip) {
        const std::int64_t x = firstStrip * strip();
        const std::int64_t count = std::min(endStrip * strip(), frame_.width) - x;
        for (std::int64_t row = 0; row < rowsOf(band); row += strip()) {
            const std::int16_t* left = block(band) + 4 * row;
            float* state =
                statesAcross_.data() + (band % blocks_ * bandStrips() + row / strip()) * stateSize();
            if (x == 0) kernels_.startFixed(across_, left, column, state);
            kernels_.walkFixed(
                across_, left, column, x, count, state,
                frame_.destination + (band * bandRows + row) * frame_.destinationRowBytes + 4 * x,
                frame_.destinationRowBytes, static_cast<int>(std::min(strip(), rowsOf(band) - row)));
        }
    }

private:
    static constexpr std::int64_t bandRows = 32;
    static constexpr std::ptrdiff_t column = 4 * bandRows;

    std::int64_t strip() const { return kernels_.stripPixels; }
    std::int64_t bandStrips() const { return (bandRows + strip() - 1) / strip(); }
    std::int64_t stateSize() const { return blurStateValues * 4 * strip(); }
    std::int64_t rowsOf(std::int64_t band) const {
        return std::min(bandRows, frame_.height - band * bandRows);
    }
    std::int16_t* block(std::int64_t band) { return memory_.data() + band % blocks_ * column * width_; }

    const BlurKernels& kernels_;
    const BlurFrame& frame_;
    const BlurAxis& down_;
    const BlurAxis& across_;
    const std::int64_t width_;
    const std::int64_t blocks_;
    std::vector<float> statesDown_;
    std::vector<float> statesAcross_;
    std::vector<std::int16_t> memory_;
};

void blurAlone(const BlurKernels& kernels, const BlurFrame& frame, const BlurAxis& down,
               const BlurAxis& across) {
    BandedBlur blur(kernels, frame, down, across, 1);
    for (std::int64_t band = 0; band < blur.bands(); ++band) {
        blur.walkDown(band, 0, blur.strips());
        blur.walkAcross(band, 0, blur.strips());
    }
}

/// The same in parts of the picture's width, so that what a thread blurred down it mostly finds in its own
/// caches when it goes across. A part's steps go down in a band and then across in the band before, and begin
/// when what they need is there; threads look for such steps and never sleep, since to wake takes longer than
/// a step. Any number of threads gets to the end.
class SharedBlur {
public:
    SharedBlur(const BlurKernels& kernels, const BlurFrame& frame, const BlurAxis& down,
               const BlurAxis& across, int threads)
        : blur_(kernels, frame, down, across, blocks),
          // The last two strips share columns, so one part has both.
          shares_(std::max<std::int64_t>(blur_.strips() - 1, 1)),
          parts_(static_cast<std::size_t>(std::clamp<std::int64_t>(shares_ / leastStrips, 1, threads))),
          unfinished_(parts_.size()) {}

    int parts() const { return static_cast<int>(parts_.size()); }

    /// Works until nothing is left, most of the time on one part.
    void work(int part) {
        constexpr std::size_t patience = 200;
        for (std::size_t tries = 0; unfinished_.load(std::memory_order_acquire) > 0; ++tries) {
            const std::size_t wanted = (static_cast<std::size_t>(part) + tries / patience) % parts_.size();
            if (advance(wanted)) tries = 0;
            if (tries > patience * parts_.size()) std::this_thread::yield();
        }
    }

private:
    static constexpr std::int64_t leastStrips = 4;
    static constexpr int blocks = 3;

    struct alignas(64) Part {
        std::atomic<bool> isTaken = false;
        std::atomic<std::int64_t> bandsDown = 0;
        std::atomic<std::int64_t> bandsAcross = 0;
    };

    /// Takes a part's next step. False where it cannot be taken now.
    bool advance(std::size_t index) {
        Part& part = parts_[index];
        if (part.isTaken.exchange(true, std::memory_order_acquire)) return false;
        const bool hasAdvanced = step(index, part);
        part.isTaken.store(false, std::memory_order_release);
        return hasAdvanced;
    }

    bool step(std::size_t index, Part& part) {
        const std::int64_t down = part.bandsDown.load(std::memory_order_relaxed);
        const std::int64_t across = part.bandsAcross.load(std::memory_order_relaxed);
        if (across == blur_.bands()) return false;
        const auto i = static_cast<std::int64_t>(index);
        const auto count = static_cast<std::int64_t>(parts_.size());
        const std::int64_t first = shares_ * i / count;
        const std::int64_t end = i == count - 1 ? blur_.strips() : shares_ * (i + 1) / count;
        if (down < blur_.bands() && down <= across + 1) {
            if (!allHave(&Part::bandsAcross, down - blocks + 1)) return false;
            blur_.walkDown(down, first, end);
            part.bandsDown.store(down + 1, std::memory_order_release);
            return true;
        }
        if (!allHave(&Part::bandsDown, across + 1)) return false;
        if (index > 0 && parts_[index - 1].bandsAcross.load(std::memory_order_acquire) <= across)
            return false;
        blur_.walkAcross(across, first, end);
        part.bandsAcross.store(across + 1, std::memory_order_release);
        if (across + 1 == blur_.bands()) unfinished_.fetch_sub(1, std::memory_order_release);
        return true;
    }

    bool allHave(std::atomic<std::int64_t> Part::*bandsDone, std::int64_t bands) const {
        return std::all_of(parts_.begin(), parts_.end(), [&](const Part& part) {
            return (part.*bandsDone).load(std::memory_order_acquire) >= bands;
        });
    }

    BandedBlur blur_;
    const std::int64_t shares_;
    std::vector<Part> parts_;
    std::atomic<std::size_t> unfinished_;
};

struct AddressRange {
    std::uintptr_t begin;
    std::uintptr_t end;
};

AddressRange addresses(const std::uint8_t* pixels, std::int64_t rowBytes, const BlurFrame& frame) {
    const auto first = reinterpret_cast<std::uintptr_t>(pixels);
    const auto last = first + static_cast<std::uintptr_t>((frame.height - 1) * rowBytes);
    return {std::min(first, last), std::max(first, last) + static_cast<std::uintptr_t>(4 * frame.width)};
}

bool apart(const BlurFrame& frame) {
    const AddressRange source = addresses(frame.source, frame.sourceRowBytes, frame);
    const AddressRange destination = addresses(frame.destination, frame.destinationRowBytes, frame);
    return source.end <= destination.begin || destination.end <= source.begin;
}

}  // namespace

void gaussianBlur(const BlurKernels& kernels, const BlurFrame& frame, double reachAcross, double reachDown,
                  hosting::WorkerThreads* workers) {
    if (frame.width <= 0 || frame.height <= 0) return;
    const std::int64_t across = wholeReach(reachAcross);
    const std::int64_t down = wholeReach(reachDown);
    if (across == 0 && down == 0) return copyRows(frame);
    try {
        const Axis axisDown(down, frame.height, blurFixedOne);
        const Axis axisAcross(across, frame.width, 1.0 / blurFixedOne);
        // Everything that needs memory comes before the first pixel is written.
        const auto blur = [&](const BlurFrame& pictures) {
            const int threads = workers == nullptr ? 1 : workers->count();
            if (threads < 2 || pictures.width * pictures.height < leastPixels) {
                return blurAlone(kernels, pictures, *axisDown, *axisAcross);
            }
            SharedBlur shared(kernels, pictures, *axisDown, *axisAcross, threads);
            workers->run(shared.parts(), [&shared](int part) { shared.work(part); });
        };
        if (frame.width >= kernels.stripPixels && apart(frame)) {
            return blur(frame);
        }
        BlurFrame aside = frame;
        aside.sourceRowBytes = 4 * std::max<std::int64_t>(frame.width, kernels.stripPixels);
        std::vector<std::uint8_t> copy(static_cast<std::size_t>(aside.sourceRowBytes * frame.height));
        aside.source = copy.data();
        copyRows({frame.source, frame.sourceRowBytes, copy.data(), aside.sourceRowBytes, frame.width,
                  frame.height});
        blur(aside);
    } catch (const std::bad_alloc&) {
        copyRows(frame);
    }
}

}  // namespace FxKit
