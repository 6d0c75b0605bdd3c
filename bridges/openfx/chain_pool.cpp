// SPDX-License-Identifier: MIT
#include "bridges/openfx/chain_pool.h"

#include <new>
#include <utility>

namespace openfx {

void check(VireoStatus status) {
    if (status == VireoNoMemory) throw std::bad_alloc();
    if (status != VireoDone) throw Refusal{status, vireoLastError()->sentence};
}

ChainPool::Chain ChainPool::taken(std::uint32_t threads) {
    {
        const std::lock_guard lock(mutex_);
        auto& idle = threads > 1 ? sharing_ : alone_;
        if (!idle.empty()) {
            Chain chain = std::move(idle.back());
            idle.pop_back();
            return chain;
        }
    }
    VireoChain* made = nullptr;
    check(vireoChainNew(engine_, &made));
    Chain chain(made, vireoChainClose);
    check(vireoChainAddFilter(made, filter_));
    check(vireoChainSetThreads(made, threads));
    return chain;
}

ChainPool::Lease::Lease(ChainPool& pool, std::uint32_t threads)
    : pool_(pool),
      turn_(pool),
      isShared_(threads > 1 && turn_.isMine),
      chain_(pool.taken(isShared_ ? threads : 1)) {}

ChainPool::Lease::~Lease() {
    const std::lock_guard lock(pool_.mutex_);
    try {
        (isShared_ ? pool_.sharing_ : pool_.alone_).push_back(std::move(chain_));
    } catch (const std::bad_alloc&) {
        chain_.reset();
    }
}

void ChainPool::clear() {
    const std::lock_guard lock(mutex_);
    alone_.clear();
    sharing_.clear();
}

}  // namespace openfx
