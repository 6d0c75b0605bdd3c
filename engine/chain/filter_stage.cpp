// SPDX-License-Identifier: MIT
#include "engine/chain/filter_stage.h"

#include "engine/chain/vuya.h"
#include "engine/error.h"
#include "host/hosting/mix.h"
#include "host/hosting/parameter_value.h"
#include "host/pixkit/pixkit.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <stdexcept>

namespace vireo {
namespace {

/// Bands of fewer rows cost more in calls than a second thread saves.
constexpr int leastBandRows = 16;

/// More bands than threads, so that one that is held up does not hold up all.
constexpr int bandsPerThread = 8;

/// Rows of a frame, counted in memory: the bottom of the picture first.
struct Rows {
    int first;
    int count;

    int end() const { return first + count; }
};

FrameBuffer rowsOf(const FrameBuffer& frame, const Rows& rows) {
    FrameBuffer part = frame;
    part.bounds.bottom = part.bounds.top + rows.count;
    part.pixels = static_cast<std::uint8_t*>(frame.pixels.get()) + std::int64_t{rows.first} * frame.rowBytes;
    return part;
}

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

std::uint16_t fieldFlags(Field field) {
    switch (field) {
        case Field::Upper: return FieldFlagUpper;
        case Field::Lower: return FieldFlagLower;
        case Field::None: break;
    }
    return 0;
}

}  // namespace

std::uint32_t Moment::time() const {
    const Field first = position.interlacing == Interlacing::BottomFieldFirst ? Field::Lower : Field::Upper;
    const bool isSecond = field != Field::None && field != first;
    return static_cast<std::uint32_t>(2 * position.number) + (isSecond ? 1 : 0);
}

/// An instance whose settings are those of a frame. Where they change along the clip no other thread has it.
class FilterStage::Lease {
public:
    Lease(FilterStage& stage, const FramePosition& position) : stage_(stage) {
        if (!stage_.settings_.isAnimated()) {
            instance_ = stage_.instances_.front().get();
            return;
        }
        const auto record = stage_.settings_.record(position);
        {
            const std::lock_guard lock(stage_.mutex_);
            if (stage_.idle_.empty()) {
                auto made = std::make_unique<hosting::FilterInstance>(
                    hosting::newInstance(stage_.settings_.filter()));
                stage_.idle_.reserve(stage_.instances_.size() + 1);  // giving back must not throw
                stage_.instances_.push_back(std::move(made));
                instance_ = stage_.instances_.back().get();
            } else {
                instance_ = stage_.idle_.back();
                stage_.idle_.pop_back();
            }
        }
        std::copy(record.begin(), record.end(), instance_->settings().begin());
    }
    Lease(const Lease&) = delete;
    Lease& operator=(const Lease&) = delete;
    ~Lease() {
        if (!stage_.settings_.isAnimated()) return;
        const std::lock_guard lock(stage_.mutex_);
        stage_.idle_.push_back(instance_);
    }

    const hosting::FilterInstance& operator*() const { return *instance_; }

private:
    FilterStage& stage_;
    hosting::FilterInstance* instance_ = nullptr;
};

/// One Execute of a frame or field, whole or in bands of rows.
class FilterStage::Execution {
public:
    Execution(FilterStage& stage, const Picture& source, Picture& destination, const Moment& moment,
              const InputAt& inputAt, const StageWork& work)
        : stage_(stage),
          source_(source),
          destination_(destination),
          moment_(moment),
          inputAt_(inputAt),
          work_(work),
          instance_(stage, moment.position) {}

    void run() {
        const auto& neighbours = stage_.traits_.neighbourRows;
        const int bands = neighbours ? bandCount(*neighbours) : 1;
        if (bands == 1) {
            // The host's services may share out what the filter asks them for.
            const hosting::WorkerLoan loan(work_.workers);
            render(*source_.buffer(), *destination_.buffer(), {0, source_.height()});
        } else if (*neighbours == 0) {
            work_.workers->run(bands, [&](int band) { renderBand(rowsOfBand(band, bands)); });
        } else {
            // A filter that reads near rows writes them too, wrongly at a cut: into bands that come later, or
            // over rows that are put back.
            work_.workers->run((bands + 1) / 2, [&](int pair) {
                renderBand(withNeighbours(rowsOfBand(2 * pair, bands), *neighbours));
            });
            work_.workers->run(bands / 2, [&](int pair) {
                const Rows band = rowsOfBand(2 * pair + 1, bands);
                const Rows wide = withNeighbours(band, *neighbours);
                const KeptRows above(destination_, {wide.first, band.first - wide.first});
                const KeptRows below(destination_, {band.end(), wide.end() - band.end()});
                renderBand(wide);
            });
        }
    }

private:
    int bandCount(int neighbours) const {
        // Formats are kept by a buffer's address, and parts of one have addresses of their own.
        if (work_.workers == nullptr || work_.workers->count() < 2 || source_.format() != PixKit::formatBgra)
            return 1;
        const int rows = std::max(leastBandRows, 8 * neighbours);
        return std::clamp(source_.height() / rows, 1, bandsPerThread * work_.workers->count());
    }

