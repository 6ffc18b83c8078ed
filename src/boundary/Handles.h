#pragma once

#include <vector>

#include <opencv2/core.hpp>

#include "TNV_SampleBenchNative/WTNVDNNClass.h"
#include "TNV_SampleBenchNative/WTNVMark.h"
#include "TNV_SampleBenchNative/WTNVTrainSet.h"

/// Lists across the boundary, from handles to what they stand for and back.
namespace tnv {

inline TNVMark* nativeOf(const WTNVMark& handle) {
  return handle.getNativeMark();
}
inline TNVDNNClass* nativeOf(const WTNVDNNClass& handle) {
  return handle.getNativeDNNClass();
}
inline TNVTrainSet* nativeOf(const WTNVTrainSet& handle) {
  return handle.getNativeTrainSet();
}

template <class Handle>
auto asPointers(const std::vector<Handle>& handles) {
  std::vector<decltype(nativeOf(handles.front()))> pointers;
  pointers.reserve(handles.size());
  for (const Handle& handle : handles)
    pointers.push_back(nativeOf(handle));
  return pointers;
}

/// Null handles, which calls answer with where there is no class, are left out.
inline std::vector<TNVDNNClass*> asClasses(const std::vector<WTNVDNNClass>& handles) {
  std::vector<TNVDNNClass*> classes = asPointers(handles);
  std::erase(classes, nullptr);
  return classes;
}

template <class Handle, class Native>
std::vector<Handle> asHandles(const std::vector<Native*>& pointers) {
  std::vector<Handle> handles;
  handles.reserve(pointers.size());
  for (Native* pointer : pointers)
    handles.emplace_back(pointer);
  return handles;
}

/// A pair x, y each; an element that is no pair keeps its place as (0, 0).
inline std::vector<cv::Point2d> asPoints(const std::vector<std::vector<double>>& pairs) {
  std::vector<cv::Point2d> points;
  points.reserve(pairs.size());
  for (const std::vector<double>& pair : pairs) {
    points.push_back(pair.size() == 2 ? cv::Point2d(pair[0], pair[1]) : cv::Point2d());
  }
  return points;
}

}  // namespace tnv
