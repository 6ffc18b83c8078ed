#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include <opencv2/core.hpp>

class TNVDNNClass;
class TNVGenerationDarknet;
class TNVHandlerAugment;
class TNVHandlerDownload;
class TNVHandlerValidation;
class TNVSettings;
class TNVTrainSet;
class TNVWorkflow;

/// The main process as the project sees it.
class TNVProjectMPObserver {
 public:
  virtual void onProjectUpdated() = 0;
  virtual void onProjectLoaded() = 0;
  virtual void onProjectClosed() = 0;

 protected:
  ~TNVProjectMPObserver() = default;
};

/// A named directory with settings, classes, workflows and image sets, and the handlers that live
/// as long as the project.
class TNVProject {
 public:
  using ImageSet = std::vector<std::unique_ptr<TNVTrainSet>>;

  /// Reads no file and creates no directory.
  TNVProject(const std::string& projectName, const std::string& projectsPath,
             const std::string& platforms, const std::string& augments);
  ~TNVProject();
  TNVProject(const TNVProject&) = delete;
  TNVProject& operator=(const TNVProject&) = delete;

  bool create();
  bool load();
  bool update(bool full);
  bool remove();
  static std::vector<std::string> readAvailableProjects(const std::string& projectsPath);

  void setGeneration(const std::string& generationName);

  TNVDNNClass* addDNNClass(const std::string& className, int uniqueIdx, int dnnId);
  bool updateDNNClass(TNVDNNClass* dnnClass, const std::string& className, int dnnId,
                      const std::string& samplePath, const std::string& comment, cv::Scalar color);
  void removeDNNClass(TNVDNNClass* dnnClass);
  void clearDNNClasses();
  int maxDNNClassId() const;
  std::vector<TNVDNNClass*> classPointers() const;

  TNVWorkflow* addWorkflow(const std::string& workflowName, int uniqueIdx);
  bool updateWorkflow(TNVWorkflow* workflow, const std::string& workflowName);

  std::vector<std::string> readImagesFromDirectory(const std::string& directory,
                                                   bool recursive) const;
  int addImages(const std::vector<std::string>& images, const std::vector<bool>& use,
                const std::string& set, bool sameDirectory);
  int removeImagesFromImageSet(const std::vector<std::string>& images, const std::string& set);
  int relinkPictures(const std::string& from, const std::string& to);
  int relinkTrainSets(const std::string& from, const std::string& to);
  std::vector<TNVTrainSet*> trainSetPointers() const;
  int clearImagesCache();

  /// Ends the observation. Train sets that were dropped while somebody observed go with it.
  void detachObserver();

  int dnnIdxUnique = 0;
  int workflowIdxUnique = 0;
  std::map<std::string, ImageSet> imageSets;
  TNVProjectMPObserver* observer = nullptr;
  std::unique_ptr<TNVGenerationDarknet> generation;
  std::vector<std::unique_ptr<TNVDNNClass>> dnnClasses;
  std::vector<std::unique_ptr<TNVWorkflow>> workflows;
  std::unique_ptr<TNVHandlerAugment> hndAugment;
  std::unique_ptr<TNVHandlerValidation> hndValidation;
  std::unique_ptr<TNVHandlerDownload> hndDownload;
  cv::Point2d poiRelSize{0.01, 0.01};
  cv::Point2d poiAbsSize{20.0, 20.0};
  int poiSizeUse = 1;
  std::string settingsFile;
  std::string settingsPath;
  std::string projectDirectory;
  std::string platformsPath;
  std::string augmentsPath;
  std::string validationDirectory;
  std::string name;
  std::string samplesDirectory = "samples/";
  std::string cacheDirectory = "cache/";
  std::vector<std::string> imageTypes{"jpg", "jpeg", "png"};
  std::vector<std::string> imageLists;
  bool cacheImages = false;
  int cacheImagesMaxSize = 1024;
  int cacheImagesCount = 10;
  int cacheImagesQuality = 75;
  bool cacheRender = true;
  bool cacheValidation = true;

 private:
  /// A project whose name is a path would write and delete outside its place.
  bool _refusePlace(const std::string& operation) const;

  bool _writeSettings() const;
  bool _readSettings();
  void _writeDNNClasses(TNVSettings& settings) const;
  void _readDNNClasses(const TNVSettings& settings);
  void _writeWorkflows(TNVSettings& settings) const;
  void _readWorkflows(const TNVSettings& settings);

  bool _updateImageFiles(bool full);
  bool _saveChangedTrainSets();
  bool _saveImageSet(const std::string& set, ImageSet& trainSets);
  std::vector<std::string> _staleImageSets() const;
  bool _hasImageSetDirectories() const;
  void _removeImageSet(const std::string& set) const;
  void _updateImageCache(TNVTrainSet& trainSet);
  bool _readImageFiles();
  void _readImageSet(const std::string& set);

  std::string _imageSetDirectory(const std::string& set) const;
  std::string _imageSetList(const std::string& set) const;
  void _refreshImageLists();
  void _handOverDNNClasses();
  void _handOverTrainSets();
  void _dropTrainSet(std::unique_ptr<TNVTrainSet> trainSet);
  void _dropAllTrainSets();

  bool isPlaceOfItsOwn;

  /// What is in memory is not all that is on disk, so that saving would delete the rest.
  bool halfLoaded = false;

  /// The names of all sets on disk are known, so that a set of another name is one that is gone.
  bool setListKnown = false;

  /// Taken out while a main process may still look at them.
  ImageSet droppedTrainSets;
  std::vector<std::unique_ptr<TNVDNNClass>> droppedDNNClasses;
};
