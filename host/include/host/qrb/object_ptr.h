// SPDX-License-Identifier: MIT
#ifndef VIREO_HOST_QRB_OBJECT_PTR_H
#define VIREO_HOST_QRB_OBJECT_PTR_H

#include "host/host_export.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <new>
#include <utility>

namespace QRB {

struct VIREO_HOST_API Allocator {
    /// Throws std::bad_alloc.
    static void* Allocate(std::size_t size);
    static void Dispose(void* block, std::size_t size);
};

/// A shared pointer whose reference count may be changed from any thread; the last one deletes the object.
template <class T>
class ObjectPtr {
public:
    ObjectPtr() = default;

    /// Takes the object over. It is deleted when there is no memory for the count.
    explicit ObjectPtr(T* object) : object_(object) {
        try {
            if (object != nullptr) count_ = new (Allocator::Allocate(sizeof(Count))) Count{1};
        } catch (...) {
            delete object;
            throw;
        }
    }

    ObjectPtr(const ObjectPtr& other) : object_(other.object_), count_(other.count_) {
        if (count_ != nullptr) count_->fetch_add(1, std::memory_order_relaxed);
    }

    ObjectPtr(ObjectPtr&& other) noexcept
        : object_(std::exchange(other.object_, nullptr)), count_(std::exchange(other.count_, nullptr)) {}

    ObjectPtr& operator=(ObjectPtr other) noexcept {
        std::swap(object_, other.object_);
        std::swap(count_, other.count_);
        return *this;
    }

    ~ObjectPtr() {
        if (count_ == nullptr || count_->fetch_sub(1, std::memory_order_acq_rel) != 1) return;
        delete object_;
        Allocator::Dispose(count_, sizeof(Count));
    }

    T* get() const { return object_; }
    T* operator->() const { return object_; }
    explicit operator bool() const { return object_ != nullptr; }

private:
    using Count = std::atomic<std::int32_t>;
    static_assert(sizeof(Count) == 4);

    T* object_ = nullptr;
    Count* count_ = nullptr;
};

}  // namespace QRB

#endif
