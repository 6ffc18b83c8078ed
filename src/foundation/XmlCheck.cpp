#include "foundation/XmlCheck.h"

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

namespace tnv {

namespace {

/// No file of ours comes near this, and it is far from what a thread's stack can take.
constexpr std::size_t kDeepestNesting = 1000;

constexpr std::string_view kSpaces = " \t\r\n";

/// Which bytes may stand in a name; looked up, since long lists are mostly names.
constexpr std::array<bool, 256> kIsNameCharacter = [] {
  std::array<bool, 256> isName{};
  for (const char c :
       std::string_view("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_-"))
    isName[static_cast<unsigned char>(c)] = true;
  return isName;
}();

bool isNameCharacter(char c) {
  return kIsNameCharacter[static_cast<unsigned char>(c)];
}

std::string_view withoutSpacesBehind(std::string_view text) {
  return text.substr(0, text.find_last_not_of(kSpaces) + 1);
}

bool isName(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), isNameCharacter);
}

/// Takes what stands before the place off the document, with the mark there; nothing without one.
std::optional<std::string_view> takeUntil(std::string_view& document, std::size_t place,
                                          std::size_t markLength) {
  if (place == document.npos) return std::nullopt;
  const std::string_view taken = document.substr(0, place);
  document.remove_prefix(place + markLength);
  return taken;
}

std::optional<std::string_view> takeUntil(std::string_view& document, std::string_view mark) {
  return takeUntil(document, document.find(mark), mark.size());
}

std::optional<std::string_view> takeUntil(std::string_view& document, char mark) {
  return takeUntil(document, document.find(mark), 1);
}

bool isSpace(std::string_view text) {
  return text.find_first_not_of(kSpaces) == text.npos;
}

bool takeProlog(std::string_view& document) {
  if (!document.starts_with("<?xml ")) return false;
  const auto prolog = takeUntil(document, "?>");
  return prolog && std::count(prolog->begin(), prolog->end(), '<') == 1 &&
         std::count(prolog->begin(), prolog->end(), '"') % 2 == 0 &&
         prolog->find('\0') == prolog->npos;
}

/// Opens or closes the element of a tag without its brackets.
bool takeTag(std::string_view tag, std::vector<std::string_view>& open) {
  tag = withoutSpacesBehind(tag);
  if (tag.starts_with('/')) {
    if (open.empty() || open.back() != tag.substr(1)) return false;
    open.pop_back();
    return true;
  }
  if (tag.ends_with('/')) return isName(withoutSpacesBehind(tag.substr(0, tag.size() - 1)));
  open.push_back(tag);
  return isName(tag) && open.size() <= kDeepestNesting;
}

bool takeMarkup(std::string_view& document, std::vector<std::string_view>& open) {
  if (document.starts_with("!--")) return takeUntil(document, "-->").has_value();
  const auto tag = takeUntil(document, '>');
  return tag && takeTag(*tag, open);
}

}  // namespace

bool isWholeXml(std::string_view document) {
  if (!takeProlog(document)) return false;
  std::vector<std::string_view> open;
  bool anyElement = false;
  while (const auto text = takeUntil(document, '<')) {
    if (open.empty() && !isSpace(*text)) return false;
    if (!takeMarkup(document, open)) return false;
    anyElement = anyElement || !open.empty();
  }
  return anyElement && open.empty() && isSpace(document);
}

}  // namespace tnv
