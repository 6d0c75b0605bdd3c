// SPDX-License-Identifier: MIT
// The whole way of a file that nobody knows: opened as what it claims to be or is found to be, decoded,
// brought into the filters' form and rendered. Its first byte chooses the name's ending and what is asked for
// beside.
#include "app/base/interruption.h"
#include "app/render/chain_processor.h"
#include "app/render/render_media.h"
#include "engine/catalogue/catalogue.h"
#include "engine/error.h"
#include "tests/fuzz/linked_filters.h"
#include "tests/fuzz/require.h"

#include <csignal>

#include <sys/mman.h>
#include <unistd.h>

extern "C" {
#include <libavutil/log.h>
#include <libavutil/mem.h>
}

namespace {

// As tests/fuzz/media_seeds names them.
constexpr const char* endings[] = {"",     ".png", ".jpg", ".gif", ".webp",
                                   ".tif", ".exr", ".bmp", ".mp4", ".tga"};

/// Files of all endings that hold what the one in memory does.
class InputFile {
public:
    InputFile() : file_(memfd_create("media", 0)) {
        REQUIRE(mkdtemp(folder_) != nullptr);
        const std::string content = "/proc/" + std::to_string(getpid()) + "/fd/" + std::to_string(file_);
        for (const char* ending : endings) REQUIRE(symlink(content.c_str(), named(ending).c_str()) == 0);
    }
    ~InputFile() {
        for (const char* ending : endings) unlink(named(ending).c_str());
        rmdir(folder_);
    }

    std::string holding(std::uint8_t ending, const std::uint8_t* data, std::size_t size) const {
        REQUIRE(ftruncate(file_, 0) == 0 && pwrite(file_, data, size, 0) == static_cast<ssize_t>(size));
        return named(endings[ending % std::size(endings)]);
    }

private:
    std::string named(const char* ending) const { return std::string(folder_) + "/input" + ending; }

    int file_;
    char folder_[32] = "/dev/shm/vireo-media-XXXXXX";
};

enum Wish : std::uint8_t { Later = 0x10, Deeper = 0x20, Earlier = 0x40, Prepared = 0x80 };

/// Horizontal Flip takes deeper formats, Ghosting looks back at earlier frames.
std::vector<vireo::FilterSettings> chainFor(std::uint8_t wishes) {
    static const vireo::Catalogue catalogue(linkedFilters());
    std::vector<vireo::FilterSettings> chain;
    chain.emplace_back(catalogue.find((wishes & Deeper) != 0 ? "Horizontal Flip" : "Solarize"));
    if ((wishes & Earlier) != 0) chain.emplace_back(catalogue.find("Ghosting"));
    return chain;
}

vireo::RenderJob jobFor(std::uint8_t wishes) {
    vireo::RenderJob job;
    job.quiet = true;
    job.jobs = 1;
    job.policy.maxPixels = 1 << 20;
    const int first = (wishes & Later) != 0 ? 2 : 0;
    job.frames = vireo::FrameRange{first, first + 7};
    if ((wishes & Prepared) != 0) {
        job.preparation.deinterlace = true;
        job.preparation.rate = vireo::Ratio{30, 1};
        job.preparation.scale = vireo::Preparation::Scale{48, -2};
    }
    return job;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    av_log_set_level(AV_LOG_QUIET);
    av_max_alloc(std::size_t{64} << 20);
    // Renders within another guard's life take no signals, which are the fuzzer's.
    static const vireo::InterruptionGuard guard;
    for (const int number : {SIGINT, SIGTERM, SIGXFSZ}) std::signal(number, SIG_DFL);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const InputFile file;
    if (size < 2) return 0;
    const std::uint8_t ending = data[0] & 0x0F, wishes = data[0] & 0xF0;
    vireo::RenderJob job = jobFor(wishes);
    job.input = file.holding(ending, data + 1, size - 1);
    vireo::Messages messages(true);
    readOrRefused<vireo::Error>([&] {
        vireo::ChainProcessor chain(chainFor(wishes), 1, std::nullopt);
        const vireo::RenderSummary summary = vireo::renderMedia(job, chain, messages);
        REQUIRE(summary.frames > 0 && summary.frames <= 8);
        return summary.frames;
    });
    return 0;
}
