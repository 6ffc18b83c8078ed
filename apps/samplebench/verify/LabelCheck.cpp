#include "verify/LabelCheck.h"

#include <charconv>
#include <unordered_map>

namespace {

constexpr std::size_t fieldCount = 5;

struct Box {
  double x;
  double y;
  double width;
  double height;
};

std::optional<std::size_t> parseClass(const std::string& text) {
  std::size_t number = 0;
  const auto* end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || rest != end) return std::nullopt;
  return number;
}

std::optional<Box> parseBox(const std::vector<std::string>& fields) {
  const auto x = parseNumber(fields[1]);
  const auto y = parseNumber(fields[2]);
  const auto width = parseNumber(fields[3]);
  const auto height = parseNumber(fields[4]);
  if (!x || !y || !width || !height) return std::nullopt;
  return Box{*x, *y, *width, *height};
}

bool isCentre(double value) {
  return value > 0 && value <= 1;
}

bool reachesOutside(double centre, double size) {
  return centre - size / 2 < -labelEdgeTolerance || centre + size / 2 > 1 + labelEdgeTolerance;
}

/// The checks of one line; each names the rule that it breaks.
class LineCheck {
 public:
  LineCheck(const TextFile& text, std::size_t lineIndex, const LabelRules& known, Findings& list)
      : file(text), index(lineIndex), rules(known), findings(list) {}

  void run(const std::vector<std::string>& fields) const {
    if (fields.size() != fieldCount) {
      report("fields", "a label has five fields (class, centre x and y, width, height), not " +
                           std::to_string(fields.size()));
      return;
    }
    checkClass(fields[0]);
    const auto box = parseBox(fields);
    if (!box) {
      report("number", "the centre and the size must be numbers");
      return;
    }
    checkBox(*box);
  }

 private:
  void checkClass(const std::string& text) const {
    const auto number = parseClass(text);
    if (!number) {
      report("class-number", "'" + text + "' is no class number; write a whole number from 0 on");
    } else if (rules.classCount && *number >= *rules.classCount) {
      report("class-number", "there is no class " + text + "; the classes are 0 to " +
                                 std::to_string(*rules.classCount - 1));
    }
  }

  void checkBox(const Box& box) const {
    if (!isCentre(box.x) || !isCentre(box.y))
      report("centre", "the centre must be above 0 and at most 1");
    if (box.width <= 0 || box.height <= 0) {
      report("size", "width and height must be above 0");
      return;
    }
    if (reachesOutside(box.x, box.width) || reachesOutside(box.y, box.height))
      report("box-outside", "the box reaches beyond the picture");
    checkSize(box);
  }

  void checkSize(const Box& box) const {
    if (!rules.networkInput) return;
    const double width = box.width * rules.networkInput->width;
    const double height = box.height * rules.networkInput->height;
    if (width < 1 || height < 1)
      report("small-box", "the box has " + formatFixed(width, 2) + "x" + formatFixed(height, 2) +
                              " pixels at the network's input, less than one cell");
  }

  void report(const char* rule, const std::string& text) const {
    findings.push_back({file.path, index + 1, rule, text});
  }

  const TextFile& file;
  std::size_t index;
  const LabelRules& rules;
  Findings& findings;
};

/// The same for rows that say the same: 0.5 is .5 and 0.50. Rows that are no labels are the same if
/// their fields are.
std::string sameKey(const std::vector<std::string>& fields) {
  std::string text;
  for (const auto& field : fields) {
    const auto number = parseNumber(field);
    text += (number ? numberText(*number) : field) + ' ';
  }
  return text;
}

}  // namespace

std::optional<LabelLine> parseLabelLine(const std::string& line) {
  const auto fields = fieldsOf(line);
  if (fields.size() != fieldCount) return std::nullopt;
  const auto number = parseClass(fields[0]);
  const auto box = parseBox(fields);
  if (!number || !box) return std::nullopt;
  return LabelLine{*number,
                   {box->x - box->width / 2, box->y - box->height / 2, box->width, box->height}};
}

std::size_t checkLabels(const TextFile& file, const LabelRules& rules, Findings& findings) {
  checkByteOrderMark(file, findings);
  std::unordered_map<std::string, std::size_t> earlier;
  std::size_t labels = 0;
  for (std::size_t i = 0; i < file.lines.size(); ++i) {
    const auto fields = fieldsOf(file.lines[i]);
    if (fields.empty()) continue;
    ++labels;
    LineCheck(file, i, rules, findings).run(fields);
    const auto [same, isNew] = earlier.emplace(sameKey(fields), i + 1);
    if (!isNew)
      findings.push_back(
          {file.path, i + 1, "duplicate-row", "the same as line " + std::to_string(same->second)});
  }
  return labels;
}
