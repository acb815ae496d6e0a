#pragma once

#include "platform/rt_error.h"

#include <deque>

namespace rt {

// An array indexed from 0 as the runtime keeps it: an index outside its bounds raises
// 9 "Subscript out of range", and ReDim gives it the elements 0 to the upper bound.
template <typename T>
class Array {
public:
    T& operator()(int index) { return items_[checked(index)]; }
    const T& operator()(int index) const { return items_[checked(index)]; }

    // ReDim: elements 0 to `upperBound`, all at their zero value.
    void redim(int upperBound) { items_.assign(size_t(std::max(upperBound + 1, 0)), T{}); }
    // ReDim Preserve: the same bounds, keeping what the array holds.
    void redimPreserve(int upperBound) { items_.resize(size_t(std::max(upperBound + 1, 0))); }
    void erase() { items_.clear(); }

    int size() const { return int(items_.size()); }
    bool empty() const { return items_.empty(); }
    auto begin() const { return items_.begin(); }
    auto end() const { return items_.end(); }

private:
    size_t checked(int index) const {
        if (index < 0 || index >= int(items_.size())) {
            throw Error::standard(SubscriptOutOfRange);
        }
        return size_t(index);
    }

    std::deque<T> items_;  // not a vector, whose bools are not addressable
};

}  // namespace rt
