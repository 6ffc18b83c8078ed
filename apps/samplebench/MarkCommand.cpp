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
  throw CommandError(
      "form '" + request.form + "' takes " + wanted + " points, not " + std::to_string(count),
      exitUsage);
}

void checkWithinPicture(const std::vector<Point>& points) {
  for (const auto& point : points) {
    if (!isWithinPicture(point))
      throw CommandError("point " + pointText(point) +
                             " lies outside the picture; relative coordinates go from 0 to 1 "
                             "(--pixels takes pixels)",
                         exitUsage);
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

std::vector<Point> pixelPoints(std::vector<Point> points, const Editor& editor) {
  for (auto& point : points)
    point = {point.x * editor.width(), point.y * editor.height()};
  return points;
}

// Puts the place in the list before the reason. What is wrong there is no wrong usage.
template <typename Function>
auto named(const MarkRequest& request, Function function) {
  try {
    return function();
  } catch (const CommandError& error) {
    if (request.where.empty()) throw;
    throw CommandError(request.where + error.what());
  }
}

std::vector<Job> checkedJobs(const WTNVProject& project, const std::vector<PictureRecord>& pictures,
                             const WTNVHandlerMark& marks, const std::vector<MarkRequest>& requests,
                             PointUnit unit) {
  const PictureIndex index(pictures);
  const auto forms = marks.getAvailableMarkForms();
  std::vector<Job> jobs;
  for (const auto& request : requests) {
    jobs.push_back(named(request, [&] {
      requireChoice("form", request.form, forms, exitUsage);
      checkPointCount(marks, request);
      checkExtent(request.form, request.points, unit, exitUsage);
      if (unit == PointUnit::relative) checkWithinPicture(request.points);
      return Job{&request, index.find(request.picture), findClass(project, request.className)};
    }));
  }
  return jobs;
}

// Returns false if the assist left the mark as it was given.
bool addMark(Editor& editor, const Job& job, const MarkManner& manner) {
  const auto& request = *job.request;
  const auto points =
      manner.unit == PointUnit::pixels ? relativePoints(request.points, editor) : request.points;
  checkExtent(request.form, pixelPoints(points, editor), PointUnit::pixels, exitFailed);
  return addDesigned(editor, designFor(request.form, points), job.dnnClass, manner.assist);
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

std::size_t addMarks(WTNVProject& project, const std::vector<MarkRequest>& requests,
                     const MarkManner& manner, Output& output) {
  const auto pictures = readPictures(project, output);
  Editor editor(project);
  auto jobs = checkedJobs(project, pictures, editor.marks, requests, manner.unit);
  // Each picture is bound once: to bind one means to read it.
  std::stable_sort(jobs.begin(), jobs.end(),
                   [](const Job& a, const Job& b) { return a.picture < b.picture; });
  std::size_t bound = pictures.size();
  for (const auto& job : jobs) {
    named(*job.request, [&] {
      if (job.picture != bound) editor.goTo(job.picture);
      bound = job.picture;
      if (!addMark(editor, job, manner))
        output.note(job.request->where +
                    "the assist found no outline; the mark is as it was given");
    });
  }
  return pictureCount(jobs);
}

void runMark(const Locations& locations, const MarkOptions& options, Output& output) {
  const auto project = openProject(locations, options.project);
  const auto requests = requestsFor(options);
  const MarkManner manner{options.pixels ? PointUnit::pixels : PointUnit::relative, options.assist};
  const auto pictures = addMarks(*project, requests, manner, output);
  saveProject(*project, false, output);
  output.data() << counted(requests.size(), "mark")
                << (output.isDryRun() ? " would be added on " : " added on ")
                << counted(pictures, "picture") << '\n';
}
