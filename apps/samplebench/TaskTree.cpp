#include "TaskTree.h"

#include <algorithm>
#include <array>
#include <filesystem>

#include <opencv2/core.hpp>

#include "CommandError.h"

namespace {

// Far more than a sensible tree has, and few enough to walk.
constexpr int mostSubTasks = 1000;

int subTaskCount(const cv::FileNode& node) {
  int count = 0;
  cv::read(node["SubTasks"], count, 0);
  return count;
}

bool isKnown(const std::string& kind) {
  constexpr std::array<const char*, 4> kinds{"Default", "Resize", "Rotation", "Filter"};
  return std::find(kinds.begin(), kinds.end(), kind) != kinds.end();
}

int savingTasks(const cv::FileNode& node, const std::string& file);

int savingTasksOf(const cv::FileNode& task, const std::string& file) {
  std::string kind;
  cv::read(task["Name"], kind, "");
  if (!isKnown(kind))
    throw CommandError("'" + file + "' has a task of the unknown kind '" + kind +
                       "'; kinds: Default, Resize, Rotation, Filter");
  int save = 0;
  cv::read(task["Save"], save, 0);
  return (save != 0 ? 1 : 0) + savingTasks(task, file);
}

int savingTasks(const cv::FileNode& node, const std::string& file) {
  const auto count = subTaskCount(node);
  if (count > mostSubTasks)
    throw CommandError("'" + file + "' claims " + std::to_string(count) + " tasks in one place");
  int saving = 0;
  for (int i = 0; i < count; ++i)
    saving += savingTasksOf(node["Task_" + std::to_string(i)], file);
  return saving;
}

}  // namespace

void requireTaskTree(const std::string& file) {
  if (std::filesystem::is_empty(file)) throw CommandError("the task tree '" + file + "' is empty");
  const cv::FileStorage storage(file, cv::FileStorage::READ);
  const auto root = storage.isOpened() ? storage["TaskTree"] : cv::FileNode();
  if (subTaskCount(root) != 1)
    throw CommandError("'" + file + "' does not hold exactly one tree of tasks");
  if (savingTasks(root, file) == 0)
    throw CommandError("'" + file + "' has no task that saves; set <Save>1</Save> on one");
}
