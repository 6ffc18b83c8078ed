#pragma once

#include <string>
#include <vector>

#include "TNV_SampleBenchNative/Export.h"
#include "TNV_SampleBenchNative/WTNVDNNClass.h"
#include "TNV_SampleBenchNative/WTNVGeneration.h"
#include "TNV_SampleBenchNative/WTNVHandlerAugment.h"
#include "TNV_SampleBenchNative/WTNVHandlerDownload.h"
#include "TNV_SampleBenchNative/WTNVHandlerValidation.h"
#include "TNV_SampleBenchNative/WTNVTrainSet.h"
#include "TNV_SampleBenchNative/WTNVWorkflow.h"

class TNVProject;

/// A project: a directory with settings, DNN classes, workflows, and image sets of marked pictures.
/// The wrapper owns the project. Handles and handlers that it gives out are borrowed from it:
/// destroy main process and handler wrappers first. Setters change memory; `wUpdate` writes.
/// Destruction saves nothing. For use on one thread. Failures are told by the result and a line in
/// the log; files that cannot be parsed and errors of the file system are thrown.
class TNV_SAMPLEBENCH_API WTNVProject {
 public:
  /// Touches no file. The project lies in `<projectsPath>/<name>/`; `platformsPath` has the
  /// templates of the generators, `augmentsPath` the task trees.
  WTNVProject(const std::string& name, const std::string& projectsPath,
              const std::string& platformsPath, const std::string& augmentsPath);
  WTNVProject(const WTNVProject&) = delete;

  /// Copies the bare pointer, after which two wrappers own one project: not to be used. The shape
  /// is an old one that front ends were built against.
  WTNVProject& operator=(const WTNVProject& other);
  ~WTNVProject();

  /// The project itself, borrowed.
  TNVProject* getNativeProject() const;

  /// A new observer of the handler of generation runs. Keep it where it is constructed.
  WTNVHandlerAugment getHndAugment();

  /// The same of the gallery, and of the downloads.
  WTNVHandlerValidation getHndValidation();
  WTNVHandlerDownload getHndDownload();

  std::string wGetProjectName() const;

  /// Writes a new, empty project. False if the name is no plain name or the project exists.
  bool wCreate();

  /// Replaces what is in memory by what is on disk. Marks and pictures are read later, on need.
  bool wLoad();

  /// Writes the train sets that have changed; with `full` also the settings and the lists, and
  /// every train set in memory. False if the project is not on disk or something could not be
  /// written; what was there before is whole then. Without the settings nothing else is written, as
  /// marks might have classes that only they tell.
  bool wUpdate(bool full);

  /// Deletes the project's directory with all that it holds. The pictures lie elsewhere and stay.
  bool wRemove();

  /// Names of the projects below the path, in the order of the file system.
  static std::vector<std::string> wReadAvailableProjects(const std::string& projectsPath);

  /// Where the project lies, with a slash at the end.
  std::string wGetProjectDirectoryPath() const;

  std::string wGetSamplesDirectoryPath() const;

  /// Names of the training platforms.
  std::vector<std::string> wGetAvailableGenerations() const;

  /// Chooses the generator; an unknown name gives the first one. A chosen one keeps its settings.
  void wSetGeneration(const std::string& name);

  /// The generator; a null handle before one was chosen or the project was loaded.
  WTNVGeneration wGetGeneration() const;

  /// Whether `wUpdate(true)` keeps reduced copies of the pictures, their longer side in pixels, and
  /// their JPEG quality, 0 to 100.
  void wSetCacheImages(bool cache);
  bool wGetCacheImages() const;
  void wSetCacheImagesMaxSize(int size);
  int wGetCacheImagesMaxSize() const;
  void wSetCacheImagesQuality(int quality);
  int wGetCacheImagesQuality() const;

  /// How many full pictures a main process holds in memory.
  void wSetCacheImagesCount(int count);
  int wGetCacheImagesCount() const;

  /// Whether the image view keeps the picture with its marks between two renders.
  void wSetCacheRender(bool cache);
  bool wGetCacheRender() const;

  /// Size of the POI boxes of new marks: relative to the picture, and in pixels.
  void wSetPOIRelSize(double x, double y);
  void wGetPOIRelSize(double* x, double* y) const;
  void wSetPOIAbsSize(double x, double y);
  void wGetPOIAbsSize(double* x, double* y) const;

