// SPDX-License-Identifier: MIT
#include "engine/chain/filter_stage.h"

#include "engine/chain/filter_calls.h"
#include "engine/chain/vuya.h"
#include "engine/error.h"
#include "host/hosting/mix.h"
#include "host/hosting/parameter_value.h"
#include "host/pixkit/pixkit.h"

#include <algorithm>
#include <cstring>
#include <optional>

namespace vireo {
namespace {

/// Bands of fewer rows cost more in calls than a second thread saves.
constexpr int leastBandRows = 16;

/// Puts rows of a picture back as they were.
class KeptRows {
public:
    KeptRows(Picture& picture, const Rows& rows)
        : part_(rowsOf(*picture.buffer(), rows)),
          rowBytes_(std::size_t{4} * static_cast<std::size_t>(picture.width())),
          kept_(rowBytes_ * static_cast<std::size_t>(rows.count)) {
        for (int y = 0; y < rows.count; ++y) std::memcpy(kept(y), row(y), rowBytes_);
    }
    KeptRows(const KeptRows&) = delete;
    KeptRows& operator=(const KeptRows&) = delete;
    ~KeptRows() {
        for (int y = 0; y < part_.bounds.bottom; ++y) std::memcpy(row(y), kept(y), rowBytes_);
    }

private:
    std::uint8_t* row(int y) const {
        return static_cast<std::uint8_t*>(part_.pixels.get()) + std::int64_t{y} * part_.rowBytes;
    }
    std::uint8_t* kept(int y) { return kept_.data() + rowBytes_ * static_cast<std::size_t>(y); }

    FrameBuffer part_;
    std::size_t rowBytes_;
    std::vector<std::uint8_t> kept_;
};

}  // namespace

std::uint32_t Moment::time() const {
    const Field first = position.interlacing == Interlacing::BottomFieldFirst ? Field::Lower : Field::Upper;
    const bool isSecond = field != Field::None && field != first;
    return static_cast<std::uint32_t>(2 * position.number) + (isSecond ? 1 : 0);
}

/// One Execute of a frame or field, whole or in bands of rows.
class FilterStage::Execution {
public:
    Execution(FilterStage& stage, const Picture& source, Picture& destination, const Moment& moment,
              const InputAt& inputAt, const StageWork& work)
        : source_(source),
          destination_(destination),
          work_(work),
          neighbours_(stage.traits_.neighbourRows),
          calls_(stage, source.format(), moment, inputAt) {}

    void run() {
        const int bands = neighbours_ ? bandCount(*neighbours_) : 1;
        if (bands == 1) {
            // The filter and the host's services may share out what they do.
            const hosting::WorkerLoan loan(work_.workers);
            // Whole frames keep their own buffers, whose formats go by address.
            calls_.render(source_.buffer(), destination_.buffer(), {0, source_.height()});
        } else if (*neighbours_ == 0) {
            work_.workers->run(bands, [&](int band) { renderBand(rowsOfBand(band, bands)); });
        } else {
            // A filter that reads near rows writes them too, wrongly at a cut: into bands that come later, or
            // over rows that are put back.
            work_.workers->run((bands + 1) / 2, [&](int pair) {
                renderBand(withNeighbours(rowsOfBand(2 * pair, bands), *neighbours_));
            });
            work_.workers->run(bands / 2, [&](int pair) {
                const Rows band = rowsOfBand(2 * pair + 1, bands);
                const Rows wide = withNeighbours(band, *neighbours_);
                const KeptRows above(destination_, {wide.first, band.first - wide.first});
                const KeptRows below(destination_, {band.end(), wide.end() - band.end()});
                renderBand(wide);
            });
        }
    }

private:
    int bandCount(int neighbours) const {
        // Formats are kept by a buffer's address, and parts of one have addresses of their own.
        if (source_.format() != PixKit::formatBgra) return 1;
        return hosting::partCount(work_.workers, source_.height(), std::max(leastBandRows, 8 * neighbours));
    }

    Rows rowsOfBand(int band, int bands) const {
        const int first = hosting::partEdge(source_.height(), band, bands);
        return {first, hosting::partEdge(source_.height(), band + 1, bands) - first};
    }

    Rows withNeighbours(const Rows& band, int neighbours) const {
        const int first = std::max(band.first - neighbours, 0);
        return {first, std::min(band.end() + neighbours, source_.height()) - first};
    }

    void renderBand(const Rows& band) {
        if (work_.isCancelled && work_.isCancelled()) return;
        FrameBuffer source = rowsOf(*source_.buffer(), band);
        FrameBuffer destination = rowsOf(*destination_.buffer(), band);
        calls_.render(&source, &destination, band);
    }

    const Picture& source_;
    Picture& destination_;
    const StageWork& work_;
    const std::optional<std::int32_t>& neighbours_;
    Calls calls_;
};

FilterStage::FilterStage(FilterSettings settings)
    : settings_(std::move(settings)), traits_(traitsOf(settings_.filter())) {
    instances_.push_back(std::make_unique<hosting::FilterInstance>(hosting::newInstance(settings_.filter())));
    idle_.push_back(instances_.back().get());
    // What changes along the clip is taken at each frame, and may make no sense at another rate than the
    // clip's.
    if (!settings_.isAnimated()) {
        const auto record = settings_.record({});
        std::copy(record.begin(), record.end(), instances_.back()->settings().begin());
    }
    pixelFormats_ = instances_.front()->pixelFormats();
}

std::string FilterStage::refusal(int width, int height, std::int64_t rowBytes) const {
    return hosting::frameRefusal(settings_.filter().properties.name, traits_.limits, width, height, rowBytes);
}

bool FilterStage::isIdentity(const FramePosition& position) const {
    if (!settings_.covers(position) || settings_.mixAt(position) == 0) return true;
    if (traits_.identity.empty()) return false;
    const auto record = settings_.record(position);
    return std::all_of(traits_.identity.begin(), traits_.identity.end(), [&](const auto& given) {
        return readValue(settings_.filter().properties.parameters[given.parameter], record) == given.value;
    });
}

bool FilterStage::worksByRows() const {
    return traits_.neighbourRows == 0 && traits_.earlierFrames == 0 && format_ == PixKit::formatBgra;
}

int FilterStage::mixAt(const Moment& moment) const {
    return settings_.covers(moment.position) ? settings_.mixAt(moment.position) : 0;
}

void FilterStage::refuseSize(const Picture& source) const {
    const std::string refused = refusal(source.width(), source.height(), source.rowBytes());
    if (!refused.empty()) throw Error(Fault::TooLarge, refused).about(settings_.filter().properties.name);
}

PicturePtr FilterStage::apply(const PicturePtr& input, const Moment& moment, const InputAt& inputAt,
                              const StageWork& work, const std::shared_ptr<Picture>& target) {
    throwIfCancelled(work);
    const int mix = mixAt(moment);
    if (mix == 0) return input;

    const bool asVuya = input->format() == PixKit::formatBgra && format_ == PixKit::formatVuya;
    const PicturePtr source = asVuya ? vuyaFromBgra(*input) : input;
    refuseSize(*source);
    auto result = target != nullptr && !asVuya ? target : pictureLike(*source);
    Execution(*this, *source, *result, moment, inputAt, work).run();
    throwIfCancelled(work);
    if (asVuya) result = bgraFromVuya(*result);
    if (mix < hosting::fullMix) hosting::mixInto(*input->buffer(), *result->buffer(), mix);
    return result;
}

}  // namespace vireo
