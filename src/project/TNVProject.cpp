#include "project/TNVProject.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "downloads/TNVHandlerDownload.h"
#include "editing/TNVType.h"
#include "foundation/Files.h"
#include "foundation/Log.h"
#include "foundation/Numbers.h"
#include "foundation/TNVDirectory.h"
#include "generation/TNVGenerationDarknet.h"
#include "generation/TNVHandlerAugment.h"
#include "project/TNVDNNClass.h"
#include "project/TNVTrainSet.h"
#include "project/TNVWorkflow.h"
#include "tools/TNVHandlerValidation.h"

namespace {

/// The entry of that name, or null.
template <class Entry>
Entry* findByName(const std::vector<std::unique_ptr<Entry>>& entries, const std::string& name) {
  const auto place = std::find_if(entries.begin(), entries.end(),
                                  [&](const auto& entry) { return entry->name == name; });
  return place == entries.end() ? nullptr : place->get();
}

/// The next free index. Only a damaged file comes near the end of the range.
int takeIndex(int& counter) {
  const int index = counter;
  counter = tnv::addSaturated(counter, 1);
  return index;
}

}  // namespace

TNVProject::TNVProject(const std::string& projectName, const std::string& projectsPath,
                       const std::string& platforms, const std::string& augments)
    : settingsFile(projectName + ".cfg"),
      projectDirectory(TNVDirectory::normalizePath(projectsPath) + projectName + "/"),
      platformsPath(TNVDirectory::normalizePath(platforms)),
      augmentsPath(TNVDirectory::normalizePath(augments)),
      name(projectName),
      isPlaceOfItsOwn(tnv::canNameFiles(projectName)) {
  settingsPath = projectDirectory + settingsFile;
  hndAugment = std::make_unique<TNVHandlerAugment>(augmentsPath);
  validationDirectory = projectDirectory + "validation/";
  // Outside its own place the project deletes nothing.
  hndValidation =
      std::make_unique<TNVHandlerValidation>(isPlaceOfItsOwn ? validationDirectory : "");
  hndValidation->keptPaths = {platformsPath, augmentsPath};
  hndDownload = std::make_unique<TNVHandlerDownload>();
}

TNVProject::~TNVProject() {
  if (observer) observer->onProjectClosed();
  dnnClasses.clear();
  imageSets.clear();
  generation.reset();
  hndAugment.reset();
  hndValidation.reset();
  hndDownload.reset();
}

bool TNVProject::_refusePlace(const std::string& operation) const {
  if (isPlaceOfItsOwn) return false;
  tnv::logLine("TNVProject::" + operation +
               ": Project name must not be empty, a path or longer than 240 bytes!");
  return true;
}

bool TNVProject::create() {
  if (name.empty()) {
    tnv::logLine("TNVProject::create: Project name is empty!");
    return false;
  }
  if (_refusePlace("create")) return false;
  if (TNVDirectory::exists(settingsPath)) {
    tnv::logLine("TNVProject::create: Project already exists!");
    return false;
  }
  if (!TNVDirectory::exists(projectDirectory)) TNVDirectory::createDirectory(projectDirectory);
  if (!TNVDirectory::exists(projectDirectory)) {
    tnv::logLine("TNVProject::create: Can not create project directory!");
    return false;
  }
  // What lies in the directory is all that there is of the project, and a set of an earlier one of
  // that name is not this one's to delete.
  halfLoaded = false;
  setListKnown = !_hasImageSetDirectories();
  const bool settingsWritten = _writeSettings();
  return _updateImageFiles(true) && settingsWritten;
}

bool TNVProject::load() {
  if (_refusePlace("load")) return false;
  halfLoaded = true;
  _dropAllTrainSets();
  imageLists.clear();
  if (!_readSettings()) {
    tnv::logLine("TNVProject::load: Could not read settings!");
    return false;
  }
  if (!_readImageFiles()) {
    tnv::logLine("TNVProject::load: Could not read image files!");
    return false;
  }
  halfLoaded = false;
  if (observer) observer->onProjectLoaded();
  return true;
}

bool TNVProject::update(bool full) {
  if (_refusePlace("update")) return false;
  if (!TNVDirectory::exists(settingsPath)) {
    tnv::logLine("TNVProject::update: Project does not exists!");
    return false;
  }
  if (halfLoaded) {
    tnv::logLine("TNVProject::update: Project was not loaded completely, nothing is saved!");
    return false;
  }
  // Records of classes that the settings do not tell would be of others, made later.
  if (full && !_writeSettings()) return false;
  if (!_updateImageFiles(full)) return false;
  if (observer) observer->onProjectUpdated();
  return true;
}

bool TNVProject::remove() {
  if (_refusePlace("remove")) return false;
  if (!TNVDirectory::exists(settingsPath)) {
    tnv::logLine("TNVProject::remove: Project does not exists!");
    return false;
  }
  std::error_code error;
  std::filesystem::remove(settingsPath, error);
  if (TNVDirectory::exists(settingsPath)) {
    tnv::logLine("TNVProject::remove: Project can not removed!");
    return false;
  }
  TNVDirectory::remove(projectDirectory);
  if (TNVDirectory::exists(projectDirectory)) {
    tnv::logLine("TNVProject::remove: Project directory can not removed!");
    return false;
  }
  return true;
}

std::vector<std::string> TNVProject::readAvailableProjects(const std::string& projectsPath) {
  std::vector<std::string> names;
  const std::string path = TNVDirectory::normalizePath(projectsPath);
  for (const std::string& directory : TNVDirectory::readDirectories(path)) {
    const std::string candidate = TNVDirectory::getLastDirectoryName(directory);
    if (TNVDirectory::exists(directory + candidate + ".cfg")) names.push_back(candidate);
  }
  return names;
}

