#pragma once

#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

/// A key and value text file in memory: one `key = value` a line, text in double quotes, comments
/// behind two slashes. Getters never add a key; setters replace or add it. Keys and files outlive
/// versions of the program: the grammar does not change.
class TNVSettings {
 public:
  /// Touches no file.
  explicit TNVSettings(std::string path);

  /// Replaces the values by those of the file. False, with a log line, when there is no file; a
  /// file that cannot be opened leaves the values as they are.
  bool loadFile();

  /// Replaces the file by the values, sorted by key. False when it could not be written; an earlier
  /// file is whole then.
  bool saveFile();

  /// Whether a text comes back from a list as it went in: nothing escapes in the file.
  static bool survivesInList(std::string_view text);

  bool contains(const std::string& key) const;

  std::string getString(const std::string& key, const std::string& defaultValue) const;
  void setString(const std::string& key, const std::string& text);
  bool getBool(const std::string& key, bool defaultValue) const;
  void setBool(const std::string& key, bool value);
  int getInt(const std::string& key, int defaultValue) const;
  void setInt(const std::string& key, int value);
  std::vector<int> getIntList(const std::string& key, const std::vector<int>& defaultValue) const;
  void setIntList(const std::string& key, const std::vector<int>& values);
  std::vector<float> getFloatList(const std::string& key,
                                  const std::vector<float>& defaultValue) const;
  void setFloatList(const std::string& key, const std::vector<float>& values);
  std::vector<std::string> getStringList(const std::string& key,
                                         const std::vector<std::string>& defaultValue) const;
  void setStringList(const std::string& key, const std::vector<std::string>& values);
  std::map<std::string, std::string> getStringMap(
      const std::string& key, const std::map<std::string, std::string>& defaultValue) const;
  void setStringMap(const std::string& key, const std::map<std::string, std::string>& values);

  /// Stores the text as it is. With `quotedFlag` 1 the file shows it in double quotes. Takes no
  /// lock.
  void setValue(const std::string& key, const std::string& text, int quotedFlag);

 private:
  const std::string* find(const std::string& key) const;
  void setBare(const std::string& key, const std::string& text);
  void readLine(std::string_view line);

  std::string path;
  std::map<std::string, std::string> values;
  std::vector<char> ignored;
  std::map<std::string, int> quoted;
  mutable std::mutex mutex;
};
