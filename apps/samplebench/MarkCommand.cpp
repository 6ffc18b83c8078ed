#include "MarkCommand.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <set>

#include "CommandError.h"
#include "CommandLine.h"
#include "Editor.h"

namespace {

struct MarkOptions {
  std::string project;
  std::string picture;
  std::string set;
  std::string form;
  std::string className;
  std::vector<std::string> points;
  std::string list;
  bool pixels = false;
  bool assist = false;
};

constexpr auto formsHelp =
    "Forms and their points:\n"
    "  Rect              two opposite corners\n"
    "  Rect Center       the centre and a corner\n"
    "  Circle            the centre and a point on the rim\n"
    "  Circle Multiple   3 to 99 points on the rim\n"
    "  Ellipse           the centre, the end of one half axis, a point as far off as the other\n"
    "  Ellipse Multiple  5 to 99 points on the rim\n"
    "  Line              the two ends\n"
    "  Point             the place\n"
    "  PolyLine          3 to 999 points of a path\n"
    "  PolyLine Closed   3 to 999 corners of an outline\n"
    "  Image             any point: nearly the whole picture is marked";

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
                             const MarkManner& manner, Output& output) {
  const PictureIndex index(pictures, output, manner.set);
  const auto forms = marks.getAvailableMarkForms();
  std::vector<Job> jobs;
  for (const auto& request : requests) {
    jobs.push_back(named(request, [&] {
      requireChoice("form", request.form, forms, exitUsage);
      checkPointCount(marks, request);
      checkExtent(request.form, request.points, manner.unit, exitUsage);
      if (manner.unit == PointUnit::relative) checkWithinPicture(request.points);
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
  const auto requests = parseMarkList(file, fileName);
  if (requests.empty())
    throw CommandError("the list '" + fileName +
                       "' holds no marks; write a mark a line, as --help tells");
  return requests;
}

bool isForm(const std::string& text) {
  const auto forms = choicesOf(&Editor::marks, &WTNVHandlerMark::getAvailableMarkForms)();
  return std::find(forms.begin(), forms.end(), text) != forms.end();
}

// Without quotes the second word of a form is taken for a point.
void requireWholeForm(const MarkOptions& options) {
  if (options.points.front().find(',') != std::string::npos) return;
  const auto form = options.form + " " + options.points.front();
  if (isForm(form))
    throw CommandError("the form " + form + " has two words; write it in quotes: \"" + form + "\"",
                       exitUsage);
}

std::vector<MarkRequest> requestsFor(const MarkOptions& options) {
  if (!options.list.empty()) return requestsFromFile(options.list);
  MarkRequest request{"", options.picture, options.form, options.className, {}};
  requireWholeForm(options);
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
  auto jobs = checkedJobs(project, pictures, editor.marks, requests, manner, output);
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

namespace {

void requireOneKindOfMark(const MarkOptions& options) {
  const bool hasAny = !options.picture.empty() || !options.className.empty();
  const bool hasAll = !options.picture.empty() && !options.form.empty() &&
                      !options.points.empty() && !options.className.empty();
  if (!options.list.empty() && hasAny)
    throw CommandError("--list has pictures and classes of its own; leave out the others",
                       exitUsage);
  if (options.list.empty() && !hasAll)
    throw CommandError("give PICTURE FORM POINT... --class NAME, or --list FILE", exitUsage);
}

void runMark(const Locations& locations, const MarkOptions& options, Output& output) {
  requireOneKindOfMark(options);
  const ProjectLock lock(locations, options.project, output);
  const auto project = openProject(locations, options.project, lock);
  const auto requests = requestsFor(options);
  const MarkManner manner{options.pixels ? PointUnit::pixels : PointUnit::relative, options.assist,
                          options.set};
  const auto pictures = addMarks(*project, requests, manner, output);
  saveProject(*project, false, output);
  output.fact("marks", static_cast<Json::UInt64>(requests.size()));
  output.fact("pictures", static_cast<Json::UInt64>(pictures));
  output.say(counted(requests.size(), "mark") +
             std::string(output.told(" added on ", " would be added on ")) +
             counted(pictures, "picture"));
}

}  // namespace

void addMarkCommand(CLI::App& app, ProgramOptions& program) {
  const auto options = std::make_shared<MarkOptions>();
  auto* command = addWritingCommand(
      app, program,
      {"mark",
       "Marks an object on a picture, or many from a list: one mark a line, picture, form, class "
       "and points with tabs between them, the points \"x,y\" with blanks.",
       "mark parts photo.jpg Rect 0.1,0.2 0.4,0.5 --class screw\n  samplebench mark parts --list "
       "marks.txt\n\n" +
           std::string(formsHelp)},
      [&program, options](Output& output) { runMark(program.locations, *options, output); });
  addProjectArgument(*command, options->project);
  addPictureArgument(*command, options->picture)->required(false);
  addSetOption(*command, options->set);
  auto* form = command->add_option("FORM", options->form, "form of the mark, see below");
  program.choices[form] = choicesOf(&Editor::marks, &WTNVHandlerMark::getAvailableMarkForms);
  command->add_option("POINT", options->points, "points x,y, 0 to 1 from the top left");
  command->add_option("--class", options->className, "class of the mark");
  command->add_option("--list", options->list, "file with many marks")->check(notEmpty());
  command->add_flag("--pixels", options->pixels, "points are in pixels of the picture");
  command->add_flag("--assist", options->assist,
                    "let each mark snap to the outline of the object under it");
}
