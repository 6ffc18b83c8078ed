#pragma once

#include <string>

#include "TNV_SampleBenchNative/Export.h"

struct TNVDownloadFile;

/// A file of a portal or of a local directory, as it was when it was listed. Each object has a copy
/// of its own. The states are those of the list that `WTNVHandlerDownload::wGetAllFiles` gives. An
/// empty object answers with empty texts, 0 and false.
class TNV_SAMPLEBENCH_API WTNVDownloadFile {
 public:
  /// An empty object.
  WTNVDownloadFile();
  explicit WTNVDownloadFile(const TNVDownloadFile& file);
  WTNVDownloadFile(const WTNVDownloadFile& other);
  WTNVDownloadFile& operator=(const WTNVDownloadFile& other);
  ~WTNVDownloadFile();

  /// The date that the portal gives, as text; "00:00" for a file that is only here.
  std::string wGetTimeStamp() const;
  std::string wGetFileName() const;

  /// Where to fetch the file; empty for a file that is only here.
  std::string wGetDownloadAddress() const;

  /// MD5 in lowercase hexadecimal digits: what the portal says, or that of a file that is only
  /// here; empty for one that cannot be read.
  std::string wGetMD5Hash() const;

  /// Size in bytes, from the same source; -1 for a file that cannot be read.
  int wGetFileSize() const;

  /// Whether the local file has the portal's content, and the portal's size.
  bool wGetStateMD5Valid() const;
  bool wGetStateFileSizeValid() const;

  /// Whether the portal offers the file, and whether it offers it and it is here.
  bool wGetStateDownloadable() const;
  bool wGetStateDownloaded() const;

  /// The record, owned by this object; null for an empty one.
  TNVDownloadFile* wGetNativeDownloadFile() const;

 private:
  const TNVDownloadFile& record() const;

  TNVDownloadFile* native;
};
