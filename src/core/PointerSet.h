// An ordered set of object pointers: insertion order, inserts at the end,
// never the same pointer twice (inserting a present one does nothing). It
// owns nothing. The port's free ECUs and channels, and a channel's ECUs.
#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

template <class T> class PointerSet {
public:
  using const_iterator = typename std::vector<T *>::const_iterator;

  // False when the pointer was already there.
  bool insert(T *item) {
    if (contains(item))
      return false;
    items_.push_back(item);
    return true;
  }
  // False when the pointer was not there.
  bool remove(T *item) {
    const auto found = std::find(items_.begin(), items_.end(), item);
    if (found == items_.end())
      return false;
    items_.erase(found);
    return true;
  }
  bool contains(const T *item) const {
    return std::find(items_.begin(), items_.end(), item) != items_.end();
  }
  void clear() { items_.clear(); }
  size_t size() const { return items_.size(); }
  bool empty() const { return items_.empty(); }
  const_iterator begin() const { return items_.begin(); }
  const_iterator end() const { return items_.end(); }

private:
  std::vector<T *> items_;
};
