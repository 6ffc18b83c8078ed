#pragma once

#include <string>

/// A file that a portal offers, or that lies in a local directory. The states have a meaning only
/// in the list that combines both.
struct TNVDownloadFile {
  std::string timeStamp;
  std::string fileName;
  std::string downloadAddress;
  std::string md5Hash;
  int fileSize = 0;
  bool stateMD5Valid = false;
  bool stateFileSizeValid = false;
  bool stateDownloadable = false;
  bool stateDownloaded = false;
};
