// SPDX-License-Identifier: MIT
#ifndef VIREO_BRIDGES_OPENFX_CHAIN_POOL_H
#define VIREO_BRIDGES_OPENFX_CHAIN_POOL_H

#include <vireo/vireo.h>

#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace openfx {

/// Throws std::bad_alloc or Refusal.
void check(VireoStatus status);

/// What the engine says against a call.
struct Refusal {
    VireoStatus status;
    std::string sentence;
};

/// Chains of one filter that are not in use, with the threads that they render on. Any thread may ask.
class ChainPool {
    using Chain = std::unique_ptr<VireoChain, decltype(&vireoChainClose)>;

public:
    ChainPool(const VireoEngine* engine, std::uint32_t filter) : engine_(engine), filter_(filter) {}

    /// A chain for one render, with settings that are the caller's to give.
    class Lease {
    public:
        /// `threads`: to share out a frame that is rendered alone; beside others it has one.
        Lease(ChainPool& pool, std::uint32_t threads);
        Lease(const Lease&) = delete;
        Lease& operator=(const Lease&) = delete;
        ~Lease();

        VireoChain* get() const { return chain_.get(); }
        void set(std::int32_t parameter, std::int64_t value) const {
            check(vireoChainSetValue(chain_.get(), 0, parameter, value));
        }

    private:
        /// Of one render at a time, which may share out its frame.
        struct Turn {
            explicit Turn(ChainPool& of) : pool(of) {
                const std::lock_guard lock(pool.mutex_);
                isMine = !std::exchange(pool.isSharing_, true);
            }
            Turn(const Turn&) = delete;
            Turn& operator=(const Turn&) = delete;
            ~Turn() {
                const std::lock_guard lock(pool.mutex_);
                if (isMine) pool.isSharing_ = false;
            }

            ChainPool& pool;
            bool isMine = false;
        };

        ChainPool& pool_;
        const Turn turn_;
        const bool isShared_;
        Chain chain_;
    };

    void clear();

private:
    Chain taken(std::uint32_t threads);

    const VireoEngine* const engine_;
    const std::uint32_t filter_;
    std::mutex mutex_;
    bool isSharing_ = false;  ///< A render has the turn.
    std::vector<Chain> alone_, sharing_;
};

}  // namespace openfx

#endif
