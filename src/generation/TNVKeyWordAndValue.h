#pragma once

#include <string>
#include <vector>

/// Fills one template: a text file in which stretches such as `###NAME=VALUE###` or `###NAME###`
/// are keywords with or without a default value. Set the two files, read the keys, set values, then
/// replace. An object serves one template once.
class TNVKeyWordAndValue {
 public:
  /// Fills `keys`, `values` and `keywords`. A keyword without a default is logged and gets a marker
  /// as its value, with which `replace` refuses to run.
  void getAvailableKeys();

  /// Key, value, key, value, ... as they stand in the template; no default is an empty text.
  std::vector<std::string> getAvailableKeysAndValues() const;

  /// False, with a log line, for an unknown key.
  bool setValueForKey(const std::string& key, const std::string& value);

  /// Writes `targetFile` from `sourceFile`, which may be the same file. A value that contains its
  /// own keyword between number signs makes this run forever.
  void replace() const;

  std::vector<std::string> keys;
  std::vector<std::string> values;
  std::vector<std::string> keywords;  ///< what stands between the number signs: `NAME=VALUE`
  std::string sourceFile;
  std::string targetFile;
};
