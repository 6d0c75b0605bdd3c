// SPDX-License-Identifier: MIT
#ifndef VIREO_ENGINE_CHAIN_PICTURE_CACHE_H
#define VIREO_ENGINE_CHAIN_PICTURE_CACHE_H

#include "engine/chain/fields.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <future>
#include <map>
#include <mutex>
#include <utility>

namespace vireo {

/// The latest frames, or their fields, of one place in a chain, each computed once by whoever asks first.
class PictureCache {
public:
    explicit PictureCache(std::size_t frames) : capacity_(frames) {}

    /// The picture of a frame or field. Others who ask for it meanwhile wait, and get the exception where
    /// `compute` throws; who asks later begins anew.
    PicturePtr get(std::int64_t frame, Field field, const std::function<PicturePtr()>& compute) {
        std::promise<PicturePtr> promise;
        std::shared_future<PicturePtr> picture;
        {
            const std::lock_guard lock(mutex_);
            const auto [entry, isNew] = pictures_.try_emplace({frame, field});
            if (!isNew) {
                picture = entry->second;
            } else {
                entry->second = promise.get_future().share();
                const std::size_t perFrame = field == Field::None ? 1 : 2;
                if (pictures_.size() > perFrame * capacity_) pictures_.erase(pictures_.begin());
            }
        }
        if (picture.valid()) return picture.get();
        try {
            PicturePtr computed = compute();
            promise.set_value(computed);
            return computed;
        } catch (...) {
            promise.set_exception(std::current_exception());
            const std::lock_guard lock(mutex_);
            pictures_.erase({frame, field});
            throw;
        }
    }

private:
    std::mutex mutex_;
    std::map<std::pair<std::int64_t, Field>, std::shared_future<PicturePtr>> pictures_;
    std::size_t capacity_;
};

}  // namespace vireo

#endif
