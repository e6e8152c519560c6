#pragma once
// SharedList<T>: a list of immutable values, copied on write at two levels.
// Copying the list copies one pointer; changing it copies the list of element
// pointers; changing one element copies that element alone. This is what lets
// a hundred undo snapshots of a large show cost little more than one show.
//
// Reading looks like a const std::vector<T>: indexing, iteration and
// algorithms see `const T&`. Writing is explicit: `edit(i)`, `push_back`,
// `insert`, `erase`, `set`, or `items()` for the element list itself.
//
// Ownership: elements and lists are shared between every copy; nothing
// shared is ever changed in place. Thread: any thread may read; writes belong
// to the thread that owns this value. Equality compares content, after a
// pointer check that makes comparing shared storage cheap.

#include "LiveModel/Shared.h"

#include <cstddef>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <utility>
#include <vector>

namespace velarion {

template <class T> class SharedList {
public:
    using Items = std::vector<Shared<T>>;
    using value_type = T;
    using size_type = std::size_t;

    class const_iterator {
    public:
        using iterator_category = std::random_access_iterator_tag;
        using value_type = T;
        using difference_type = std::ptrdiff_t;
        using pointer = const T*;
        using reference = const T&;

        const_iterator() = default;
        explicit const_iterator(typename Items::const_iterator at) : at_(at) {}

        reference operator*() const { return at_->get(); }
        pointer operator->() const { return &at_->get(); }
        reference operator[](difference_type n) const { return at_[n].get(); }
        const Shared<T>& shared() const { return *at_; }

        const_iterator& operator++() { return ++at_, *this; }
        const_iterator operator++(int) { return const_iterator(at_++); }
        const_iterator& operator--() { return --at_, *this; }
        const_iterator operator--(int) { return const_iterator(at_--); }
        const_iterator& operator+=(difference_type n) { return at_ += n, *this; }
        const_iterator& operator-=(difference_type n) { return at_ -= n, *this; }
        friend const_iterator operator+(const_iterator it, difference_type n) { return it += n; }
        friend const_iterator operator+(difference_type n, const_iterator it) { return it += n; }
        friend const_iterator operator-(const_iterator it, difference_type n) { return it -= n; }
        friend difference_type operator-(const const_iterator& a, const const_iterator& b) {
            return a.at_ - b.at_;
        }
        friend bool operator==(const const_iterator&, const const_iterator&) = default;
        friend auto operator<=>(const const_iterator& a, const const_iterator& b) {
            return a.at_ <=> b.at_;
        }

        typename Items::const_iterator base() const { return at_; }

    private:
        typename Items::const_iterator at_;
    };
    using iterator = const_iterator;

    SharedList() : items_(emptyItems()) {}
    SharedList(std::initializer_list<T> values) : SharedList(values.begin(), values.end()) {}
    SharedList(const std::vector<T>& values) : SharedList(values.begin(), values.end()) {}
    SharedList(std::vector<T>&& values) {
        Items items;
        items.reserve(values.size());
        for (T& value : values) items.emplace_back(std::move(value));
        items_ = std::make_shared<const Items>(std::move(items));
    }
    template <class It> SharedList(It first, It last) {
        Items items;
        for (; first != last; ++first) items.emplace_back(*first);
        items_ = std::make_shared<const Items>(std::move(items));
    }

    // ---- reading
    size_type size() const { return items_->size(); }
    bool empty() const { return items_->empty(); }
    const T& operator[](size_type i) const { return (*items_)[i].get(); }
    const T& at(size_type i) const { return items_->at(i).get(); }
    const T& front() const { return items_->front().get(); }
    const T& back() const { return items_->back().get(); }
    const_iterator begin() const { return const_iterator(items_->cbegin()); }
    const_iterator end() const { return const_iterator(items_->cend()); }
    const Shared<T>& shared(size_type i) const { return (*items_)[i]; }
    const Items& sharedItems() const { return *items_; }

    // ---- writing
    // The element list, writable; its elements stay shared until edited.
    Items& items() {
        if (!isSoleOwner(items_)) items_ = std::make_shared<const Items>(*items_);
        return const_cast<Items&>(*items_);
    }
    T& edit(size_type i) { return items()[i].edit(); }
    void set(size_type i, T value) { items()[i] = Shared<T>(std::move(value)); }
    void push_back(T value) { items().emplace_back(std::move(value)); }
    template <class... Args> void emplace_back(Args&&... args) {
        items().emplace_back(T(std::forward<Args>(args)...));
    }
    const_iterator insert(const_iterator at, T value) {
        const auto index = at - begin();
        items().insert(items().begin() + index, Shared<T>(std::move(value)));
        return begin() + index;
    }
    template <class It> const_iterator insert(const_iterator at, It first, It last) {
        const auto index = at - begin();
        Items added;
        for (; first != last; ++first) added.emplace_back(*first);
        items().insert(items().begin() + index, added.begin(), added.end());
        return begin() + index;
    }
    const_iterator erase(const_iterator at) {
        const auto index = at - begin();
        items().erase(items().begin() + index);
        return begin() + index;
    }
    const_iterator erase(const_iterator first, const_iterator last) {
        const auto index = first - begin();
        items().erase(items().begin() + index, items().begin() + (last - begin()));
        return begin() + index;
    }
    void clear() { items_ = emptyItems(); }
    void reserve(size_type count) { items().reserve(count); }

    template <class Predicate> friend size_type erase_if(SharedList& list, Predicate predicate) {
        return std::erase_if(list.items(),
                             [&](const Shared<T>& item) { return predicate(item.get()); });
    }

    bool sharesStorageWith(const SharedList& other) const { return items_ == other.items_; }

    friend bool operator==(const SharedList& a, const SharedList& b) {
        return a.items_ == b.items_ || *a.items_ == *b.items_;
    }

private:
    static std::shared_ptr<const Items> emptyItems() { return std::make_shared<const Items>(); }
    std::shared_ptr<const Items> items_;
};

} // namespace velarion
