#include "TNV_SampleBenchNative/WTNVProject.h"

#include <algorithm>

#include "boundary/Handles.h"
#include "editing/TNVType.h"
#include "foundation/Log.h"
#include "generation/TNVGenerationDarknet.h"
#include "project/TNVDNNClass.h"
#include "project/TNVProject.h"
#include "project/TNVTrainSet.h"
#include "project/TNVWorkflow.h"

namespace {

template <class Entry>
auto findOwned(std::vector<std::unique_ptr<Entry>>& entries, const Entry* wanted) {
  return std::find_if(entries.begin(), entries.end(),
                      [&](const auto& entry) { return entry.get() == wanted; });
}

void writePair(cv::Point2d pair, double* x, double* y) {
  if (!x || !y) return;
  *x = pair.x;
  *y = pair.y;
}

/// The set of that name, or null and a line in the log.
const TNVProject::ImageSet* findSet(const TNVProject& project, const std::string& set,
                                    const char* operation) {
  const auto entry = project.imageSets.find(set);
  if (entry != project.imageSets.end()) return &entry->second;
  tnv::logLine(std::string("TNVProject::") + operation + ": Image set not found!");
  return nullptr;
}

}  // namespace

WTNVProject::WTNVProject(const std::string& name, const std::string& projectsPath,
                         const std::string& platformsPath, const std::string& augmentsPath)
    : native(new TNVProject(name, projectsPath, platformsPath, augmentsPath)) {}

WTNVProject& WTNVProject::operator=(const WTNVProject& other) = default;

WTNVProject::~WTNVProject() {
  delete native;
}

TNVProject* WTNVProject::getNativeProject() const {
  return native;
}

WTNVHandlerAugment WTNVProject::getHndAugment() {
  return WTNVHandlerAugment(native->hndAugment.get());
}

WTNVHandlerValidation WTNVProject::getHndValidation() {
  return WTNVHandlerValidation(native->hndValidation.get());
}

WTNVHandlerDownload WTNVProject::getHndDownload() {
  return WTNVHandlerDownload(native->hndDownload.get());
}

std::string WTNVProject::wGetProjectName() const {
  return native->name;
}

bool WTNVProject::wCreate() {
  return native->create();
}

bool WTNVProject::wLoad() {
  return native->load();
}

bool WTNVProject::wUpdate(bool full) {
  return native->update(full);
}

bool WTNVProject::wRemove() {
  return native->remove();
}

std::vector<std::string> WTNVProject::wReadAvailableProjects(const std::string& projectsPath) {
  return TNVProject::readAvailableProjects(projectsPath);
}

std::string WTNVProject::wGetProjectDirectoryPath() const {
  return native->projectDirectory;
}

std::string WTNVProject::wGetSamplesDirectoryPath() const {
  return native->projectDirectory + native->samplesDirectory;
}

std::vector<std::string> WTNVProject::wGetAvailableGenerations() const {
  return TNVTypeGeneration().getNames();
}

void WTNVProject::wSetGeneration(const std::string& name) {
  native->setGeneration(name);
}

WTNVGeneration WTNVProject::wGetGeneration() const {
  return WTNVGeneration(native->generation.get());
}

void WTNVProject::wSetCacheImages(bool value) {
  native->cacheImages = value;
}

bool WTNVProject::wGetCacheImages() const {
  return native->cacheImages;
}

void WTNVProject::wSetCacheImagesMaxSize(int value) {
  native->cacheImagesMaxSize = value;
}

int WTNVProject::wGetCacheImagesMaxSize() const {
  return native->cacheImagesMaxSize;
}

void WTNVProject::wSetCacheImagesQuality(int value) {
  native->cacheImagesQuality = value;
}

int WTNVProject::wGetCacheImagesQuality() const {
  return native->cacheImagesQuality;
}

void WTNVProject::wSetCacheImagesCount(int value) {
  native->cacheImagesCount = value;
}

int WTNVProject::wGetCacheImagesCount() const {
  return native->cacheImagesCount;
}

void WTNVProject::wSetCacheRender(bool value) {
  native->cacheRender = value;
}

bool WTNVProject::wGetCacheRender() const {
  return native->cacheRender;
}

void WTNVProject::wSetPOIRelSize(double x, double y) {
  native->poiRelSize = {x, y};
}

void WTNVProject::wGetPOIRelSize(double* x, double* y) const {
  writePair(native->poiRelSize, x, y);
}

void WTNVProject::wSetPOIAbsSize(double x, double y) {
  native->poiAbsSize = {x, y};
}

void WTNVProject::wGetPOIAbsSize(double* x, double* y) const {
  writePair(native->poiAbsSize, x, y);
}

void WTNVProject::wSetPOISizeUse(int use) {
  native->poiSizeUse = use;
}

