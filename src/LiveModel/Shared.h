#pragma once
// Shared<T>: an immutable value held behind a shared pointer and copied on
// write. Copying a Show copies pointers, so a hundred undo snapshots of a
// large show share every section and library item they didn't change.
//
// Ownership: values are shared between every copy; nobody may change a shared
// one in place. `edit()` makes the storage unique first. Thread: a Shared may
// be read from any thread; `edit()` belongs to the thread that owns the value.
// Equality compares content, after a fast check for shared storage.

#include <memory>
#include <utility>

namespace velarion {

// Whether `pointer` is the only owner of its value, so that the value may be
// written in place. A count of one may just have been left by another thread
// letting its copy go (the show writer, an agent's snapshot, a sender done
// with a buffer), and reading the count orders nothing. Taking and dropping a
// reference is a read-modify-write of the count with acquire and release:
// it orders that thread's reads of the value before this thread's writes,
// in a way ThreadSanitizer also sees (a fence it wouldn't).
template <class P> bool isSoleOwner(const P& pointer) {
    if (pointer.use_count() != 1) return false;
    { [[maybe_unused]] const P touched = pointer; }
    return true;
}

template <class T> class Shared {
public:
    Shared() : value_(std::make_shared<const T>()) {}
    Shared(const T& value) : value_(std::make_shared<const T>(value)) {}
    Shared(T&& value) : value_(std::make_shared<const T>(std::move(value))) {}

    const T& get() const { return *value_; }
    operator const T&() const { return *value_; }
    const T* operator->() const { return value_.get(); }
    const T& operator*() const { return *value_; }

    // Writable access; copies the value first when another Show shares it.
    T& edit() {
        if (!isSoleOwner(value_)) value_ = std::make_shared<const T>(*value_);
        return const_cast<T&>(*value_);
    }

    bool sharesStorageWith(const Shared& other) const { return value_ == other.value_; }

    friend bool operator==(const Shared& a, const Shared& b) {
        return a.value_ == b.value_ || *a.value_ == *b.value_;
    }
    friend bool operator==(const Shared& a, const T& b) { return *a.value_ == b; }

private:
    // Held as const so that only edit() can write, and only after unsharing.
    std::shared_ptr<const T> value_;
};

} // namespace velarion
