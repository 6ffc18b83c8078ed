#pragma once

#include <memory>

#include "editing/TNVHandlerTrainSet.h"
#include "project/TNVProject.h"

class TNVHandlerImageView;
class TNVHandlerMark;

/// The interactive counterpart of one open project: owns the three interactive handlers and keeps
/// view and mark handler bound to the current train set.
class TNVMainProcess final : public TNVHandlerTrainSetMPObserver, public TNVProjectMPObserver {
 public:
  explicit TNVMainProcess(TNVProject* openProject);
  ~TNVMainProcess();
  TNVMainProcess(const TNVMainProcess&) = delete;
  TNVMainProcess& operator=(const TNVMainProcess&) = delete;

  void onImageReady() override;
  void onTrainSetSwitched() override;
  void onProjectUpdated() override;
  void onProjectLoaded() override;
  void onProjectClosed() override;

  TNVProject* project;
  std::unique_ptr<TNVHandlerImageView> hndImageView;
  std::unique_ptr<TNVHandlerMark> hndMark;
  std::unique_ptr<TNVHandlerTrainSet> hndTrainSet;

 private:
  void createHandlers();
  void refreshTrainSets();
};
