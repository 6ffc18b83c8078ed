#pragma once

#include <string>
#include <unordered_set>

#include "verify/Finding.h"

/// Where the label texts of pictures are: beside them, or in a directory `labels` in place of the
/// directory `images` (`JPEGImages`) that the pictures lie in.
class LabelPlaces {
 public:
  explicit LabelPlaces(Findings& list) : findings(list) {}

  /// The label text of the picture; empty if there is none. Labels beside pictures in a directory
  /// `images` are reported, once for each directory: some trainers look for them in `labels` alone.
  std::string labelOf(const std::string& picture);

 private:
  Findings& findings;
  std::unordered_set<std::string> reported;
};
