#include "tools/LabelFiles.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <system_error>
#include <unordered_set>

#include <opencv2/imgcodecs.hpp>

#include "foundation/Files.h"
#include "foundation/Log.h"
#include "foundation/PictureHead.h"
#include "foundation/Utf8.h"
#include "tools/ExportPlace.h"

namespace tnv {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kCopyInWork = ".copy.part";

/// File systems take names of 255 bytes. With a number behind it, an extension and what marks a
/// file that is being written, a name stays below.
constexpr std::size_t kLongestStem = 230;

/// File systems take no longer ones.
constexpr std::size_t kLongestPath = 4096;

constexpr std::string_view kBlanks = " \t\r\f\v";

std::string lowerCase(std::string text) {
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return text;
}

bool climbs(const fs::path& path) {
  return std::any_of(path.begin(), path.end(), [](const fs::path& part) { return part == ".."; });
}

/// A copy that was cut off never bears the name of a picture.
std::error_code copyFile(const fs::path& from, const fs::path& to) {
  std::error_code error;
  // A picture that lies where it is to be copied to is there already.
  if (fs::equivalent(from, to, error)) return {};
  const fs::path part = to.parent_path() / kCopyInWork;
  removeFile(part.string());
  fs::copy_file(from, part, error);
  if (!error) fs::rename(part, to, error);
  if (error) removeFile(part.string());
  return error;
}

/// Goes through a tree of directories.
class Walker {
 public:
  explicit Walker(const std::function<bool(const std::string&)>& callback) : isEnough(callback) {}

  void enter(const fs::path& directory, bool isLinked) {
    std::error_code error;
    const std::string real = fs::canonical(directory, error).string();
    if (error) return tellUnreadable(directory);
    // A link to a directory that holds it would have no end; those that link to each other would be
    // gone through in every order.
    if (std::find(open.begin(), open.end(), real) != open.end()) return;
    if (isLinked && !linked.insert(real).second) return;
    open.push_back(real);
    auto entry = fs::directory_iterator(directory, error);
    for (; !error && !ended && entry != fs::directory_iterator(); entry.increment(error))
      visit(*entry, isLinked);
    open.pop_back();
    if (error) tellUnreadable(directory);
  }

  TreeWalk result;

 private:
  void visit(const fs::directory_entry& entry, bool isLinked) {
    std::error_code error;
    if (entry.path().filename().string().starts_with(kExportLeftovers)) return;
    const bool isLink = entry.is_symlink(error);
    if (entry.is_directory(error)) {
      result.followedLinks = result.followedLinks || isLink;
      return enter(entry.path(), isLinked || isLink);
    }
    const std::string path = withForwardSlashes(entry.path().string());
    if (isLink && !entry.exists(error) && !hasExtension(path, ".txt") &&
        !hasPictureExtension(path)) {
      return result.deadLinks.push_back(path);
    }
    result.followedLinks = result.followedLinks || isLink;
    ended = isEnough(path);
  }

  void tellUnreadable(const fs::path& path) {
    result.unreadable.push_back(withForwardSlashes(path.string()));
  }

  const std::function<bool(const std::string&)>& isEnough;
  std::vector<std::string> open;  ///< the directories that lead to the one in work
  std::unordered_set<std::string> linked;
  bool ended = false;
};

void logFailure(std::string_view who, const std::string& what, const std::string& path,
                const std::error_code& error = {}) {
  logLine(std::string(who) + ": Could not " + what + " '" + path + "'" +
          (error ? ": " + error.message() : "!"));
}

}  // namespace

const std::vector<std::string> kPictureTypes{"jpg", "jpeg", "png"};

std::string absolutePicturePath(const std::string& path) {
  std::error_code error;
  const fs::path absolute = fs::absolute(path, error);
  return withForwardSlashes(error ? path : absolute.lexically_normal().string());
}

std::string asDirectory(const std::string& path) {
  if (path.empty() || path.ends_with('/')) return path;
  return path + "/";
}

std::string_view withoutByteOrderMark(std::string_view text) {
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  return text;
}

