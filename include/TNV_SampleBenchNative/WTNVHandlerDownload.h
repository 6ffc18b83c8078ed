#pragma once

#include <string>
#include <vector>

#include "TNV_SampleBenchNative/Export.h"
#include "TNV_SampleBenchNative/TNVObserver.h"
#include "TNV_SampleBenchNative/WTNVCallback.h"
#include "TNV_SampleBenchNative/WTNVDownloadFile.h"

class TNVHandlerDownload;

/// Fetches weights and other large files from a portal, and compares a directory with what the
/// portal offers. All calls block until they are done; callbacks are called on the calling thread.
/// File names that are empty or lead out of a directory are refused with a log line. The project
/// owns the handler. The wrapper is an observer registered by its address: keep it in one place,
/// and destroy it before the project.
class TNV_SAMPLEBENCH_API WTNVHandlerDownload : public TNVHandlerDownloadObserver {
 public:
  explicit WTNVHandlerDownload(TNVHandlerDownload* handler);

  /// Another observer of the same handler, without callbacks.
  WTNVHandlerDownload(const WTNVHandlerDownload& other);

  /// Takes over the handler and the callbacks; registers nothing.
  WTNVHandlerDownload& operator=(const WTNVHandlerDownload& other);
  ~WTNVHandlerDownload() override;

  /// The files of the portal with their state in the local directory, then those that are only in
  /// the directory, which ends in a slash and whose files are read in full. A portal that cannot be
  /// reached offers nothing, without a word. Throws `std::invalid_argument`, `std::out_of_range` or
  /// another `std::exception` for a reply of another shape.
  std::vector<WTNVDownloadFile> wGetAllFiles(const std::string& portalAddress,
                                             const std::string& directory);

  /// Fetches a file into the directory: Started, an Update for each step as long as the size is
  /// known, Finished. False, with a log line that has libcurl's code, if that failed; what came
  /// until then stays under the file's name, or beside a file that was there before with ".part"
  /// behind the name. A file that a link in the directory leads to is replaced, not the link. An
  /// error page of the server counts as the file. Only http, https and file addresses are followed.
  /// What a callback throws comes out here.
  bool wDownloadFile(WTNVDownloadFile file, const std::string& directory);

  /// Copies a file into the directory. Throws `std::filesystem::filesystem_error` if one of that
  /// name is there.
  bool wImportFile(const std::string& sourcePath, const std::string& directory);

  /// Deletes a file of the directory. True if none of that name is there afterwards.
  bool wRemoveFile(WTNVDownloadFile file, const std::string& directory);

  /// Does nothing; false.
  bool wStopDownload();

  /// Functions to call on events; null clears.
  void setCBDownloadStarted(void (*callback)());
  void setCBDownloadUpdate(void (*callback)());
  void setCBDownloadFinished(void (*callback)());

  void onEventDownloadStarted() override;
  void onEventDownloadUpdate() override;
  void onEventDownloadFinished() override;

 private:
  TNVHandlerDownload* native;
  WTNVCallback downloadStarted;
  WTNVCallback downloadUpdate;
  WTNVCallback downloadFinished;
};
