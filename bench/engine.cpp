// SPDX-License-Identifier: MIT
// Prints what the engine adds to its filters, what conversions of pixels cost, what threads take
// off, and what each filter takes of a frame. What a table compares runs in turn, and the best of many rounds
// counts: all that disturbs only adds.
#include "bench/filter_call.h"
#include "bench/rounds.h"
#include "engine/include/vireo/vireo.h"
#include "engine/pixels/pixel_layout.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <memory>
#include <numeric>
#include <string>
#include <string_view>
#include <vector>

namespace bench {
namespace {

void check(VireoStatus status) {
    if (status == VireoDone) return;
    std::fprintf(stderr, "%s\n", vireoLastError()->sentence);
    std::exit(1);
}

/// A chain with frames of one size.
class Chain {
public:
    /// Rows from the bottom as filters have them, or from the top as pages do.
    Chain(VireoEngine* engine, const char* text, unsigned threads, int width, int height,
          std::uint8_t* source, std::uint8_t* result, bool fromTop = false) {
        check(vireoChainNew(engine, &chain_));
        check(vireoChainAddText(chain_, text));
        check(vireoChainSetThreads(chain_, threads));
        const std::int64_t rowBytes = std::int64_t{4} * width;
        const std::int64_t first = fromTop ? 0 : rowBytes * (height - 1);
        source_ = {sizeof source_, width, height,         VireoBgra,
                   VireoDepth8,    0,     source + first, fromTop ? rowBytes : -rowBytes,
                   nullptr};
        result_ = source_;
        result_.pixels = result + first;
    }
    Chain(const Chain&) = delete;
    Chain& operator=(const Chain&) = delete;
    ~Chain() { vireoChainClose(chain_); }

    void render() { check(vireoChainRender(chain_, &source_, &result_, nullptr, nullptr)); }

