// SPDX-License-Identifier: GPL-2.0-or-later
#ifndef VIREO_BRIDGES_FREI0R_INSTANCE_H
#define VIREO_BRIDGES_FREI0R_INSTANCE_H

#include "bridges/frei0r/frame_ring.h"
#include "bridges/frei0r/frei0r_api.h"
#include "bridges/frei0r/module.h"
#include "host/hosting/filter_instance.h"

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace frei0r {

/// The parameters that a plug-in adds for filters that read time, behind the filter's own.
enum class TimeParameter { FrameRate, TimeUnit, ClipLength };
inline constexpr int timeParameterCount = 3;

/// One use of a filter at one frame size. Calls from several threads are taken one after another.
class Instance {
public:
    /// Throws std::exception on a size that the filters' buffers cannot have, or without memory.
    Instance(std::shared_ptr<const Effect> effect, unsigned width, unsigned height);

    /// Parameters of the list by their index, then the time parameters where the filter reads time. `value`
    /// points to what the parameter's type takes; a value that is no number or no text of the parameter
    /// leaves it as it was, and an index of no parameter does nothing.
    void setParameter(int index, f0r_param_t value);

    /// A text that is handed out belongs to the instance and lives until the parameter is set again.
    void getParameter(int index, f0r_param_t value);

    /// Frames of width x height pixels, rows from the top. Where the filter fails the destination shows the
    /// source; what it threw is passed on the first time alone, so that a host's log is not flooded.
    void update(double time, const std::uint32_t* source, std::uint32_t* destination);

private:
    bool hasTimeParameter(int number) const;
    void setListed(const hosting::Parameter& parameter, f0r_param_t value);
    void setTime(TimeParameter parameter, const char* text);
    std::int64_t frameNumber(double time);
    void renderTopDown(const std::uint32_t* source, std::uint32_t* destination, std::int64_t number);
    void render(const std::uint32_t* source, std::uint32_t* destination, std::int64_t number);
    FrameBuffer bufferOver(const std::uint32_t* pixels) const;
    static std::int32_t earlierFrame(std::uint32_t time, FrameBuffer* target, const FrameRect* bounds,
                                     void* self);

    const std::shared_ptr<const Effect> effect_;
    const int width_;
    const int height_;
    const bool turnsRows_;  ///< The filter gets copies with rows from the bottom.
    std::mutex mutex_;
    hosting::FilterInstance filter_;
    FrameRing ring_;
    std::vector<std::uint32_t> turnedSource_;
    std::vector<std::uint32_t> turnedResult_;
    std::string timeTexts_[timeParameterCount];
    double frameRate_ = 0;  ///< 0: updates are counted.
    double timeUnit_ = 1;   ///< Seconds.
    std::int64_t clipLength_ = 0;
    std::int64_t updates_ = 0;
    bool failed_ = false;
};

}  // namespace frei0r

#endif
