// SPDX-License-Identifier: MIT
// vireo sheet: the picture and what each filter makes of it, in a grid as large as the picture.
#include "app/commands/commands.h"
#include "app/commands/confinement.h"
#include "app/commands/label_font.h"
#include "app/commands/render_options.h"
#include "app/media/render_job.h"
#include "app/render/chain_processor.h"
#include "app/render/render_media.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>

namespace vireo {
namespace {

constexpr std::uint8_t background[4] = {32, 32, 32, 255};
constexpr std::uint8_t textColor[4] = {240, 240, 240, 255};
constexpr int lettersInCell =
    20;  ///< What a cell's width has room for at least, where the picture is large enough.
constexpr int letterWidth = 6;

void clear(Picture& picture) {
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) std::memcpy(picture.row(y) + 4 * x, background, 4);
    }
}

/// Lays the pixels of a rectangle over the background, so that transparency shows.
void makeOpaque(Picture& picture, const FrameRect& area) {
    for (int y = area.top; y < area.bottom; ++y) {
        for (int x = area.left; x < area.right; ++x) {
            std::uint8_t* pixel = picture.row(y) + 4 * x;
            const int alpha = pixel[3];
            for (int i = 0; i < 3; ++i) {
                pixel[i] =
                    static_cast<std::uint8_t>((pixel[i] * alpha + background[i] * (255 - alpha) + 127) / 255);
            }
            pixel[3] = 255;
        }
    }
}

/// Makes the sheet of a frame. The filters have their own defaults.
class SheetProcessor : public FrameProcessor {
public:
    explicit SheetProcessor(const Catalogue& catalogue) : labels_{"Original"} {
        for (const hosting::Filter& filter : catalogue.filters()) {
            labels_.push_back(filter.properties.name);
            std::vector<FilterSettings> alone;
            alone.emplace_back(filter);
            filters_.push_back(std::make_unique<ChainProcessor>(std::move(alone), 1, PixKit::formatBgra));
        }
        columns_ = static_cast<int>(std::ceil(std::sqrt(static_cast<double>(labels_.size()))));
        rows_ = (static_cast<int>(labels_.size()) + columns_ - 1) / columns_;
    }

    void begin(int threads) override {
        for (const auto& filter : filters_) filter->begin(threads);
    }

    int lookBack() const override {
        int frames = 0;
        for (const auto& filter : filters_) frames = std::max(frames, filter->lookBack());
        return frames;
    }

    std::uint32_t sourceFormat(int) const override { return PixKit::formatBgra; }

    std::string refusal(int width, int height, std::uint32_t format, Interlacing interlacing) const override {
        for (const auto& filter : filters_) {
            std::string refusal = filter->refusal(width, height, format, interlacing);
            if (!refusal.empty()) return refusal;
        }
        return {};
    }

    PicturePtr process(PicturePtr source, const FramePosition& position,
                       const SourceHistory& history) override {
        const auto sheet = std::make_shared<Picture>(source->width(), source->height());
        clear(*sheet);
        for (std::size_t i = 0; i < labels_.size(); ++i) {
            const PicturePtr picture = i == 0 ? source : filters_[i - 1]->process(source, position, history);
            drawCell(*sheet, static_cast<int>(i), *picture);
        }
        return sheet;
    }

private:
    /// The picture as large as the cell lets it be, the label below it, both centred.
    void drawCell(Picture& sheet, int index, const Picture& picture) const {
        const int cellWidth = sheet.width() / columns_, cellHeight = sheet.height() / rows_;
        const int left = index % columns_ * cellWidth, top = index / columns_ * cellHeight;
        const int textScale = std::max(1, cellWidth / (lettersInCell * letterWidth));
        const int gap = 2 * textScale;
        const std::string& label = labels_[static_cast<std::size_t>(index)];

        const double widthRatio = static_cast<double>(cellWidth - 2 * gap) / picture.width();
        const double heightRatio =
            static_cast<double>(cellHeight - 3 * gap - labelHeight(textScale)) / picture.height();
        const double ratio = std::min(widthRatio, heightRatio);
        const int width = static_cast<int>(picture.width() * ratio);
        const int height = static_cast<int>(picture.height() * ratio);
        if (width > 0 && height > 0) {
            const int x = left + (cellWidth - width) / 2;
            const FrameRect area{x, top + gap, x + width, top + gap + height};
            drawScaled(picture, sheet, area);
            makeOpaque(sheet, area);
        }
        drawLabel(sheet, left + (cellWidth - labelWidth(label, textScale)) / 2,
                  top + std::max(height, 0) + 2 * gap, textScale, label, textColor);
    }

    std::vector<std::string> labels_;
    std::vector<std::unique_ptr<ChainProcessor>> filters_;
    int columns_ = 1;
    int rows_ = 1;
};

}  // namespace

void addSheetCommand(CommandSet& commands) {
    const auto job = std::make_shared<RenderJob>();
    CLI::App& command =
        commands.add("sheet", "Render every filter over one picture, on one sheet", [job](Session& session) {
            SheetProcessor processor(session.catalogue());
            job->quiet = session.global().quiet;
            Confinement confinement;
            confinement.add(*job);
            confinement.enter(session.global());
            renderMedia(*job, processor);
            return 0;
        });
    command.add_option("input", job->input, "A picture")->required()->type_name("IN");
    command.add_option("output", job->output, "The sheet, as large as the picture")
        ->required()
        ->type_name("OUT");
    command.add_flag("--overwrite", job->overwrite, "Replace what exists");
    addPolicyOptions(command, job->policy);
    command.footer("Example:\n  vireo sheet photo.jpg sheet.png");
}

}  // namespace vireo
