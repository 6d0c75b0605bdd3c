// SPDX-License-Identifier: MIT
#ifndef VIREO_APP_BASE_MESSAGE_CODE_H
#define VIREO_APP_BASE_MESSAGE_CODE_H

#include <string_view>

namespace vireo {

/// What a notice or a warning is about.
enum class MessageCode {
    AlphaDropped,
    DepthReduced,
    DiffersThere,
    EncoderReplaced,
    FileBreaksOff,
    FramesImpaired,
    FramesLost,
    HdrAsItIs,
    PreparationAdjusted,
    PresetDamaged,
    QualityUnused,
    RangeShortened,
    TracksConverted,
    TracksLeftOut,
};

/// How programs know it. docs/command-line.md lists them, and they stay.
constexpr std::string_view codeText(MessageCode code) {
    switch (code) {
        case MessageCode::AlphaDropped: return "alpha-dropped";
        case MessageCode::DepthReduced: return "depth-reduced";
        case MessageCode::DiffersThere: return "differs-there";
        case MessageCode::EncoderReplaced: return "encoder-replaced";
        case MessageCode::FileBreaksOff: return "file-breaks-off";
        case MessageCode::FramesImpaired: return "frames-impaired";
        case MessageCode::FramesLost: return "frames-lost";
        case MessageCode::HdrAsItIs: return "hdr-as-it-is";
        case MessageCode::PreparationAdjusted: return "preparation-adjusted";
        case MessageCode::PresetDamaged: return "preset-damaged";
        case MessageCode::QualityUnused: return "quality-unused";
        case MessageCode::RangeShortened: return "range-shortened";
        case MessageCode::TracksConverted: return "tracks-converted";
        case MessageCode::TracksLeftOut: return "tracks-left-out";
    }
    return {};
}

}  // namespace vireo

#endif
