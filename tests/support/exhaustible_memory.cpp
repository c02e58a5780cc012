// SPDX-License-Identifier: Apache-2.0
#include "exhaustible_memory.h"

#include <cstdlib>
#include <new>

int allocations_left = -1;

namespace {

void* allocate(std::size_t size) {
    if (allocations_left == 0)
        return nullptr;
    if (allocations_left > 0)
        --allocations_left;
    return std::malloc(size);
}

} // namespace

void* operator new(std::size_t size) {
    void* memory = allocate(size);
    return memory != nullptr ? memory : throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return allocate(size);
}
void operator delete(void* memory) noexcept {
    std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}
