#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <unordered_map>
#include <vector>

#include "tools/LabelSet.h"

class TNVDNNClass;
class TNVMark;
class TNVTrainSet;

/// How labels become marks, and marks labels.
namespace tnv {

/// A closed PolyLine for an outline, a Rect for a box.
std::unique_ptr<TNVMark> markFor(const Label& label, const TNVDNNClass& dnnClass);

/// Centre and size of a box; the corners of the box around an outline.
using MarkPlace = std::array<double, 4>;

/// The marks of a record that labels can equal, by where they are, so that a crowd of labels is not
/// compared with a crowd of marks.
class MarkIndex {
 public:
  explicit MarkIndex(const TNVTrainSet& trainSet);

  /// The mark must outlive the index.
  void add(const TNVMark& mark);

  /// Whether a mark of that class is where the label is.
  bool holds(const Label& label, const TNVDNNClass& dnnClass) const;

 private:
  /// Where marks of one class and kind are near each other. The numbers are whole.
  struct Cell {
    MarkPlace numbers{};
    int classIdx = 0;
    bool isOutline = false;

    bool operator==(const Cell&) const = default;
  };

  struct CellHash {
    std::size_t operator()(const Cell& cell) const;
  };

  void add(const TNVMark& mark, MarkPlace place, bool isOutline);
  bool cellHolds(const Cell& cell, const Label& label) const;

  std::unordered_map<Cell, std::vector<const TNVMark*>, CellHash> byCell;
};

/// Takes marks into a set of labels.
class MarkReader {
 public:
  /// The classes are in the order of their numbers, which run from 0 without gaps.
  MarkReader(LabelSet& target, const std::vector<TNVDNNClass*>& classes);

  /// Adds the picture of the record with a label for each class of its marks, or a rejection.
  void add(const TNVTrainSet& trainSet);

 private:
  void addMark(LabelledPicture& picture, const TNVMark& mark, std::size_t number);

  LabelSet& set;
  std::unordered_map<int, long long> places;  ///< of the classes, by their unique indices
};

}  // namespace tnv
