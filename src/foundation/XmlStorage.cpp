#include "foundation/XmlStorage.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <string_view>

#include "foundation/Files.h"
#include "foundation/XmlCheck.h"

namespace tnv {

namespace {

std::string escaped(const std::string& text) {
  std::string result;
  for (const char c : text) {
    switch (c) {
      case '"':
        result += "&quot;";
        break;
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '>':
        result += "&gt;";
        break;
      case '\n':
        result += "&#x0a;";
        break;
      case '\r':
        result += "&#x0d;";
        break;
      case '\t':
        result += "&#x09;";
        break;
      default:
        result += c;
    }
  }
  return result;
}

/// The number that the name has behind the prefix, written as we write it.
std::optional<int> numberBehind(std::string_view prefix, std::string_view name) {
  if (!name.starts_with(prefix)) return std::nullopt;
  name.remove_prefix(prefix.size());
  const bool isPlain = name == "0" || (!name.empty() && name.front() > '0' && name.front() <= '9');
  int number = 0;
  const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
  if (!isPlain || error != std::errc() || end != name.data() + name.size()) return std::nullopt;
  return number;
}

template <class T>
std::vector<T> readVector(const cv::FileNode& node) {
  std::vector<T> values;
  if (!node.empty()) node >> values;
  return values;
}

template <class T>
void writeRaw(cv::FileStorage& storage, const std::string& name, const char* layout,
              const std::vector<T>& values) {
  storage << name << "[:";
  storage.writeRaw(layout, values.data(), values.size() * sizeof(T));
  storage << "]";
}

}  // namespace

cv::FileStorage openXml(const std::string& path) {
  const auto content = readFile(path);
  if (!content || content->empty()) return {};
  if (!isWholeXml(*content)) CV_Error(cv::Error::StsParseError, "No whole XML file: " + path);
  try {
    return {*content, cv::FileStorage::READ | cv::FileStorage::MEMORY};
  } catch (cv::Exception& error) {
    nameFile(error, path);
    throw;
  }
}

void nameFile(cv::Exception& error, const std::string& path) {
  if (error.err.find(path) != std::string::npos) return;
  error.err += " in " + path;
  error.formatMessage();
}

cv::FileStorage newXml() {
  return {".xml", cv::FileStorage::WRITE | cv::FileStorage::MEMORY | cv::FileStorage::FORMAT_XML};
}

cv::FileNode child(const cv::FileNode& node, const std::string& name) {
  return node.isMap() ? node[name] : cv::FileNode();
}

std::vector<std::pair<int, cv::FileNode>> numberedChildren(const cv::FileNode& node,
                                                           const std::string& prefix, int count) {
  std::vector<std::pair<int, cv::FileNode>> children;
  if (!node.isMap()) return children;
  for (const cv::FileNode& candidate : node) {
    const auto number = numberBehind(prefix, candidate.name());
    if (number && *number < count) children.emplace_back(*number, candidate);
  }
  const auto byNumber = [](const auto& a, const auto& b) { return a.first < b.first; };
  const auto sameNumber = [](const auto& a, const auto& b) { return a.first == b.first; };
  // What we wrote ourselves is in order.
  if (!std::is_sorted(children.begin(), children.end(), byNumber))
    std::stable_sort(children.begin(), children.end(), byNumber);
  children.erase(std::unique(children.begin(), children.end(), sameNumber), children.end());
  return children;
}

std::string readText(const cv::FileNode& node, const std::string& defaultValue) {
  return node.isString() ? node.string() : defaultValue;
}

int readInt(const cv::FileNode& node, int defaultValue) {
  int value = 0;
  cv::read(node, value, defaultValue);
  return value;
}

cv::Point2d readPoint(const cv::FileNode& node) {
  const auto values = readVector<double>(node);
  return values.size() == 2 ? cv::Point2d(values[0], values[1]) : cv::Point2d();
}

cv::Size readSize(const cv::FileNode& node) {
  const auto values = readVector<int>(node);
  return values.size() == 2 ? cv::Size(values[0], values[1]) : cv::Size();
}

std::vector<cv::Point2d> readPoints(const cv::FileNode& node) {
  return readVector<cv::Point2d>(node);
}

std::vector<int> readInts(const cv::FileNode& node) {
  return readVector<int>(node);
}

void writeText(cv::FileStorage& storage, const std::string& name, const std::string& text) {
  if (text.size() > kLongestXmlText) {
    CV_Error(cv::Error::StsBadArg, "The text of \"" + name + "\" is too long");
  }
  // The storage takes a text between double quotes for one that is quoted already and writes it as
  // it stands, quotes within and all.
  const bool looksQuoted = text.starts_with('"') && text.ends_with('"');
  // Not the stream operator, which takes braces and brackets for the ends of structures.
  storage.write(name, looksQuoted ? '"' + escaped(text) + '"' : text);
}

void writePoint(cv::FileStorage& storage, const std::string& name, cv::Point2d point) {
  storage << name << "[:" << point.x << point.y << "]";
}

void writeSize(cv::FileStorage& storage, const std::string& name, cv::Size size) {
  storage << name << "[:" << size.width << size.height << "]";
}

void writePoints(cv::FileStorage& storage, const std::string& name,
                 const std::vector<cv::Point2d>& points) {
  writeRaw(storage, name, "2d", points);
}

void writeInts(cv::FileStorage& storage, const std::string& name, const std::vector<int>& values) {
  writeRaw(storage, name, "1i", values);
}

}  // namespace tnv
