#include "CheckCommand.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>

#include "CommandLine.h"
#include "PictureFile.h"
#include "Progress.h"
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
  if (size.empty()) {
    report("unreadable-picture", "the picture cannot be read");
  } else if (isCutJpeg(record.path)) {
    report("cut-picture", "the file breaks off before the picture's end");
  } else if (!before.empty() && before != size) {
    report("other-size", "the picture has " + textOf(size) + " pixels and had " + textOf(before) +
                             "; its marks may lie elsewhere now");
  }
}

// File names of records, by set.
using RecordNames = std::map<std::string, std::set<std::string>>;

RecordNames listedRecords(const std::vector<PictureRecord>& records) {
  RecordNames names;
  for (const auto& record : records)
    names[record.set].insert(fs::path(record.trainSet.wGetDataPath()).filename().string());
  return names;
}

RecordNames recordsOnDisk(const WTNVProject& project) {
  constexpr std::string_view prefix = "is_";
  RecordNames names;
  std::error_code error;
  for (const auto& directory : fs::directory_iterator(projectDirectory(project), error)) {
    const auto name = directory.path().filename().string();
    if (!name.starts_with(prefix)) continue;
    for (const auto& file : fs::directory_iterator(directory, error))
      if (file.path().extension() == ".xml")
        names[name.substr(prefix.size())].insert(file.path().filename().string());
  }
  return names;
}

// A set whose list is gone has no pictures for the program, and its marks lie there unseen. Of
// pictures that were removed the records stay, too, so that a few beside a list are no finding.
void checkLists(const WTNVProject& project, const std::vector<PictureRecord>& records,
                Findings& findings, Output& output) {
  const auto listed = listedRecords(records);
  std::size_t unlisted = 0;
  for (const auto& [set, names] : recordsOnDisk(project)) {
    const auto known = listed.find(set);
    if (known == listed.end()) {
      const auto list = projectDirectory(project) / (set + ".xml");
      findings.push_back({list.string(), 0, "lost-list",
                          "no list of the project names the " + counted(names.size(), "record") +
                              " in is_" + set +
                              "; restore this file, and the settings if they name no such set"});
      continue;
    }
    unlisted +=
        static_cast<std::size_t>(std::count_if(names.begin(), names.end(), [&](const auto& name) {
          return !known->second.contains(name);
        }));
  }
  output.fact("unlistedRecords", static_cast<Json::UInt64>(unlisted));
  if (unlisted > 0)
    output.note(counted(unlisted, "record") +
                " beside those of the lists, as of pictures that were removed");
}

void runCheck(const Locations& locations, const std::string& projectName, Output& output) {
  const auto project = openProject(locations, projectName);
  const auto records = readRecords(*project);
  Findings findings;
  const auto advice = moveAdvice(*project);
  if (!advice.empty())
    findings.push_back({projectDirectory(*project).string(), 0, "moved-project", advice});
  checkLists(*project, records, findings, output);
  Progress progress(records.size(), output);
  std::set<std::pair<std::string, std::string>> seen;
  for (const auto& record : records) {
    if (record.damage.empty()) {
      checkPictureOf(record, findings);
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
