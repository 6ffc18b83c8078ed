#pragma once

#include <string>
#include <utility>
#include <vector>

#include <opencv2/core.hpp>

/// The one adapter to `cv::FileStorage`: files are read and built in memory, and replaced whole.
namespace tnv {

/// `cv::FileStorage` writes a longer text, but refuses to read it back.
constexpr std::size_t kLongestXmlText = 4095;

/// The storage of an XML file. Not open when the file is missing or empty; a file that cannot be
/// parsed throws a `cv::Exception`.
cv::FileStorage openXml(const std::string& path);

/// Adds the path to the text of what the content of that file made the storage throw, if it is not
/// there yet: whoever is to restore the file has to know which one it is.
void nameFile(cv::Exception& error, const std::string& path);

/// A storage that builds its document in memory.
cv::FileStorage newXml();

/// The child of that name, or an empty node when there is none or `node` is no map.
cv::FileNode child(const cv::FileNode& node, const std::string& name);

/// The children named `prefix` and a number below `count`, in the order of their numbers and one
/// for each, found in one walk however many there are.
std::vector<std::pair<int, cv::FileNode>> numberedChildren(const cv::FileNode& node,
                                                           const std::string& prefix, int count);

std::string readText(const cv::FileNode& node, const std::string& defaultValue);
int readInt(const cv::FileNode& node, int defaultValue);

/// A list of exactly two numbers. Anything else is (0, 0).
cv::Point2d readPoint(const cv::FileNode& node);
cv::Size readSize(const cv::FileNode& node);

std::vector<cv::Point2d> readPoints(const cv::FileNode& node);
std::vector<int> readInts(const cv::FileNode& node);

/// Text of any content comes back byte for byte. One over `kLongestXmlText` throws a
/// `cv::Exception`, as the storage itself does on reading it.
void writeText(cv::FileStorage& storage, const std::string& name, const std::string& text);
void writePoint(cv::FileStorage& storage, const std::string& name, cv::Point2d point);
void writeSize(cv::FileStorage& storage, const std::string& name, cv::Size size);
void writePoints(cv::FileStorage& storage, const std::string& name,
                 const std::vector<cv::Point2d>& points);
void writeInts(cv::FileStorage& storage, const std::string& name, const std::vector<int>& values);

}  // namespace tnv
