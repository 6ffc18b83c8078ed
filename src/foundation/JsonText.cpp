#include "foundation/JsonText.h"

#include <algorithm>
#include <locale>
#include <vector>

#include "foundation/Numbers.h"

namespace tnv {

namespace {

/// Stands before a fraction that was made a string.
constexpr char kMark = '\x01';

/// By which a fraction grows: quotes and the mark.
constexpr std::size_t kGrowth = 3;

constexpr std::string_view kNumberCharacters = "0123456789+-.eE";

bool localeHasPoints() {
  return std::use_facet<std::numpunct<char>>(std::locale()).decimal_point() == '.';
}

std::size_t endOfString(std::string_view text, std::size_t start) {
  std::size_t at = start + 1;
  while (at < text.size() && text[at] != '"')
    at += text[at] == '\\' ? 2 : 1;
  return std::min(at + 1, text.size());
}

std::size_t endOfComment(std::string_view text, std::size_t start) {
  const std::string_view opening = text.substr(start, 2);
  if (opening != "//" && opening != "/*") return start + 1;
  const std::string_view closing = opening == "//" ? "\n" : "*/";
  const auto end = text.find(closing, start + 2);
  return end == text.npos ? text.size() : end + closing.size();
}

/// The end of what begins there and has to be taken as a whole.
std::size_t endOfPart(std::string_view text, std::size_t start) {
  const char first = text[start];
  if (first == '"') return endOfString(text, start);
  if (first == '/') return endOfComment(text, start);
  if (first != '-' && (first < '0' || first > '9')) return start + 1;
  return std::min(text.find_first_not_of(kNumberCharacters, start), text.size());
}

bool isFraction(std::string_view part) {
  return part[0] != '"' && part[0] != '/' && part.size() > 1 &&
         part.find_first_of(".eE") != part.npos;
}

/// A text whose fractions are strings.
class TextWithoutFractions {
 public:
  explicit TextWithoutFractions(std::string_view original) {
    text.reserve(original.size());
    for (std::size_t at = 0, end = 0; at < original.size(); at = end) {
      end = endOfPart(original, at);
      const std::string_view part = original.substr(at, end - at);
      if (isFraction(part)) {
        starts.push_back(text.size());
        text.append({'"', kMark}).append(part).append(1, '"');
      } else {
        text.append(part);
      }
    }
  }

  /// Makes the value, and all within it, what the original text says.
  void restore(Json::Value& value) const {
    if (value.isObject() || value.isArray()) {
      for (Json::Value& member : value)
        restore(member);
    } else if (value.isString()) {
      restoreNumber(value);
    }
    value.setOffsetStart(originalOffset(value.getOffsetStart()));
    value.setOffsetLimit(originalOffset(value.getOffsetLimit()));
  }

  std::string text;

 private:
  static void restoreNumber(Json::Value& value) {
    const std::string content = value.asString();
    if (content.empty() || content[0] != kMark) return;
    // Only the payload: comments and offsets stay.
    Json::Value number(parseDouble(std::string_view(content).substr(1)));
    value.swapPayload(number);
  }

  std::ptrdiff_t originalOffset(std::ptrdiff_t offset) const {
    const auto before =
        std::lower_bound(starts.begin(), starts.end(), static_cast<std::size_t>(offset));
    return offset - (before - starts.begin()) * static_cast<std::ptrdiff_t>(kGrowth);
  }

  std::vector<std::size_t> starts;  ///< of the fractions
};

}  // namespace

bool parseJson(Json::CharReader& reader, std::string_view text, Json::Value& root,
               std::string* errors) {
  if (localeHasPoints()) return reader.parse(text.data(), text.data() + text.size(), &root, errors);
  const TextWithoutFractions plain(text);
  if (!reader.parse(plain.text.data(), plain.text.data() + plain.text.size(), &root, errors))
    return false;
  plain.restore(root);
  return true;
}

}  // namespace tnv
