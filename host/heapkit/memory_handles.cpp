// SPDX-License-Identifier: MIT
#include "host/heapkit/memory_handles.h"

#include <cstdlib>

namespace HeapKit {
namespace {

/// A handle is the address of `bytes`, which stands first.
struct Block {
    void* bytes;
    std::size_t size;
};

}  // namespace

void** newHandle(std::size_t size) {
    auto* block = static_cast<Block*>(std::malloc(sizeof(Block)));
    if (block == nullptr) return nullptr;
    *block = {std::calloc(size == 0 ? 1 : size, 1), size};
    if (block->bytes == nullptr) {
        std::free(block);
        return nullptr;
    }
    return &block->bytes;
}

void disposeHandle(void** handle) {
    if (handle == nullptr) return;
    std::free(*handle);
    std::free(handle);
}

std::size_t handleSize(void** handle) { return reinterpret_cast<const Block*>(handle)->size; }

}  // namespace HeapKit
