#include "CheckCommand.h"

#include "CommandLine.h"
#include "PictureFile.h"
#include "Progress.h"
#include "verify/FindingsOutput.h"
#include "verify/PictureCheck.h"

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

void runCheck(const Locations& locations, const std::string& projectName, Output& output) {
  const auto project = openProject(locations, projectName);
  const auto records = readRecords(*project);
  Findings findings;
  Progress progress(records.size(), output);
  for (const auto& record : records) {
    if (record.damage.empty()) {
      checkPictureOf(record, findings);
    } else {
      findings.push_back({record.trainSet.wGetDataPath(), 0, "damaged-record", record.damage});
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
