#pragma once

#include <cstddef>
#include <string>
#include <vector>

/// Something about a training set that a trainer would stumble over.
struct Finding {
  std::string file;
  std::size_t line = 0;  ///< counted from 1; 0 for the file as a whole
  std::string rule;      ///< name of what is broken, like "box-outside"
  std::string text;      ///< what is wrong, for a person
};

using Findings = std::vector<Finding>;
