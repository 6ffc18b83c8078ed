// The settings file of a project. Its keys are persisted and stand here alone, but for those of the
// generator and the augmentation, which keep their own.

#include <algorithm>
#include <charconv>

#include "foundation/Files.h"
#include "foundation/Log.h"
#include "foundation/Numbers.h"
#include "foundation/TNVDirectory.h"
#include "foundation/TNVSettings.h"
#include "generation/TNVGenerationDarknet.h"
#include "generation/TNVHandlerAugment.h"
#include "project/TNVDNNClass.h"
#include "project/TNVProject.h"
#include "project/TNVWorkflow.h"

namespace {

std::vector<float> asFloats(cv::Point2d size) {
  return {static_cast<float>(size.x), static_cast<float>(size.y)};
}

std::string colorText(const cv::Scalar& color) {
  const auto channel = [&](int i) { return std::clamp(tnv::truncateToInt(color[i]), 0, 255); };
  const int value = channel(2) * 65536 + channel(1) * 256 + channel(0);
  char text[16];
  const auto end = std::to_chars(text, text + sizeof text, value, 16).ptr;
  return {text, end};
}

cv::Scalar colorFromText(const std::string& text) {
  const int value = tnv::parseHexStrict(text);
  return {static_cast<double>(value & 255), static_cast<double>(value >> 8 & 255),
          static_cast<double>(value >> 16 & 255)};
}

}  // namespace

bool TNVProject::_writeSettings() const {
  TNVSettings settings(settingsPath);
  settings.setString("Project.Name", name);
  settings.setString("Project.SamplesDirectory", samplesDirectory);
  settings.setStringList("Source.Images.Types", imageTypes);
  settings.setBool("Cache.Images", cacheImages);
  settings.setInt("Cache.Images.Cnt", cacheImagesCount);
  settings.setInt("Cache.Images.Size", cacheImagesMaxSize);
  settings.setInt("Cache.Images.Quality", cacheImagesQuality);
  settings.setBool("Cache.Render", cacheRender);
  settings.setBool("Cache.Validation", cacheValidation);
  settings.setFloatList("POI.Size.Rel", asFloats(poiRelSize));
  settings.setFloatList("POI.Size.Abs", asFloats(poiAbsSize));
  settings.setInt("POI.Size.Use", poiSizeUse);
  _writeDNNClasses(settings);
  _writeWorkflows(settings);
  settings.setStringList("Source.Images.Filelists", imageLists);
  if (generation) {
    settings.setString("Generation.Type", generation->getName());
    generation->saveSettings(&settings);
  }
  hndAugment->saveSettings(&settings);
  if (settings.saveFile()) return true;
  tnv::logLine("TNVProject::_writeSettings: Could not write settings at '" + settingsPath + "'!");
  return false;
}

void TNVProject::_writeDNNClasses(TNVSettings& settings) const {
  std::vector<int> indices;
  std::vector<std::string> names;
  std::vector<int> ids;
  std::vector<std::string> samplePaths;
  std::vector<std::string> comments;
  std::vector<std::string> colors;
  for (const auto& dnnClass : dnnClasses) {
    indices.push_back(dnnClass->uniqueIdx);
    names.push_back(dnnClass->name);
    ids.push_back(dnnClass->dnnId);
    samplePaths.push_back(dnnClass->samplePath);
    comments.push_back(dnnClass->comment);
    colors.push_back(colorText(dnnClass->color));
  }
  settings.setInt("DNN.Idx.Unique", dnnIdxUnique);
  settings.setIntList("DNN.Idx", indices);
  settings.setStringList("DNN.Names", names);
  settings.setIntList("DNN.Ids", ids);
  settings.setStringList("DNN.SamplePaths", samplePaths);
  settings.setStringList("DNN.Comments", comments);
  settings.setStringList("DNN.Colors", colors);
}

void TNVProject::_writeWorkflows(TNVSettings& settings) const {
  std::vector<int> indices;
  std::vector<std::string> names;
  for (const auto& workflow : workflows) {
    indices.push_back(workflow->uniqueIdx);
    names.push_back(workflow->name);
  }
  settings.setInt("Workflow.Idx.Unique", workflowIdxUnique);
  settings.setIntList("Workflow.Idx", indices);
  settings.setStringList("Workflow.Names", names);
}

bool TNVProject::_readSettings() {
  if (!TNVDirectory::exists(settingsPath)) {
    tnv::logLine("TNVProject::_readSettings: Could not find project at '" + settingsPath + "'!");
    return false;
  }
  TNVSettings settings(settingsPath);
  if (!settings.loadFile()) {
    tnv::logLine("TNVProject::_readSettings: Could not read project at '" + settingsPath + "'");
    return false;
  }
  name = settings.getString("Project.Name", "unknown");
  samplesDirectory = settings.getString("Project.SamplesDirectory", "samples/");
  imageTypes = settings.getStringList("Source.Images.Types", {"jpg", "bmp", "jpeg", "png"});
  imageLists = settings.getStringList("Source.Images.Filelists", {});
  setListKnown = settings.contains("Source.Images.Filelists");
  cacheImages = settings.getBool("Cache.Images", false);
  cacheImagesCount = settings.getInt("Cache.Images.Cnt", 10);
  cacheImagesMaxSize = settings.getInt("Cache.Images.Size", 1024);
  cacheImagesQuality = settings.getInt("Cache.Images.Quality", 75);
  cacheRender = settings.getBool("Cache.Render", true);
  cacheValidation = settings.getBool("Cache.Validation", false);
  // The two POI sizes are written for other readers; a project starts with the built-in ones.
  poiSizeUse = settings.getInt("POI.Size.Use", 0);
  _readDNNClasses(settings);
  _readWorkflows(settings);
  setGeneration(settings.getString("Generation.Type", "none"));
  if (generation) generation->loadSettings(&settings);
  hndAugment->loadSettings(&settings);
  return true;
}

void TNVProject::_readDNNClasses(const TNVSettings& settings) {
  clearDNNClasses();
  dnnIdxUnique = settings.getInt("DNN.Idx.Unique", 0);
  const auto indices = settings.getIntList("DNN.Idx", {});
  const auto names = settings.getStringList("DNN.Names", {});
  const auto ids = settings.getIntList("DNN.Ids", {});
  const auto samplePaths = settings.getStringList("DNN.SamplePaths", {});
  const auto comments = settings.getStringList("DNN.Comments", {});
  const auto colors = settings.getStringList("DNN.Colors", {});
  for (std::size_t i = 0; i < names.size() && i < indices.size() && i < ids.size(); ++i) {
    TNVDNNClass* added = addDNNClass(names[i], indices[i], ids[i]);
    if (!added) continue;
    if (i < samplePaths.size()) added->samplePath = tnv::withForwardSlashes(samplePaths[i]);
    if (i < comments.size()) added->comment = comments[i];
    if (i < colors.size()) added->color = colorFromText(colors[i]);
  }
}

void TNVProject::_readWorkflows(const TNVSettings& settings) {
  workflows.clear();
  workflowIdxUnique = settings.getInt("Workflow.Idx.Unique", 0);
  const auto indices = settings.getIntList("Workflow.Idx", {});
  const auto names = settings.getStringList("Workflow.Names", {});
  for (std::size_t i = 0; i < names.size() && i < indices.size(); ++i) {
    addWorkflow(names[i], indices[i]);
  }
}
