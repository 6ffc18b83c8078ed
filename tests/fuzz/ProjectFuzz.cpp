#include <stdexcept>

#include "fuzz/Fuzzing.h"
#include "project/TNVProject.h"

/// The two files that a project starts from: its settings up to the first line of three percent
/// signs, the list of its image set behind it.
void fuzz::run(std::string_view input) {
  constexpr std::string_view border = "%%%\n";
  const auto end = input.find(border);
  const auto settings = input.substr(0, end);
  const auto list = end == input.npos ? "" : input.substr(end + border.size());
  place().write("parts/parts.cfg", std::string(settings));
  place().write("parts/set.xml", std::string(list));
  place().makeDirectory("parts/is_set");
  TNVProject project("parts", place().path(), place().path(), place().path());
  try {
    mayThrow([&] { project.load(); });
  } catch (const std::invalid_argument&) {
    // A colour that is none,
  } catch (const std::out_of_range&) {
    // or beyond all colours.
  }
  require(project.trainSetPointers().size() <= input.size(), "no record comes from nothing");
  project.classPointers();
  project.maxDNNClassId();
}