void TNVProject::setGeneration(const std::string& generationName) {
  if (generation && generation->getName() == generationName) return;
  const TNVTypeGeneration chosen = TNVTypeGeneration().getByName(generationName);
  generation.reset();
  if (chosen.name != "Darknet") return;
  generation = std::make_unique<TNVGenerationDarknet>();
  generation->platformPath = platformsPath;
  generation->projectDirectory = projectDirectory;
  generation->augmentsPath = augmentsPath;
  generation->dnnClasses = classPointers();
  _handOverTrainSets();
}

void TNVProject::detachObserver() {
  observer = nullptr;
  droppedTrainSets.clear();
  droppedDNNClasses.clear();
}

TNVDNNClass* TNVProject::addDNNClass(const std::string& className, int uniqueIdx, int dnnId) {
  if (className.empty()) {
    tnv::logLine("TNVProject::addDNNClass: DNN Class name is empty!");
    return nullptr;
  }
  if (findByName(dnnClasses, className)) {
    tnv::logLine("TNVProject::addDNNClass: DNN Class with this name already exists!");
    return nullptr;
  }
  auto added = std::make_unique<TNVDNNClass>(uniqueIdx == -1 ? takeIndex(dnnIdxUnique) : uniqueIdx);
  added->dnnId = dnnId < 0 ? tnv::addSaturated(maxDNNClassId(), 1) : dnnId;
  added->name = className;
  dnnClasses.push_back(std::move(added));
  _handOverDNNClasses();
  return dnnClasses.back().get();
}

bool TNVProject::updateDNNClass(TNVDNNClass* dnnClass, const std::string& className, int dnnId,
                                const std::string& samplePath, const std::string& comment,
                                cv::Scalar color) {
  if (!dnnClass) {
    tnv::logLine("TNVProject::updateDNNClass: DNNClass is nullptr!");
    return false;
  }
  if (className.empty()) {
    tnv::logLine("TNVProject::updateDNNClass: DNN Class name is empty!");
    return false;
  }
  const TNVDNNClass* namesake = findByName(dnnClasses, className);
  if (namesake && namesake != dnnClass) {
    tnv::logLine("TNVProject::updateDNNClass: DNN class name does already exist!");
    return false;
  }
  dnnClass->name = className;
  dnnClass->dnnId = dnnId;
  dnnClass->samplePath = tnv::withForwardSlashes(samplePath);
  dnnClass->comment = comment;
  dnnClass->color = color;
  return true;
}

void TNVProject::removeDNNClass(TNVDNNClass* dnnClass) {
  if (!dnnClass) {
    tnv::logLine("TNVProject::removeDNNClass: DNNClass is nullptr!");
    return;
  }
  const auto place = std::find_if(dnnClasses.begin(), dnnClasses.end(),
                                  [&](const auto& own) { return own.get() == dnnClass; });
  if (place == dnnClasses.end()) return;
  if (observer) droppedDNNClasses.push_back(std::move(*place));
  dnnClasses.erase(place);
  _handOverDNNClasses();
}

void TNVProject::clearDNNClasses() {
  if (observer)
    std::move(dnnClasses.begin(), dnnClasses.end(), std::back_inserter(droppedDNNClasses));
  dnnClasses.clear();
  _handOverDNNClasses();
}

int TNVProject::maxDNNClassId() const {
  int largest = -1;
  for (const auto& dnnClass : dnnClasses)
    largest = std::max(largest, dnnClass->dnnId);
  return largest;
}

std::vector<TNVDNNClass*> TNVProject::classPointers() const {
  std::vector<TNVDNNClass*> pointers;
  for (const auto& dnnClass : dnnClasses)
    pointers.push_back(dnnClass.get());
  return pointers;
}

void TNVProject::_handOverDNNClasses() {
  // Also an empty list: nobody is to be left with classes that are gone.
  if (generation) generation->dnnClasses = classPointers();
  hndAugment->dnnClasses = classPointers();
  hndValidation->dnnClasses = classPointers();
}

TNVWorkflow* TNVProject::addWorkflow(const std::string& workflowName, int uniqueIdx) {
  if (workflowName.empty()) {
    tnv::logLine("TNVProject::addWorkflow: Workflow name is empty!");
    return nullptr;
  }
  if (findByName(workflows, workflowName)) {
    tnv::logLine("TNVProject::addWorkflow: Workflow with this name already exists!");
    return nullptr;
  }
  auto added =
      std::make_unique<TNVWorkflow>(uniqueIdx == -1 ? takeIndex(workflowIdxUnique) : uniqueIdx);
  added->name = workflowName;
  workflows.push_back(std::move(added));
  return workflows.back().get();
}

bool TNVProject::updateWorkflow(TNVWorkflow* workflow, const std::string& workflowName) {
  if (!workflow) {
    tnv::logLine("TNVProject::updateWorkflow: Workflow is nullptr!");
    return false;
  }
  if (workflowName.empty()) {
    tnv::logLine("TNVProject::updateWorkflow: Workflow name is empty!");
    return false;
  }
  const TNVWorkflow* namesake = findByName(workflows, workflowName);
  if (namesake && namesake != workflow) {
    tnv::logLine("TNVProject::updateWorkflow: Workflow name does already exist!");
    return false;
  }
  workflow->name = workflowName;
  return true;
}
