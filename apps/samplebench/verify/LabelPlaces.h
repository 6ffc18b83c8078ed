#pragma once

#include <string>
#include <unordered_set>

#include "verify/Finding.h"

/// Where the label texts of pictures are: beside them, or in a directory `labels` in place of the
/// directory `images` (`JPEGImages`) that the pictures lie in.
class LabelPlaces {
 public:
  /// In sets with lists Darknet looks for labels beside pictures, its successors in `labels`.
  LabelPlaces(Findings& list, bool setHasLists) : findings(list), hasLists(setHasLists) {}

  /// The label text of the picture; empty if there is none. Pictures below a directory `images` are
  /// reported, once for each directory, if not all trainers look for their labels there: where the
  /// labels lie beside them, the set has lists, or there are several such directories in the path.
  std::string labelOf(const std::string& picture);

 private:
  void report(const std::string& picture, const std::string& text);

  Findings& findings;
  bool hasLists;
  std::unordered_set<std::string> reported;
};
