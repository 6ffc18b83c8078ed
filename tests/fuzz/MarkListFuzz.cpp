#include "MarkList.h"

#include <algorithm>
#include <cmath>
#include <sstream>

#include "CommandError.h"
#include "fuzz/Fuzzing.h"

namespace {

constexpr auto kFile = "marks.txt";

std::vector<MarkRequest> parsed(const std::string& text) {
  std::istringstream list(text);
  return parseMarkList(list, kFile);
}

bool isField(const std::string& text) {
  return text.find_first_of("\t\n") == text.npos;
}

bool isFinite(Point point) {
  return std::isfinite(point.x) && std::isfinite(point.y);
}

void checkRequest(const MarkRequest& request) {
  fuzz::require(request.where.starts_with(kFile), "a mark tells where it was wanted");
  fuzz::require(isField(request.picture) && isField(request.form) && isField(request.className),
                "a field ends at a tab and at the end of its line");
  fuzz::require(std::all_of(request.points.begin(), request.points.end(), isFinite),
                "points are finite");
}

std::string lineOf(const MarkRequest& request) {
  std::string line = request.picture + "\t" + request.form + "\t" + request.className + "\t";
  for (const Point point : request.points)
    line += pointText(point) + " ";
  return line + "\n";
}

bool areSame(const MarkRequest& one, const MarkRequest& other) {
  return one.picture == other.picture && one.form == other.form &&
         one.className == other.className && one.points == other.points;
}

void checkComesBack(const std::vector<MarkRequest>& requests) {
  std::string text;
  for (const MarkRequest& request : requests)
    text += lineOf(request);
  const auto again = parsed(text);
  fuzz::require(std::equal(requests.begin(), requests.end(), again.begin(), again.end(), areSame),
                "marks that are written down as a list are read again");
}

}  // namespace

/// A list of marks that a user gives to the program.
void fuzz::run(std::string_view input) {
  std::vector<MarkRequest> requests;
  try {
    requests = parsed(std::string(input));
  } catch (const CommandError& error) {
    require(std::string_view(error.what()).find(kFile) != std::string_view::npos,
            "who is refused is told where");
    return;
  }
  const auto lines = std::count(input.begin(), input.end(), '\n') + 1;
  require(static_cast<std::ptrdiff_t>(requests.size()) <= lines, "a line holds one mark at most");
  for (const MarkRequest& request : requests)
    checkRequest(request);
  checkComesBack(requests);
}
