#include "CheckCommand.h"

#include <algorithm>
#include <filesystem>
#include <set>

#include "CommandLine.h"
#include "PictureFile.h"
#include "Progress.h"
#include "SetLists.h"
#include "verify/FindingsOutput.h"
#include "verify/PictureCheck.h"

namespace fs = std::filesystem;

namespace {

std::string textOf(cv::Size size) {
  return std::to_string(size.width) + "x" + std::to_string(size.height);
}

// Only with reduced copies is it known what size a picture had.
cv::Size sizeWhenCopied(const WTNVTrainSet& trainSet) {
  cv::Size size;
  trainSet.wGetImageCacheSize(size.width, size.height);
  return size;
}

void checkPictureOf(const PictureRecord& record, Findings& findings) {
  const auto report = [&](const char* rule, const std::string& text) {
    findings.push_back({record.path, 0, rule, text});
  };
  if (!isFile(record.path)) {
    report("missing-picture",
           "there is no such file; if it was moved, samplebench relink finds it");
    return;
  }
  const auto size = pictureSize(record.path);
  const auto before = sizeWhenCopied(record.trainSet);
  if (size.empty() || !isDecodable(record.path)) {
    report("unreadable-picture", "the picture cannot be read");
  } else if (isCutJpeg(record.path)) {
    report("cut-picture", "the file breaks off before the picture's end");
  } else if (!before.empty() && before != size) {
    report("other-size", "the picture has " + textOf(size) + " pixels and had " + textOf(before) +
                             "; its marks may lie elsewhere now");
  }
}

// As settings leave them that lost their classes, or a save of another program that was cut off.
void checkClassesOf(const PictureRecord& record, const std::vector<WTNVDNNClass>& classes,
                    Findings& findings) {
  const auto marks = record.trainSet.wGetMarks();
  const auto unknown = std::count_if(marks.begin(), marks.end(), [&](const auto& mark) {
    return !mark.wGetClassIdx().empty() && mark.wGetDNNClasses(classes).empty();
  });
  if (unknown > 0)
    findings.push_back({record.path, 0, "unknown-class",
                        counted(static_cast<std::size_t>(unknown), "mark") +
                            " of classes that the project does not have; restore its settings, or "
                            "remove the marks with: samplebench remove mark"});
}

// Of pictures that were removed the records stay, so that a few beside a list are no finding.
void checkLists(const WTNVProject& project, Findings& findings, Output& output) {
  for (const auto& set : lostSets(project))
    findings.push_back(
        {setListFile(project, set.name), 0, "lost-list", lostSetAdvice(project, set)});
  const auto unlisted = unlistedRecords(project);
  output.fact("unlistedRecords", static_cast<Json::UInt64>(unlisted));
  if (unlisted > 0)
    output.note(counted(unlisted, "record") +
                " beside those of the lists, as of pictures that were removed");
}

void noteUnknownSizes(const std::vector<PictureRecord>& records, Output& output) {
  const auto count = std::count_if(records.begin(), records.end(), [](const auto& record) {
    return record.damage.empty() && sizeWhenCopied(record.trainSet).empty();
  });
  output.fact("sizesUnknown", static_cast<Json::UInt64>(count));
  if (count > 0)
    output.note("which size " + counted(static_cast<std::size_t>(count), "picture") +
                " had before is not known, as there are no reduced copies of them");
}

void runCheck(const Locations& locations, const std::string& projectName, Output& output) {
  const auto project = openProject(locations, projectName);
  const auto records = readRecords(*project);
  Findings findings;
  const auto advice = moveAdvice(*project);
  if (!advice.empty())
    findings.push_back({projectDirectory(*project).string(), 0, "moved-project", advice});
  checkLists(*project, findings, output);
  const auto classes = project->wGetDNNClasses();
  Progress progress(records.size(), output);
  std::set<std::pair<std::string, std::string>> seen;
  for (const auto& record : records) {
    if (record.damage.empty()) {
      checkPictureOf(record, findings);
      checkClassesOf(record, classes, findings);
      if (!seen.emplace(record.set, absolutePath(record.path)).second)
        findings.push_back(
            {record.path, 0, "listed-twice",
             "the picture is in the set " + record.set +
                 " already; samplebench remove picture takes the first of them out"});
    } else if (!record.isElsewhere) {
      findings.push_back({record.trainSet.wGetDataPath(), 0, "damaged-record",
                          record.damage +
                              "; restore it, or take it out with: samplebench remove "
                              "picture " +
                              projectName + " --damaged --with-marks"});
    }
    progress.step();
  }
  progress.finish();
  writeFindings(findings, output);
  noteUnknownSizes(records, output);
  output.fact("pictures", static_cast<Json::UInt64>(records.size()));
  output.say(counted(records.size(), "picture") + ", " + counted(findings.size(), "finding"));
}

}  // namespace

void addCheckCommand(CLI::App& app, ProgramOptions& program) {
  const auto project = std::make_shared<std::string>();
  auto* command = addCommand(
      app, program,
      {"check",
       "Says which pictures of a project are missing, unreadable or of another size than "
       "before, and which of its own files are missing or damaged. Exit code 3 if any are.",
       "check parts"},
      [&program, project](Output& output) { runCheck(program.locations, *project, output); });
  addProjectArgument(*command, *project);
}
