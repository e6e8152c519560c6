#include "AllocationCounter.h"

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <malloc.h>
#include <unistd.h>

// glibc's own allocator, which the functions below wrap.
extern "C" {
void* __libc_malloc(std::size_t bytes);
void* __libc_calloc(std::size_t count, std::size_t bytes);
void* __libc_realloc(void* pointer, std::size_t bytes);
void* __libc_memalign(std::size_t alignment, std::size_t bytes);
void __libc_free(void* pointer);
}

namespace velarion::bench::allocation {

namespace {

std::atomic<std::int64_t> live{0};
std::atomic<std::int64_t> peak{0};

std::int64_t usableBytes(void* pointer) {
    return static_cast<std::int64_t>(malloc_usable_size(pointer));
}

void add(std::int64_t bytes) {
    const std::int64_t now = live.fetch_add(bytes, std::memory_order_relaxed) + bytes;
    std::int64_t highest = peak.load(std::memory_order_relaxed);
    while (now > highest && !peak.compare_exchange_weak(highest, now, std::memory_order_relaxed)) {
    }
}

void* counted(void* pointer) {
    if (pointer != nullptr) add(usableBytes(pointer));
    return pointer;
}

bool isPowerOfTwo(std::size_t value) { return value != 0 && (value & (value - 1)) == 0; }

std::size_t pageBytes() { return static_cast<std::size_t>(sysconf(_SC_PAGESIZE)); }

} // namespace

std::int64_t liveBytes() { return live.load(std::memory_order_relaxed); }
std::int64_t peakBytes() { return peak.load(std::memory_order_relaxed); }
void resetPeak() { peak.store(live.load(std::memory_order_relaxed), std::memory_order_relaxed); }

} // namespace velarion::bench::allocation

namespace allocation = velarion::bench::allocation;

extern "C" {

void* malloc(std::size_t bytes) noexcept { return allocation::counted(__libc_malloc(bytes)); }

void* calloc(std::size_t count, std::size_t bytes) noexcept {
    return allocation::counted(__libc_calloc(count, bytes));
}

void* realloc(void* pointer, std::size_t bytes) noexcept {
    const std::int64_t before = pointer != nullptr ? allocation::usableBytes(pointer) : 0;
    void* moved = __libc_realloc(pointer, bytes);
    // A failed realloc keeps the old block; realloc(p, 0) frees it.
    if (moved == nullptr && bytes != 0) return nullptr;
    allocation::add((moved != nullptr ? allocation::usableBytes(moved) : 0) - before);
    return moved;
}

void free(void* pointer) noexcept {
    if (pointer == nullptr) return;
    allocation::add(-allocation::usableBytes(pointer));
    __libc_free(pointer);
}

void* memalign(std::size_t alignment, std::size_t bytes) noexcept {
    return allocation::counted(__libc_memalign(alignment, bytes));
}

void* aligned_alloc(std::size_t alignment, std::size_t bytes) noexcept {
    return allocation::counted(__libc_memalign(alignment, bytes));
}

int posix_memalign(void** out, std::size_t alignment, std::size_t bytes) noexcept {
    if (!allocation::isPowerOfTwo(alignment) || alignment % sizeof(void*) != 0) return EINVAL;
    void* pointer = allocation::counted(__libc_memalign(alignment, bytes));
    if (pointer == nullptr) return ENOMEM;
    *out = pointer;
    return 0;
}

void* valloc(std::size_t bytes) noexcept {
    return allocation::counted(__libc_memalign(allocation::pageBytes(), bytes));
}

void* pvalloc(std::size_t bytes) noexcept {
    const std::size_t page = allocation::pageBytes();
    return allocation::counted(__libc_memalign(page, (bytes + page - 1) / page * page));
}

} // extern "C"
