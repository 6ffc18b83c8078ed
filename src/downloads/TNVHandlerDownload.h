#pragma once

#include <fstream>
#include <string>
#include <vector>

#include "boundary/TNVNotificator.h"
#include "downloads/TNVDownloadFile.h"

/// Fetches files from a portal into a local directory, one at a time and on the calling thread, and
/// compares the directory with what the portal offers.
class TNVHandlerDownload : public TNVNotificator {
 public:
  TNVHandlerDownload();
  virtual ~TNVHandlerDownload() = default;

  /// What the portal offers; empty if it cannot be reached. A reply of another shape throws.
  std::vector<TNVDownloadFile> downloadList(const std::string& address) const;

  /// Fetches a file. An existing one is replaced only by a whole one. (The name is also that in the
  /// log.)
  bool downlaodFile(const TNVDownloadFile& file, const std::string& directory);

  /// The portal's files with their state in the directory, then those of the directory alone.
  std::vector<TNVDownloadFile> getAllFiles(const std::string& address,
                                           const std::string& directory) const;

  /// Copies a file into the directory. An existing target throws a filesystem error.
  bool importFile(const std::string& source, const std::string& directory) const;

  /// Whether no such file is in the directory afterwards.
  bool removeFile(const TNVDownloadFile& file, const std::string& directory) const;

  std::ofstream fileStream;
  bool cancel = false;
  double progress = 0.0;

  /// Whether a portal has to show a certificate of an authority that this computer knows.
  bool verifyCertificates;

 private:
  /// The transfer into a file; the network library's code.
  int fetch(const std::string& address, const std::string& path);
  void tellProgress(double total, double now);
};
