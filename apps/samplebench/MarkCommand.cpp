#include "MarkCommand.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>

#include "CommandError.h"
#include "Editor.h"

namespace {

// A request with what its names stand for.
struct Job {
  const MarkRequest* request;
  std::size_t picture;
  WTNVDNNClass dnnClass;
};

void checkPointCount(const WTNVHandlerMark& marks, const MarkRequest& request) {
  const auto fewest = marks.getMarkMinConstructionPoints(request.form);
  const auto most = marks.getMarkMaxConstructionPoints(request.form);
  const auto count = static_cast<int>(request.points.size());
  if (count >= fewest && count <= most) return;
  const auto wanted = fewest == most ? std::to_string(fewest)
                                     : std::to_string(fewest) + " to " + std::to_string(most);
  throw CommandError("form '" + request.form + "' takes " + wanted + " points, not " +
                     std::to_string(count));
}

void checkArea(const std::vector<Point>& points) {
  if (points.size() != 2) return;
  if (points[0].x == points[1].x || points[0].y == points[1].y)
    throw CommandError("the points enclose no area; give two that differ in both directions");
}

void checkWithinPicture(const std::vector<Point>& points) {
  for (const auto& point : points) {
    if (!isWithinPicture(point))
      throw CommandError("point " + pointText(point) +
                         " lies outside the picture; relative coordinates go from 0 to 1 "
                         "(--pixels takes pixels)");
  }
}

std::vector<Point> relativePoints(const std::vector<Point>& points, const Editor& editor) {
  std::vector<Point> relative;
  for (const auto& point : points) {
    relative.push_back({point.x / editor.width(), point.y / editor.height()});
    if (!isWithinPicture(relative.back()))
      throw CommandError("point " + pointText(point) + " lies outside the picture of " +
                         std::to_string(editor.width()) + "x" + std::to_string(editor.height()) +
                         " pixels");
  }
  return relative;
}

std::vector<std::vector<double>> pairs(const std::vector<Point>& points) {
  std::vector<std::vector<double>> result;
  for (const auto& point : points)
    result.push_back({point.x, point.y});
  return result;
}

// Puts the place in the list before the reason.
template <typename Function>
auto named(const MarkRequest& request, Function function) {
  try {
    return function();
  } catch (const CommandError& error) {
    throw CommandError(request.where + error.what());
  }
}

// The library has names of forms that no mark can be made in yet.
std::vector<std::string> usableForms(const WTNVHandlerMark& marks) {
  std::vector<std::string> forms;
  for (const auto& form : marks.getAvailableMarkForms())
    if (marks.getMarkMaxConstructionPoints(form) > 0) forms.push_back(form);
  return forms;
}

std::vector<Job> checkedJobs(const WTNVProject& project, const std::vector<PictureRecord>& pictures,
                             const WTNVHandlerMark& marks, const std::vector<MarkRequest>& requests,
                             PointUnit unit) {
  const PictureIndex index(pictures);
  const auto forms = usableForms(marks);
  std::vector<Job> jobs;
  for (const auto& request : requests) {
    jobs.push_back(named(request, [&] {
      requireChoice("form", request.form, forms);
      checkPointCount(marks, request);
      checkArea(request.points);
      if (unit == PointUnit::relative) checkWithinPicture(request.points);
      return Job{&request, index.find(request.picture), findClass(project, request.className)};
    }));
  }
  return jobs;
}

void addMark(Editor& editor, const Job& job, PointUnit unit) {
  const auto& request = *job.request;
  const auto points =
      unit == PointUnit::pixels ? relativePoints(request.points, editor) : request.points;
  const auto design = designFor(request.form, points);
  const auto added = editor.marks.designMark(pairs(design.points), design.form, {job.dnnClass}) &&
                     editor.marks.addDesignedMark();
  if (!added) throw CommandError("the mark cannot be made from these points");
}

std::vector<MarkRequest> requestsFromFile(const std::string& fileName) {
  std::ifstream file(fileName);
  if (!file || std::filesystem::is_directory(fileName))
    throw CommandError("the list '" + fileName + "' cannot be read");
  return parseMarkList(file, fileName);
}

std::vector<MarkRequest> requestsFor(const MarkOptions& options) {
  if (!options.list.empty()) return requestsFromFile(options.list);
  MarkRequest request{"", options.picture, options.form, options.className, {}};
  for (const auto& text : options.points)
    request.points.push_back(parsePoint(text));
  return {request};
}

std::size_t pictureCount(const std::vector<Job>& jobs) {
  std::set<std::size_t> pictures;
  for (const auto& job : jobs)
    pictures.insert(job.picture);
  return pictures.size();
}

}  // namespace

Design designFor(const std::string& form, const std::vector<Point>& points) {
  // A rectangle designed by its centre is of a type that cannot be read back from disk.
  if (form == "Rect Center") {
    const auto [center, corner] = std::pair(points.at(0), points.at(1));
    return {"Rect", {{2 * center.x - corner.x, 2 * center.y - corner.y}, corner}};
  }
  return {form, points};
}

std::size_t addMarks(WTNVProject& project, const std::vector<MarkRequest>& requests, PointUnit unit,
                     Output& output) {
  const auto pictures = readPictures(project, output);
  Editor editor(project);
  auto jobs = checkedJobs(project, pictures, editor.marks, requests, unit);
  // Each picture is bound once: to bind one means to read it.
  std::stable_sort(jobs.begin(), jobs.end(),
                   [](const Job& a, const Job& b) { return a.picture < b.picture; });
  std::size_t bound = pictures.size();
  for (const auto& job : jobs) {
    named(*job.request, [&] {
      if (job.picture != bound) editor.goTo(job.picture);
      bound = job.picture;
      addMark(editor, job, unit);
    });
  }
  return pictureCount(jobs);
}

void runMark(const Locations& locations, const MarkOptions& options, Output& output) {
  const auto project = openProject(locations, options.project);
  const auto requests = requestsFor(options);
  const auto unit = options.pixels ? PointUnit::pixels : PointUnit::relative;
  const auto pictures = addMarks(*project, requests, unit, output);
  saveProject(*project, false);
  output.data() << counted(requests.size(), "mark") << " added on " << counted(pictures, "picture")
                << '\n';
}