    Rows rowsOfBand(int band, int bands) const {
        const auto edge = [&](int i) { return static_cast<int>(std::int64_t{source_.height()} * i / bands); };
        return {edge(band), edge(band + 1) - edge(band)};
    }

    Rows withNeighbours(const Rows& band, int neighbours) const {
        const int first = std::max(band.first - neighbours, 0);
        return {first, std::min(band.end() + neighbours, source_.height()) - first};
    }

    void renderBand(const Rows& band) {
        if (work_.isCancelled && work_.isCancelled()) return;
        render(rowsOf(*source_.buffer(), band), rowsOf(*destination_.buffer(), band), band);
    }

    /// Renders between two buffers that hold these rows of the frame. Throws std::exception.
    void render(FrameBuffer source, FrameBuffer destination, const Rows& rows) {
        // Whole frames keep their own buffers, whose formats go by address.
        const bool isWhole = rows.count == source_.height();
        FrameSource frames{this, isWhole ? source_.buffer() : &source, rows, nullptr};
        const std::int32_t result =
            (*instance_)
                .render({isWhole ? source_.buffer() : &source, isWhole ? destination_.buffer() : &destination,
                         moment_.time(), static_cast<std::uint32_t>(2 * moment_.position.clipLength),
                         fieldFlags(moment_.field), getFrame, &frames, needsFilling()});
        if (frames.failure) std::rethrow_exception(frames.failure);
        if (result != 0) {
            throw std::runtime_error(stage_.settings_.filter().properties.name + " failed on frame " +
                                     std::to_string(moment_.position.number) + " with result " +
                                     std::to_string(result));
        }
    }

    bool needsFilling() const { return !stage_.traits_.writesAll || source_.format() != PixKit::formatBgra; }

    /// Follows what a filter asks getFrame for. Exceptions wait here until the filter has returned.
    struct FrameSource {
        const Execution* execution;
        FrameBuffer* input;
        Rows rows;
        std::exception_ptr failure;
    };

    static std::int32_t getFrame(std::uint32_t time, FrameBuffer* target, const FrameRect* bounds,
                                 void* data) {
        auto& frames = *static_cast<FrameSource*>(data);
        try {
            const FramePosition& now = frames.execution->moment_.position;
            // Frames ahead are not there yet; nothing that this host runs asks for them.
            const std::int64_t number = std::min<std::int64_t>(time / 2, now.number);
            const PicturePtr other = number == now.number ? nullptr : frames.execution->earlier(number);
            const bool isWhole = other && other->height() == frames.rows.count;
            FrameBuffer part = other && !isWhole ? rowsOf(*other->buffer(), frames.rows) : FrameBuffer{};
            FrameBuffer* const buffer = !other ? frames.input : isWhole ? other->buffer() : &part;
            vpixCopy(buffer, target, &buffer->bounds, bounds, VPixCopyReplace);
            return 0;
        } catch (...) {
            frames.failure = std::current_exception();
            return -1;
        }
    }

    /// Bands of one frame ask for the same earlier ones.
    PicturePtr earlier(std::int64_t number) const {
        const std::lock_guard lock(mutex_);
        for (const auto& [known, picture] : earlier_) {
            if (known == number) return picture;
        }
        earlier_.emplace_back(number, inputAt_(number));
        return earlier_.back().second;
    }

    FilterStage& stage_;
    const Picture& source_;
    Picture& destination_;
    const Moment& moment_;
    const InputAt& inputAt_;
    const StageWork& work_;
    const Lease instance_;
    mutable std::mutex mutex_;
    mutable std::vector<std::pair<std::int64_t, PicturePtr>> earlier_;
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

PicturePtr FilterStage::apply(const PicturePtr& input, const Moment& moment, const InputAt& inputAt,
                              const StageWork& work, const std::shared_ptr<Picture>& target) {
    if (work.isCancelled && work.isCancelled()) throw Error(Fault::Cancelled, "rendering was cancelled");
    const int mix = settings_.covers(moment.position) ? settings_.mixAt(moment.position) : 0;
    if (mix == 0) return input;

    const bool asVuya = input->format() == PixKit::formatBgra && format_ == PixKit::formatVuya;
    const PicturePtr source = asVuya ? vuyaFromBgra(*input) : input;
    const std::string refused = refusal(source->width(), source->height(), source->rowBytes());
    if (!refused.empty()) throw Error(Fault::TooLarge, refused).about(settings_.filter().properties.name);
    auto result = target != nullptr && !asVuya
                      ? target
                      : std::make_shared<Picture>(source->width(), source->height(), source->format(),
                                                  source->rowBytes());
    Execution(*this, *source, *result, moment, inputAt, work).run();
    if (work.isCancelled && work.isCancelled()) throw Error(Fault::Cancelled, "rendering was cancelled");
    if (asVuya) result = bgraFromVuya(*result);
    if (mix < hosting::fullMix) hosting::mixInto(*input->buffer(), *result->buffer(), mix);
    return result;
}

}  // namespace vireo
