// SPDX-License-Identifier: MIT
// Prints what it takes to make pictures of a video's frames and frames of pictures: 1920 x 1080, one thread,
// as multiples of one memcpy of the picture, on the instruction set in use (VIREO_ISA chooses a lower one).
#include "app/media/frame_to_picture.h"
#include "app/media/picture_to_frame.h"
#include "bench/rounds.h"
#include "simd/instruction_set.h"

#include <cstdio>
#include <cstring>
#include <string>

namespace bench {
namespace {

constexpr int width = 1920, height = 1080;

struct Row {
    const char* name;
    AVPixelFormat format;
    std::uint32_t pictureFormat = PixKit::formatBgra;
};

constexpr Row rows[] = {
    {"4:2:0", AV_PIX_FMT_YUV420P},
    {"4:2:2", AV_PIX_FMT_YUV422P},
    {"4:4:4", AV_PIX_FMT_YUV444P},
    {"4:2:0, 10 bits", AV_PIX_FMT_YUV420P10},
    {"4:2:2, 10 bits", AV_PIX_FMT_YUV422P10},
    {"4:2:0, 10 bits, BGRA of 16 bits", AV_PIX_FMT_YUV420P10, vireo::formatBgra16},
    {"4:2:2, 10 bits, BGRA of 16 bits", AV_PIX_FMT_YUV422P10, vireo::formatBgra16},
    {"planar RGB", AV_PIX_FMT_GBRP},
    {"RGBA", AV_PIX_FMT_RGBA},
};

void printConversions() {
    const std::string_view set = simd::instructionSetName(simd::chosenInstructionSet());
    const vireo::ColorCoding coding;
    const Memory from = painted(std::size_t{8} * width * height),
                 to = painted(std::size_t{8} * width * height);
    std::printf("\n| 1920 × 1080, %.*s | To BGRA, × memcpy | From BGRA, × memcpy |\n|---|---|---|\n",
                static_cast<int>(set.size()), set.data());
    for (const auto& [name, format, pictureFormat] : rows) {
        vireo::Picture picture(width, height, pictureFormat);
        const std::size_t bytes = static_cast<std::size_t>(picture.rowBytes()) * height;
        for (int y = 0; y < height; ++y)
            std::memcpy(picture.row(y), from.get() + y * picture.rowBytes(),
                        static_cast<std::size_t>(picture.rowBytes()));
        const vireo::FrameConverter converter(format, width, height, coding);
        const vireo::FramePtr frame = converter.frameOf(picture, false);
        const auto times = best(
            150, {[&] { std::memcpy(to.get(), from.get(), bytes); },
                  [&] { vireo::frameToPicture(*frame, width, height, pictureFormat, coding, false, true); },
                  [&] { converter.frameOf(picture, false); }});
        std::printf("| %s | %.2f | %.2f |\n", name, times[1] / times[0], times[2] / times[0]);
    }
}

}  // namespace
}  // namespace bench

int main() { bench::printConversions(); }
