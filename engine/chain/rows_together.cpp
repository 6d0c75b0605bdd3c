// SPDX-License-Identifier: MIT
// Stages that work by rows, one after another: a band of rows goes through all of them while it is in the
// processor's cache.
#include "engine/chain/filter_calls.h"
#include "host/hosting/mix.h"
#include "host/pixkit/pixkit.h"

#include <array>
#include <cstdlib>
#include <iterator>
#include <list>
#include <optional>

namespace vireo {
namespace {

/// Of three bands that pass through the filters all stays in the processor's cache. Smaller ones cost more in
/// calls than they gain where filters compute for longer than the cache takes.
int rowsInCache(std::int32_t rowBytes) {
    constexpr int bandBytes = 512 << 10;
    return bandBytes / std::max(std::abs(rowBytes), 1);
}

/// What becomes of each value of blue, green and red.
using ChannelTables = std::array<std::array<std::uint8_t, 256>, 3>;

/// The bands' rows lie alike.
void applyTables(const ChannelTables& tables, const FrameBuffer& source, const FrameBuffer& destination) {
    const auto* const services = static_cast<const UtilityServices*>(vireoHostServices());
    services->applyChannelTables.get()(source.pixels.get(), destination.pixels.get(), source.rowBytes,
                                       source.bounds.right, source.bounds.bottom, tables[2].data(),
                                       tables[1].data(), tables[0].data());
}

}  // namespace

/// One filter's work on a band, or that of several which one set of tables does.
class FilterStage::RowStep {
public:
    RowStep(FilterStage& stage, const Moment& moment, int mix)
        : mapsChannels_(stage.traits_.mapsChannels), mix_(mix) {
        static const InputAt noEarlierFrames;
        calls_.emplace(stage, PixKit::formatBgra, moment, noEarlierFrames);
    }
    explicit RowStep(const ChannelTables& tables) : tables_(tables) {}

    bool mapsChannels() const { return mapsChannels_; }

    void run(FrameBuffer source, FrameBuffer destination, const Rows& rows) {
        if (!calls_) return applyTables(tables_, source, destination);
        calls_->render(&source, &destination, rows);
        if (mix_ < hosting::fullMix) hosting::mixInto(source, destination, mix_);
    }

private:
    std::optional<Calls> calls_;  ///< Not there where the tables are.
    ChannelTables tables_{};
    bool mapsChannels_ = false;
    int mix_ = hosting::fullMix;
};

/// Filters that map channels, and those that follow each other together, become tables, which are then made
/// once and not for every band.
void FilterStage::mergeTables(std::list<RowStep>& steps) {
    const auto maps = [](const RowStep& step) { return step.mapsChannels(); };
    auto first = steps.begin();
    while ((first = std::find_if(first, steps.end(), maps)) != steps.end()) {
        const auto last = std::find_if_not(first, steps.end(), maps);
        constexpr int values = 256;
        Picture before(values, 1), after(values, 1);
        for (int i = 0; i < values; ++i) std::fill_n(before.row(0) + 4 * i, 4, static_cast<std::uint8_t>(i));
        for (auto step = first; step != last; ++step) {
            step->run(*before.buffer(), *after.buffer(), {0, 1});
            std::copy_n(after.row(0), 4 * values, before.row(0));
        }
        ChannelTables tables;
        for (std::size_t channel = 0; channel < tables.size(); ++channel) {
            for (std::size_t i = 0; i < values; ++i) tables[channel][i] = before.row(0)[4 * i + channel];
        }
        steps.emplace(first, tables);
        steps.erase(first, last);
        first = last;
    }
}

PicturePtr FilterStage::applyByRows(std::span<const std::unique_ptr<FilterStage>> stages,
                                    const PicturePtr& input, const Moment& moment, const StageWork& work,
                                    const std::shared_ptr<Picture>& target) {
    throwIfCancelled(work);
    std::list<RowStep> steps;
    for (const auto& stage : stages) {
        const int mix = stage->mixAt(moment);
        if (mix == 0) continue;
        stage->refuseSize(*input);
        steps.emplace_back(*stage, moment, mix);
    }
    if (steps.empty()) return input;
    mergeTables(steps);

    auto result = target != nullptr ? target : pictureLike(*input);
    const bool isInPlace = result == input;
    const int height = input->height();
    const int bandRows = std::clamp(rowsInCache(input->rowBytes()), 1, height);
    const int parts = std::clamp(height / bandRows, 1, work.workers == nullptr ? 1 : work.workers->count());
    const auto renderPart = [&](int part) {
        // Every filter but the last writes into one of two bands, from which the next one reads; so does the
        // last where it would overwrite what it reads.
        std::optional<Picture> between[2];
        for (std::size_t i = 0; i < std::min<std::size_t>(steps.size() - (isInPlace ? 0 : 1), 2); ++i)
            between[i].emplace(input->width(), bandRows, input->format(), input->rowBytes());
        const int end = hosting::partEdge(height, part + 1, parts);
        for (int row = hosting::partEdge(height, part, parts); row < end; row += bandRows) {
            if (work.isCancelled && work.isCancelled()) return;
            const Rows band{row, std::min(bandRows, end - row)};
            FrameBuffer source = rowsOf(*input->buffer(), band);
            FrameBuffer destination = rowsOf(*result->buffer(), band);
            int into = 0;
            for (RowStep& step : steps) {
                const FrameBuffer made = &step == &steps.back() && !isInPlace
                                             ? destination
                                             : rowsOf(*between[into]->buffer(), {0, band.count});
                step.run(source, made, band);
                source = made;
                into = 1 - into;
            }
            if (isInPlace)
                vpixCopy(&source, &destination, &source.bounds, &destination.bounds, VPixCopyReplace);
        }
    };
    if (parts == 1) {
        renderPart(0);
    } else {
        work.workers->run(parts, renderPart);
    }
    throwIfCancelled(work);
    return result;
}

}  // namespace vireo
