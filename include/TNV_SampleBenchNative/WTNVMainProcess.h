#pragma once

#include "TNV_SampleBenchNative/Export.h"
#include "TNV_SampleBenchNative/WTNVHandlerImageView.h"
#include "TNV_SampleBenchNative/WTNVHandlerMark.h"
#include "TNV_SampleBenchNative/WTNVHandlerTrainSet.h"

class TNVMainProcess;
class WTNVProject;
class WTNVUser;

/// The interactive side of one open project: navigation, marks and rendering, with one background
/// thread that reads pictures. The wrapper owns it. Destroy handler wrappers before it, and it
/// before the project.
class TNV_SAMPLEBENCH_API WTNVMainProcess {
 public:
  /// Opens the project's first train set; a damaged record of it throws. The user is accepted for
  /// the sake of callers and not used; it may be null.
  WTNVMainProcess(WTNVProject* project, WTNVUser* user);
  WTNVMainProcess(const WTNVMainProcess&) = delete;

  /// Copies the bare pointer, after which two wrappers own one main process: not to be used.
  WTNVMainProcess& operator=(const WTNVMainProcess& other);
  ~WTNVMainProcess();

  /// New observers of the handlers, without callbacks. Keep each where it is constructed.
  WTNVHandlerTrainSet getHndTrainSet();
  WTNVHandlerMark getHndMark();
  WTNVHandlerImageView getHndImageView();

 private:
  TNVMainProcess* native;
};
