#pragma once
// A JSON object's members, kept sorted by key in one vector: the order they
// are written in, found by binary search. One answer can hold a hundred
// thousand small objects (get_show of a large show); one block per object
// builds, walks and frees several times faster than a tree node per member.
//
// Like std::map with std::less<>: keys are unique (in a list the first one
// wins, `insert_or_assign` replaces), iteration is in byte order of the keys,
// and lookups take any string view. Unlike it: adding or removing a member
// moves the others, so a reference or iterator to a member lasts only until
// the next insertion or erasure.
//
// Thread: a plain value; any thread.

#include <algorithm>
#include <cstddef>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace velarion {

template <class Value> class SortedMembers {
public:
    using key_type = std::string;
    using mapped_type = Value;
    using value_type = std::pair<std::string, Value>;
    using iterator = typename std::vector<value_type>::iterator;
    using const_iterator = typename std::vector<value_type>::const_iterator;
    using size_type = std::size_t;

    SortedMembers() = default;
    SortedMembers(std::initializer_list<value_type> members) : members_(members) {
        // Stable, so that of two equal keys the first listed stays.
        std::stable_sort(members_.begin(), members_.end(),
                         [](const value_type& a, const value_type& b) { return a.first < b.first; });
        members_.erase(std::unique(members_.begin(), members_.end(),
                                   [](const value_type& a, const value_type& b) { return a.first == b.first; }),
                       members_.end());
    }

    iterator begin() { return members_.begin(); }
    iterator end() { return members_.end(); }
    const_iterator begin() const { return members_.begin(); }
    const_iterator end() const { return members_.end(); }
    size_type size() const { return members_.size(); }
    bool empty() const { return members_.empty(); }
    void clear() { members_.clear(); }
    void reserve(size_type count) { members_.reserve(count); }

    iterator find(std::string_view key) {
        const auto at = lowerBound(key);
        return at != members_.end() && at->first == key ? at : members_.end();
    }
    const_iterator find(std::string_view key) const {
        const auto at = lowerBound(key);
        return at != members_.end() && at->first == key ? at : members_.end();
    }
    bool contains(std::string_view key) const { return find(key) != end(); }
    size_type count(std::string_view key) const { return contains(key) ? 1 : 0; }

    Value& at(std::string_view key) {
        const auto found = find(key);
        if (found == end()) throw std::out_of_range("no such JSON member");
        return found->second;
    }
    const Value& at(std::string_view key) const {
        const auto found = find(key);
        if (found == end()) throw std::out_of_range("no such JSON member");
        return found->second;
    }
    Value& operator[](std::string_view key) { return try_emplace(key).first->second; }

    // Adds the member unless the key is taken; the value is built only then.
    template <class... Args> std::pair<iterator, bool> try_emplace(std::string_view key, Args&&... args) {
        const auto at = lowerBound(key);
        if (at != members_.end() && at->first == key) return {at, false};
        return {insertAt(at, key, std::forward<Args>(args)...), true};
    }
    template <class... Args> std::pair<iterator, bool> emplace(std::string_view key, Args&&... args) {
        return try_emplace(key, std::forward<Args>(args)...);
    }
    template <class V> std::pair<iterator, bool> insert_or_assign(std::string_view key, V&& value) {
        const auto at = lowerBound(key);
        if (at != members_.end() && at->first == key) {
            at->second = std::forward<V>(value);
            return {at, false};
        }
        return {insertAt(at, key, std::forward<V>(value)), true};
    }

    size_type erase(std::string_view key) {
        const auto found = find(key);
        if (found == end()) return 0;
        members_.erase(found);
        return 1;
    }
    iterator erase(const_iterator position) { return members_.erase(position); }

    // Written out, not defaulted: a defaulted one makes clang instantiate the
    // member type while the value that holds this list is still incomplete.
    friend bool operator==(const SortedMembers& a, const SortedMembers& b) { return a.members_ == b.members_; }

private:
    // Members mostly arrive in key order (a parsed object, a summary built
    // key by key), so the end is tried first.
    template <class Self> static auto lowerBound(Self& self, std::string_view key) {
        auto& members = self.members_;
        if (members.empty() || std::string_view(members.back().first) < key) return members.end();
        return std::lower_bound(members.begin(), members.end(), key,
                                [](const value_type& member, std::string_view wanted) {
                                    return std::string_view(member.first) < wanted;
                                });
    }
    iterator lowerBound(std::string_view key) { return lowerBound(*this, key); }
    template <class... Args> iterator insertAt(iterator at, std::string_view key, Args&&... args) {
        if (at == members_.end()) {
            members_.emplace_back(std::piecewise_construct, std::forward_as_tuple(key),
                                  std::forward_as_tuple(std::forward<Args>(args)...));
            return members_.end() - 1;
        }
        return members_.emplace(at, std::piecewise_construct, std::forward_as_tuple(key),
                                std::forward_as_tuple(std::forward<Args>(args)...));
    }
    const_iterator lowerBound(std::string_view key) const { return lowerBound(*this, key); }

    std::vector<value_type> members_;
};

} // namespace velarion
