// The host's table of known files. Look-ups are hashed, and iteration runs over a plain vector in the order in which
// the host put the entries in (which is sorted), so that a pass over a million files is a pass over memory.
#pragma once

#include <QHash>
#include <QReadWriteLock>

#include <algorithm>
#include <vector>

template <typename KEY, typename VALUE>
class LOCKABLE_MAP {
public:
    struct ENTRY {
        KEY key;
        VALUE value;
    };
    using const_iterator = typename std::vector<ENTRY>::const_iterator;

    const_iterator begin() const { return entries_.begin(); }
    const_iterator end() const { return entries_.end(); }
    int size() const { return static_cast<int>(entries_.size()); }

    bool contains(KEY const& key) const { return find(key) != index_.constEnd(); }

    /// The value stored for `key`, or a value-initialised one (null for pointers).
    VALUE value(KEY const& key) const {
        auto const found = find(key);
        return found == index_.constEnd() ? VALUE{} : entries_[static_cast<std::size_t>(*found)].value;
    }

    /// Replaces the value when the key is known; its place in the order stays.
    void insert(KEY const& key, VALUE value) {
        auto const found = index_.constFind(key);
        if (found != index_.constEnd()) {
            entries_[static_cast<std::size_t>(*found)].value = value;
            return;
        }
        index_.insert(key, static_cast<int>(entries_.size()));
        entries_.push_back({key, value});
    }

    void reserve(int count) {
        entries_.reserve(static_cast<std::size_t>(count));
        index_.reserve(count);
    }

    /// Puts the entries into the order of their keys.
    void sort() {
        std::sort(entries_.begin(), entries_.end(),
                  [](ENTRY const& left, ENTRY const& right) { return left.key < right.key; });
        for (std::size_t i = 0; i < entries_.size(); ++i)
            index_[entries_[i].key] = static_cast<int>(i);
    }

    /// Called with every key that is looked up and whether it was found, on the thread that asks. Host only.
    void set_look_up_hook(void (*hook)(KEY const&, bool)) { hook_ = hook; }

    /// Taken by the host around changes while others may read. Readers among the actions need not take it: the host
    /// changes the map only while none of them runs.
    QReadWriteLock& lock() const { return lock_; }

private:
    typename QHash<KEY, int>::const_iterator find(KEY const& key) const {
        auto const found = index_.constFind(key);
        if (hook_)
            hook_(key, found != index_.constEnd());
        return found;
    }

    void (*hook_)(KEY const&, bool) = nullptr;
    std::vector<ENTRY> entries_;
    QHash<KEY, int> index_;
    mutable QReadWriteLock lock_;
};