  /// Which of the two counts: 1 the relative size, 2 the one in pixels, any other value neither.
  void wSetPOISizeUse(int use);
  int wGetPOISizeUse() const;

  /// Adds a class. A `uniqueIdx` of -1 takes the next free index, a negative `dnnId` the number
  /// after the largest one. A null handle for a name that is empty or taken.
  WTNVDNNClass wAddDNNClass(const std::string& name, int uniqueIdx, int dnnId);

  /// Changes a class; colours are 0 to 255. False for a name that is empty or another class's.
  bool wUpdateDNNClass(WTNVDNNClass dnnClass, const std::string& name, int dnnId,
                       const std::string& samplePath, const std::string& comment, int red,
                       int green, int blue);

  /// Removes a class; handles on it dangle. Marks keep its index.
  void wRemoveDNNClass(WTNVDNNClass dnnClass);
  void wClearDNNClasses();
  std::vector<WTNVDNNClass> wGetDNNClasses() const;

  /// Exchanges the class with the one before it.
  void wOrderUpDNNClass(WTNVDNNClass dnnClass);

  /// The largest class number; -1 without classes.
  int wGetMaxDNNClassId() const;

  /// Adds a workflow. A `uniqueIdx` of -1 takes the next free index. A null handle for a name that
  /// is empty or taken.
  WTNVWorkflow wAddWorkflow(const std::string& name, int uniqueIdx);
  bool wUpdateWorkflow(WTNVWorkflow workflow, const std::string& name);
  void wRemoveWorkflow(WTNVWorkflow workflow);
  void wClearWorkflows();
  std::vector<WTNVWorkflow> wGetWorkflows() const;

  /// Paths of the pictures in a directory, in the order of the file system.
  std::vector<std::string> wReadImagesFromDirectory(const std::string& directory,
                                                    bool recursive) const;

  /// Adds those pictures whose `use` is true to an image set, which is made if it does not exist;
  /// returns how many were new to it. The pictures stay where they are. With `sameDirectory` all
  /// are taken to lie beside the first. The lists must be of one
  /// length; the set's name must be a plain name of at most 240 bytes without , = { } and double
  /// quotes, which the settings file would not give back.
  int wAddImagesToImageSet(const std::vector<std::string>& images, const std::vector<bool>& use,
                           const std::string& set, bool sameDirectory);

  /// Takes pictures out of an image set, named as they were when added; returns how many were
  /// found.
  int wRemoveImagesFromImageSet(const std::vector<std::string>& images, const std::string& set);

  /// For pictures that were moved: those below the directory `from` are looked for below `to` from
  /// now on. Both are absolute paths of directories, with slashes of either kind; neither has to
  /// exist, and no picture has to be there. Returns the number of train sets that changed: 0, with
  /// a log line, if a path is empty. `wUpdate` saves the change.
  ///
  /// Train sets whose data are not in memory are read, as by `WTNVTrainSet::wLoadData`: one whose
  /// file is missing stays as it is; a damaged file throws, and train sets before it have changed
  /// then. No main process may use the project meanwhile.
  int wRelinkPictures(const std::string& from, const std::string& to);

  /// The same for the project's own files, which its lists name by their whole paths: for a project
  /// whose directory was moved, to be called after `wLoad` and before `wRelinkPictures`. Train sets
  /// are read from where their files are then, and throw alike. Only `wUpdate(true)` saves all of
  /// the change, as it writes the lists. No main process may use the project meanwhile.
  int wRelinkTrainSets(const std::string& from, const std::string& to);

  /// Names of the image sets, sorted.
  std::vector<std::string> wGetImageSets() const;

  /// The train sets of a set, in the order of addition; none, with a log line, for an unknown set.
  std::vector<WTNVTrainSet> wGetTrainSetsFromImageSet(const std::string& set) const;
  int wGetTrainSetCountFromImageSet(const std::string& set) const;

  /// The train sets of all sets, set by set in the order of the names.
  std::vector<WTNVTrainSet> wGetTrainSets() const;

  /// Deletes the reduced copies of all pictures; returns the number of train sets visited.
  int wClearImagesCache();

 private:
  TNVProject* native;
};