std::string_view trimmed(std::string_view text) {
  const auto begin = text.find_first_not_of(kBlanks);
  if (begin == text.npos) return {};
  return text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

std::optional<std::string> pathBelow(const std::string& directory, const std::string& name) {
  const fs::path path(withForwardSlashes(name));
  if (path.filename().empty() || path.is_absolute() || climbs(path)) return std::nullopt;
  if (name.find('\0') != name.npos) return std::nullopt;
  return absolutePicturePath((fs::path(directory) / path).string());
}

std::optional<std::string> findByEnd(
    const std::string& directory, const std::string& told,
    const std::function<std::optional<std::string>(const std::string&)>& at) {
  std::string end = withForwardSlashes(told);
  if (end.size() > kLongestPath) return std::nullopt;
  while (true) {
    end.erase(0, end.find_first_not_of('/'));
    if (end.empty()) return std::nullopt;
    const auto path = pathBelow(directory, end);
    if (const auto found = path ? at(*path) : std::nullopt) return found;
    end.erase(0, std::min(end.find('/'), end.size()));
  }
}

std::optional<std::vector<std::string>> readNames(const std::string& file) {
  const auto content = readFile(file);
  if (!content) return std::nullopt;
  const auto lines = std::count(content->begin(), content->end(), '\n');
  if (lines > static_cast<std::ptrdiff_t>(kMostClasses)) {
    logLine("readNames: '" + file + "' has too many lines for a list of class names!");
    return std::nullopt;
  }
  std::vector<std::string> names;
  for (const std::string_view line : splitLines(withoutByteOrderMark(*content)))
    names.emplace_back(trimmed(line));
  while (!names.empty() && names.back().empty())
    names.pop_back();
  if (names.empty()) return std::nullopt;
  return names;
}

std::optional<std::string> findUpwards(const std::string& path,
                                       const std::vector<fs::path>& directories) {
  std::error_code error;
  for (const fs::path& directory : directories) {
    for (fs::path above = directory;; above = above.parent_path()) {
      if (fs::exists(above / path, error)) return (above / path).string();
      if (above == above.parent_path()) break;
    }
  }
  return fs::exists(path, error) ? std::optional(path) : std::nullopt;
}

TreeWalk forEachFileBelow(const std::string& directory,
                          const std::function<bool(const std::string& file)>& isEnough) {
  Walker walker(isEnough);
  walker.enter(directory, false);
  return std::move(walker.result);
}

std::vector<std::string> outputNames(const LabelSet& set) {
  std::vector<std::string> names;
  std::unordered_set<std::string> taken;
  std::unordered_map<std::string, std::size_t> lastNumber;
  for (const LabelledPicture& picture : set.pictures) {
    const std::string stem = shortened(fs::path(picture.path).stem().string(), kLongestStem);
    std::string name = stem;
    // Counting goes on where it stopped for the same name, so that many of it cost no more.
    std::size_t& number = lastNumber.try_emplace(lowerCase(stem), 1).first->second;
    while (!taken.insert(lowerCase(name)).second)
      name = stem + "_" + std::to_string(++number);
    names.push_back(std::move(name));
  }
  return names;
}

std::string pixelText(double pixels) {
  // Less would show what dividing and multiplying do to the last digits of a double.
  constexpr double kRounding = 1e6;
  std::array<char, 32> digits;
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(),
                                 std::round(pixels * kRounding) / kRounding)
                       .ptr;
  return {digits.data(), end};
}

std::string pictureExtension(const std::string& path) {
  return fs::path(path).extension().string();
}

bool hasExtension(const std::string& path, std::string_view extension) {
  return lowerCase(pictureExtension(path)) == extension;
}

bool hasPictureExtension(const std::string& path) {
  return std::any_of(kPictureTypes.begin(), kPictureTypes.end(),
                     [&](const std::string& type) { return hasExtension(path, "." + type); });
}

bool isPictureFile(const std::string& path) {
  return isFile(path) && (hasPictureExtension(path) || !pictureSize(path).empty());
}

std::optional<std::string> pictureAt(const std::string& path) {
  return isPictureFile(path) ? std::optional(path) : std::nullopt;
}

bool looksLikePicture(const std::string& file) {
  return hasPictureExtension(file) || (isFile(file) && cv::haveImageReader(file));
}

bool isFile(const std::string& path) {
  std::error_code error;
  return fs::is_regular_file(path, error);
}

bool isDirectory(const std::string& path) {
  std::error_code error;
  return fs::is_directory(path, error);
}

std::string realPath(const std::string& path) {
  std::error_code error;
  const fs::path real = fs::canonical(path, error);
  return error ? path : real.string();
}

void dropDoubles(std::vector<std::string>& files) {
  std::unordered_set<std::string> seen;
  std::erase_if(files,
                [&](const std::string& file) { return !seen.insert(realPath(file)).second; });
}

std::string namesText(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names)
    text += name + "\n";
  return text;
}

bool makeDirectory(const std::string& directory, std::string_view who) {
  std::error_code error;
  fs::create_directories(directory, error);
  std::error_code kindError;
  if (fs::is_directory(directory, kindError)) return true;
  logFailure(who, "make", directory, error);
  return false;
}

bool writeWhole(const std::string& file, std::string_view text, std::string_view who) {
  if (replaceFile(file, text)) return true;
  logFailure(who, "write", file);
  return false;
}

bool copyPictures(const LabelSet& set, const std::vector<std::string>& names,
                  const std::string& directory, std::string_view who, const GoOn& goOn) {
  for (std::size_t i = 0; i < set.pictures.size(); ++i) {
    if (!goesOn(goOn)) return false;
    const std::string& from = set.pictures[i].path;
    const std::error_code error = copyFile(from, directory + names[i] + pictureExtension(from));
    if (!error) continue;
    logFailure(who, "copy", from, error);
    return false;
  }
  return true;
}

}  // namespace tnv