int WTNVProject::wGetPOISizeUse() const {
  return native->poiSizeUse;
}

WTNVDNNClass WTNVProject::wAddDNNClass(const std::string& name, int uniqueIdx, int dnnId) {
  return WTNVDNNClass(native->addDNNClass(name, uniqueIdx, dnnId));
}

bool WTNVProject::wUpdateDNNClass(WTNVDNNClass dnnClass, const std::string& name, int dnnId,
                                  const std::string& samplePath, const std::string& comment,
                                  int red, int green, int blue) {
  return native->updateDNNClass(dnnClass.getNativeDNNClass(), name, dnnId, samplePath, comment,
                                cv::Scalar(blue, green, red));
}

void WTNVProject::wRemoveDNNClass(WTNVDNNClass dnnClass) {
  native->removeDNNClass(dnnClass.getNativeDNNClass());
}

void WTNVProject::wClearDNNClasses() {
  native->clearDNNClasses();
}

std::vector<WTNVDNNClass> WTNVProject::wGetDNNClasses() const {
  return tnv::asHandles<WTNVDNNClass>(native->classPointers());
}

void WTNVProject::wOrderUpDNNClass(WTNVDNNClass dnnClass) {
  if (!dnnClass.isValid()) {
    tnv::logLine("TNVProject::orderUpDNNClass: DNNClass is nullptr!");
    return;
  }
  const auto place = findOwned(native->dnnClasses, dnnClass.getNativeDNNClass());
  if (place == native->dnnClasses.begin() || place == native->dnnClasses.end()) return;
  std::iter_swap(place, place - 1);
}

int WTNVProject::wGetMaxDNNClassId() const {
  return native->maxDNNClassId();
}

WTNVWorkflow WTNVProject::wAddWorkflow(const std::string& name, int uniqueIdx) {
  return WTNVWorkflow(native->addWorkflow(name, uniqueIdx));
}

bool WTNVProject::wUpdateWorkflow(WTNVWorkflow workflow, const std::string& name) {
  return native->updateWorkflow(workflow.getNativeWorkflow(), name);
}

void WTNVProject::wRemoveWorkflow(WTNVWorkflow workflow) {
  if (!workflow.isValid()) {
    tnv::logLine("TNVProject::removeWorkflow: Workflow is nullptr!");
    return;
  }
  const auto place = findOwned(native->workflows, workflow.getNativeWorkflow());
  if (place != native->workflows.end()) native->workflows.erase(place);
}

void WTNVProject::wClearWorkflows() {
  native->workflows.clear();
}

std::vector<WTNVWorkflow> WTNVProject::wGetWorkflows() const {
  std::vector<WTNVWorkflow> workflows;
  for (const auto& workflow : native->workflows)
    workflows.emplace_back(workflow.get());
  return workflows;
}

std::vector<std::string> WTNVProject::wReadImagesFromDirectory(const std::string& directory,
                                                               bool recursive) const {
  return native->readImagesFromDirectory(directory, recursive);
}

int WTNVProject::wAddImagesToImageSet(const std::vector<std::string>& images,
                                      const std::vector<bool>& use, const std::string& set,
                                      bool sameDirectory) {
  return native->addImages(images, use, set, sameDirectory);
}

int WTNVProject::wRemoveImagesFromImageSet(const std::vector<std::string>& images,
                                           const std::string& set) {
  return native->removeImagesFromImageSet(images, set);
}

std::vector<std::string> WTNVProject::wGetImageSets() const {
  std::vector<std::string> names;
  for (const auto& [set, trainSets] : native->imageSets)
    names.push_back(set);
  return names;
}

std::vector<WTNVTrainSet> WTNVProject::wGetTrainSetsFromImageSet(const std::string& set) const {
  std::vector<WTNVTrainSet> handles;
  const auto* trainSets = findSet(*native, set, "getImagesFromImageSet");
  if (!trainSets) return handles;
  for (const auto& trainSet : *trainSets)
    handles.emplace_back(trainSet.get());
  return handles;
}

int WTNVProject::wGetTrainSetCountFromImageSet(const std::string& set) const {
  const auto* trainSets = findSet(*native, set, "getTrainSetCountFromImageSet");
  return trainSets ? static_cast<int>(trainSets->size()) : 0;
}

std::vector<WTNVTrainSet> WTNVProject::wGetTrainSets() const {
  return tnv::asHandles<WTNVTrainSet>(native->trainSetPointers());
}

int WTNVProject::wRelinkPictures(const std::string& from, const std::string& to) {
  return native->relinkPictures(from, to);
}

int WTNVProject::wRelinkTrainSets(const std::string& from, const std::string& to) {
  return native->relinkTrainSets(from, to);
}

int WTNVProject::wClearImagesCache() {
  return native->clearImagesCache();
}
