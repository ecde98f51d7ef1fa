// Growing an ACE array can fail for lack of memory, which ACE reports only
// through the result of size(): these helpers turn it into std::bad_alloc,
// so that no caller writes past an array that did not grow.
#pragma once

#include <ace/Containers_T.h>

#include <cstddef>
#include <new>

template <class T> void resizeArray(ACE_Array<T> &array, size_t count) {
  if (array.size(count) != 0)
    throw std::bad_alloc();
}

// Replaces `target`'s elements with copies of `source`'s.
template <class T> void assignArray(ACE_Array<T> &target, const ACE_Array<T> &source) {
  resizeArray(target, source.size());
  for (size_t i = 0; i < source.size(); ++i)
    target[i] = source[i];
}