    /// The first filter's settings.
    void copySettings(std::span<std::uint8_t> record) const {
        void* bytes = nullptr;
        std::size_t length = 0;
        check(vireoChainBytes(chain_, 0, nullptr, &bytes, &length));
        std::memcpy(record.data(), bytes, std::min(length, record.size()));
        vireoFree(bytes);
    }

private:
    VireoChain* chain_ = nullptr;
    VireoFrame source_{};
    VireoFrame result_{};
};

struct Subject {
    const char* filter;
    const char* text;
};

constexpr Subject overheadSubjects[] = {
    {"Solarize", "Solarize"},
    {"Levels", "Levels:(rgb) gamma=150"},
    {"Black & White", "Black & White"},
    {"Horizontal Flip", "Horizontal Flip"},
    {"Convolution Kernel", "Convolution Kernel"},
    {"Camera Blur", "Camera Blur"},
};

void printOverhead(VireoEngine* engine) {
    constexpr int width = 1920, height = 1080;
    const Memory source = painted(std::size_t{4} * width * height),
                 result = painted(std::size_t{4} * width * height);
    std::printf(
        "\n| 1920 × 1080, one thread | The filter alone, ms | Through the engine, ms | More "
        "|\n|---|---|---|---|\n");
    for (const Subject& subject : overheadSubjects) {
        for (const hosting::Filter& filter : module().filters()) {
            if (filter.properties.name != subject.filter) continue;
            Chain chain(engine, subject.text, 1, width, height, source.get(), result.get());
            FilterCall call(filter, source.get(), result.get(), width, height);
            chain.copySettings(call.settings());
            const auto times = best(400, {[&] { call.execute(); }, [&] { chain.render(); }});
            std::printf("| %s | %.3f | %.3f | %.1f %% |\n", subject.text, times[0], times[1],
                        100 * (times[1] / times[0] - 1));
        }
    }
}

void printConversions() {
    using namespace vireo;
    constexpr int width = 1920, height = 1080;
    struct Row {
        const char* name;
        PixelFormat format;
    };
    constexpr Row rows[] = {
        {"RGBA", {PixelLayout::Rgba, SampleDepth::Eight, false}},
        {"ARGB", {PixelLayout::Argb, SampleDepth::Eight, false}},
        {"BGRx", {PixelLayout::Bgrx, SampleDepth::Eight, false}},
        {"RGB", {PixelLayout::Rgb, SampleDepth::Eight, false}},
        {"grey", {PixelLayout::Grey, SampleDepth::Eight, false}},
        {"BGRA, premultiplied", {PixelLayout::Bgra, SampleDepth::Eight, true}},
        {"RGBA, premultiplied", {PixelLayout::Rgba, SampleDepth::Eight, true}},
        {"RGBA, 16 bits", {PixelLayout::Rgba, SampleDepth::Sixteen, false}},
        {"RGB, 16 bits", {PixelLayout::Rgb, SampleDepth::Sixteen, false}},
        {"RGBA, 16 bits, premultiplied", {PixelLayout::Rgba, SampleDepth::Sixteen, true}},
        {"RGBA, float", {PixelLayout::Rgba, SampleDepth::Float, false}},
        {"RGBA, float, premultiplied", {PixelLayout::Rgba, SampleDepth::Float, true}},
    };
    const Memory from = painted(std::size_t{16} * width * height),
                 to = painted(std::size_t{16} * width * height);
    std::printf("\n| 1920 × 1080 | To BGRA, × memcpy | From BGRA, × memcpy |\n|---|---|---|\n");
    for (const auto& [name, format] : rows) {
        const std::ptrdiff_t bgraRow = std::ptrdiff_t{width} * static_cast<int>(format.depth) / 2;
        const std::ptrdiff_t row = std::ptrdiff_t{width} * bytesOf(format.layout, format.depth);
        const auto times =
            best(300, {[&] { std::memcpy(to.get(), from.get(), static_cast<std::size_t>(bgraRow * height)); },
                       [&] {
                           for (std::ptrdiff_t y = 0; y < height; ++y) {
                               rowToBgra(format, from.get() + y * row, to.get() + y * bgraRow, width);
                           }
                       },
                       [&] {
                           for (std::ptrdiff_t y = 0; y < height; ++y) {
                               rowFromBgra(format, from.get() + y * bgraRow, to.get() + y * row, width);
                           }
                       }});
        std::printf("| %s | %.2f | %.2f |\n", name, times[1] / times[0], times[2] / times[0]);
    }
}

void printThreads(VireoEngine* engine) {
    constexpr int width = 8000, height = 6000;
    constexpr const char* texts[] = {
        "Levels:(rgb) gamma=150",
        "Camera Blur",
        "Convolution Kernel",
        "Levels:(rgb) gamma=150; Camera Blur; Convolution Kernel",
    };
    const Memory source = painted(std::size_t{4} * width * height),
                 result = painted(std::size_t{4} * width * height);
    std::printf("\n| 8000 × 6000 | One thread, ms | Two threads, ms | Ratio |\n|---|---|---|---|\n");
    for (const char* text : texts) {
        Chain one(engine, text, 1, width, height, source.get(), result.get());
        Chain two(engine, text, 2, width, height, source.get(), result.get());
        const auto times = best(15, {[&] { one.render(); }, [&] { two.render(); }});
        std::printf("| %s | %.0f | %.0f | %.2f |\n", text, times[0], times[1], times[1] / times[0]);
    }
}

/// What chains take whose filters work by rows, beside their filters alone.
void printChains(VireoEngine* engine) {
    static constexpr std::initializer_list<const char*> chains[] = {
        {"Levels:(rgb) gamma=150", "Gamma Correction:gamma=7", "Color Balance (RGB):red=150"},
        {"Solarize:threshold=30", "Color Pass", "Black & White", "Extract", "Color Replace"},
        {"Levels:(rgb) gamma=150", "Solarize:threshold=30", "Black & White", "Horizontal Flip", "Color Pass"},
    };
    std::printf(
        "\n| One thread | Each alone, ms | The chain, ms | × the slowest | × their sum "
        "|\n|---|---|---|---|---|\n");
    for (const auto& [width, height] : {std::pair{1920, 1080}, {3840, 2160}}) {
        const std::size_t bytes = std::size_t{4} * static_cast<std::size_t>(width * height);
        const Memory source = painted(bytes), result = painted(bytes);
        for (const auto& filters : chains) {
            std::string text;
            std::deque<Chain> rendered;
            for (const char* filter : filters) {
                rendered.emplace_back(engine, filter, 1, width, height, source.get(), result.get());
                text += (text.empty() ? "" : "; ") + std::string(filter);
            }
            rendered.emplace_back(engine, text.c_str(), 1, width, height, source.get(), result.get());
            std::vector<Job> jobs;
            for (Chain& chain : rendered) jobs.emplace_back([&chain] { chain.render(); });
            std::vector<double> alone = best(60, jobs);
            const double chain = alone.back();
            alone.pop_back();
            std::printf("| %d × %d: %s |", width, height, text.c_str());
            for (const double time : alone) std::printf(" %.2f", time);
            std::printf(" | %.2f | %.2f | %.2f |\n", chain, chain / *std::ranges::max_element(alone),
                        chain / std::accumulate(alone.begin(), alone.end(), 0.0));
        }
    }
}

/// Every filter, with its defaults unless they do nothing.
constexpr const char* filterTexts[] = {
    "Alpha Glow",
    "Antialias",
    "Bend",
    "Black & White",
    "Camera Blur",
    "Camera View:longitude=30,latitude=20,roll=10,distance=50",
    "Color Balance (RGB):red=300",
    "Color Pass",
    "Color Replace",
    "Convolution Kernel",
    "Edge Feather",
    "Extract",
    "Gamma Correction:gamma=7",
    "Ghosting",
    "Horizontal Flip",
    "Horizontal Hold:offset=65536,end step=65536",
    "Lens Distortion:curvature=20,vertical decentering=10,horizontal decentering=-10,vertical prism=5,"
    "horizontal prism=-5",
    "Levels:(rgb) gamma=150",
    "Replicate",
    "Solarize",
    "Vertical Flip",
    "Vertical Hold",
};

/// Every filter alone, on one thread, of frames as pages have them; browser_filters.mjs reads this table.
void printFilters(VireoEngine* engine) {
    constexpr int width = 1920, height = 1080;
    const std::size_t bytes = std::size_t{4} * width * height;
    const Memory source = painted(bytes), result = painted(bytes);
    std::printf("\n| 1920 × 1080, one thread | ms |\n|---|---|\n");
    for (const char* text : filterTexts) {
        Chain chain(engine, text, 1, width, height, source.get(), result.get(), true);
        std::printf("| %s | %.3f |\n", text, best(40, {[&] { chain.render(); }})[0]);
    }
}

/// Whether frames of a live picture keep up with the display.
void printLive(VireoEngine* engine) {
    constexpr int width = 3840, height = 2160;
    constexpr double frameTime = 1000.0 / 60;
    const std::size_t bytes = std::size_t{4} * width * height;
    const Memory source = painted(bytes), result = painted(bytes);
    std::printf("\n| 3840 × 2160, two threads | ms | × memcpy on one | 60 a second |\n|---|---|---|---|\n");
    for (const char* text : filterTexts) {
        Chain chain(engine, text, 2, width, height, source.get(), result.get());
        const auto times =
            best(40, {[&] { std::memcpy(result.get(), source.get(), bytes); }, [&] { chain.render(); }});
        std::printf("| %s | %.1f | %.2f | %s |\n", text, times[1], times[1] / times[0],
                    times[1] <= frameTime ? "yes" : "no");
    }
}

}  // namespace
}  // namespace bench

/// `overhead`, `conversions`, `threads`, `chains`, `live` or `filters` print one table, nothing all.
int main(int argumentCount, char** arguments) {
    const std::string_view wanted = argumentCount > 1 ? arguments[1] : "";
    const auto wants = [&](std::string_view table) { return wanted.empty() || wanted == table; };
    VireoEngine* engine = nullptr;
    bench::check(vireoOpen(nullptr, &engine));
    if (wants("overhead")) bench::printOverhead(engine);
    if (wants("conversions")) bench::printConversions();
    if (wants("threads")) bench::printThreads(engine);
    if (wants("chains")) bench::printChains(engine);
    if (wants("live")) bench::printLive(engine);
    if (wants("filters")) bench::printFilters(engine);
    vireoClose(engine);
}
