// SPDX-License-Identifier: GPL-2.0-or-later
// libobs with the plug-in and two sources whose pixels the tests choose.
#ifndef VIREO_TESTS_BRIDGES_OBS_STUDIO_H
#define VIREO_TESTS_BRIDGES_OBS_STUDIO_H

#include <obs.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

struct Release {
    void operator()(obs_data_t* data) const { obs_data_release(data); }
    void operator()(obs_source_t* source) const { obs_source_release(source); }
    void operator()(obs_properties_t* properties) const { obs_properties_destroy(properties); }
};

using Data = std::unique_ptr<obs_data_t, Release>;
using Source = std::unique_ptr<obs_source_t, Release>;
using Properties = std::unique_ptr<obs_properties_t, Release>;

/// BGRA, rows from the top.
struct Image {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::vector<std::uint8_t> pixels;

    bool operator==(const Image&) const = default;
};

/// No two neighbours alike; opaque unless `hasAlpha`.
Image testImage(std::uint32_t width, std::uint32_t height, bool hasAlpha = false);

/// What the engine makes of an image.
Image rendered(const Image& image, const std::string& chain);

constexpr int framesASecond = 30;

class Studio {
public:
    Studio();
    ~Studio();

    /// Shows a source that draws the image: a texture, or frames that arrive by themselves.
    void show(const Image& image, bool isAsynchronous = false);

    /// Another image for the source.
    void change(const Image& image);

    /// Gives the source a filter with settings in JSON.
    obs_source_t* addFilter(const std::string& settings);
    void removeFilter();

    obs_source_t* source() const { return source_.get(); }
    obs_source_t* filter() const { return filter_.get(); }

    /// What the source looks like now, drawn between two of OBS's frames.
    Image seen() const;

    /// Whether the source looks like that within some seconds.
    bool becomes(const Image& image, int seconds = 2) const;
    bool becomes(const std::function<bool(const Image& seen)>& isSo, int seconds = 2) const;

    long long statistic(const char* name) const;
    std::string problem() const;

    static void wait(int frames);

private:
    Source source_;
    Source filter_;
};

#endif
