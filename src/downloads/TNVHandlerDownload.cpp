#include "downloads/TNVHandlerDownload.h"

#include <filesystem>
#include <set>
#include <unordered_map>

#include <curl/curl.h>

#include "TNV_SampleBenchNative/TNVObserver.h"
#include "downloads/CurlTransfer.h"
#include "downloads/PortalReply.h"
#include "foundation/Files.h"
#include "foundation/Log.h"
#include "foundation/TNVDirectory.h"

namespace fs = std::filesystem;

namespace {

using Files = std::vector<TNVDownloadFile>;

/// The null value as JSON, which asks a portal for its list.
constexpr auto kListRequest = "null\n";

/// A list of thousands of files stays below this. A portal that sends without end is not to fill
/// the memory, of which a parsed reply takes many times its length.
constexpr std::size_t kLongestReply = std::size_t{1} << 20;

/// The size of what cannot be opened.
constexpr int kNoSize = -1;

/// What the present part of a file is called while a whole one lies in its place.
constexpr auto kPartEnding = ".part";

#ifdef TNV_PORTAL_VERIFY_TLS
constexpr bool kVerifyCertificates = true;
#else
constexpr bool kVerifyCertificates = false;
#endif

/// Pairs the set-up of the network library with its clean-up.
class CurlGlobal {
 public:
  CurlGlobal() { curl_global_init(CURL_GLOBAL_ALL); }
  ~CurlGlobal() { curl_global_cleanup(); }
  CurlGlobal(const CurlGlobal&) = delete;
  CurlGlobal& operator=(const CurlGlobal&) = delete;
};

std::string pathIn(const std::string& directory, const std::string& fileName) {
  const std::string normal = TNVDirectory::normalizePath(directory);
  return normal + (normal.empty() || normal.ends_with('/') ? "" : "/") + fileName;
}

/// Whether nothing is there, not even a link that leads nowhere. Nothing can be where the name is
/// too long.
bool isFree(const std::string& path) {
  std::error_code error;
  return fs::symlink_status(path, error).type() == fs::file_type::not_found ||
         error == std::errc::filename_too_long;
}

bool isFile(const std::string& path) {
  std::error_code error;
  return fs::is_regular_file(path, error);
}

/// A link could lead to a file that has nothing to do with this.
bool isFileItself(const std::string& path) {
  std::error_code error;
  return fs::is_regular_file(fs::symlink_status(path, error));
}

/// Closes the file whatever an observer throws.
class CloseAtEnd {
 public:
  explicit CloseAtEnd(std::ofstream& file) : stream(file) {}
  ~CloseAtEnd() { stream.close(); }
  CloseAtEnd(const CloseAtEnd&) = delete;
  CloseAtEnd& operator=(const CloseAtEnd&) = delete;

 private:
  std::ofstream& stream;
};

/// A name from the network, or from a front end, must not lead out of the directory.
bool refuseName(const std::string& operation, const std::string& fileName) {
  if (tnv::isPlainName(fileName)) return false;
  tnv::logLine("TNVHandlerDownload::" + operation + ": File name '" + tnv::printable(fileName) +
               "' must not be empty or a path!");
  return true;
}

/// Looking into anything else than a file, a pipe for one, might never end.
TNVDownloadFile localFile(const std::string& path, const std::string& name) {
  TNVDownloadFile file;
  file.timeStamp = "00:00";
  file.fileName = name;
  file.md5Hash = isFile(path) ? TNVDirectory::fileMD5(path) : "";
  file.fileSize = isFile(path) ? static_cast<int>(TNVDirectory::fileSize(path)) : kNoSize;
  return file;
}

std::vector<TNVFileInfo> entriesOf(const std::string& directory) {
  try {
    return TNVDirectory::readFiles(directory, {}, false);
  } catch (const fs::filesystem_error&) {
    tnv::logLine("TNVHandlerDownload::getAllFiles: Could not read directory '" + directory + "'!");
    return {};
  }
}

Files localFiles(const std::string& directory) {
  Files files;
  for (const TNVFileInfo& entry : entriesOf(directory))
    files.push_back(localFile(directory + entry.fileName, entry.fileName));
  return files;
}

TNVDownloadFile compared(TNVDownloadFile remote, const TNVDownloadFile* local) {
  remote.stateDownloadable = true;
  if (local == nullptr) return remote;
  remote.stateDownloaded = true;
  remote.stateFileSizeValid = local->fileSize != kNoSize && remote.fileSize == local->fileSize;
  remote.stateMD5Valid = remote.stateFileSizeValid && remote.md5Hash == local->md5Hash;
  return remote;
}

Files combined(const Files& remotes, const Files& locals) {
  std::unordered_map<std::string, const TNVDownloadFile*> localByName;
  for (const TNVDownloadFile& local : locals)
    localByName[local.fileName] = &local;
  Files files;
  std::set<std::string> offered;
  for (const TNVDownloadFile& remote : remotes) {
    const auto local = localByName.find(remote.fileName);
    files.push_back(compared(remote, local == localByName.end() ? nullptr : local->second));
    offered.insert(remote.fileName);
  }
  for (const TNVDownloadFile& local : locals) {
    if (offered.count(local.fileName) == 0) files.push_back(local);
  }
  return files;
}

void logCount(const std::string& what, const Files& files) {
  tnv::logLine(what + ": " + std::to_string(files.size()));
}

}  // namespace

TNVHandlerDownload::TNVHandlerDownload() : verifyCertificates(kVerifyCertificates) {}

Files TNVHandlerDownload::downloadList(const std::string& address) const {
  const CurlGlobal global;
  std::string reply;
  tnv::CurlTransfer transfer(address, verifyCertificates);
  transfer.post(kListRequest);
  transfer.takeBody([&](const char* bytes, std::size_t count) {
    reply.append(bytes, count);
    return reply.size() <= kLongestReply;
  });
  // A portal that cannot be reached looks like one that offers nothing.
  transfer.perform();
  Files files = tnv::filesOfReply(reply);
  std::erase_if(
      files, [](const TNVDownloadFile& file) { return refuseName("downloadList", file.fileName); });
  return files;
}

bool TNVHandlerDownload::downlaodFile(const TNVDownloadFile& file, const std::string& directory) {
  if (refuseName("downlaodFile", file.fileName)) return false;
  cancel = false;
  progress = 0.0;
  const std::string target = tnv::withoutLinks(pathIn(directory, file.fileName));
  const bool replaces = !isFree(target);
  const std::string path = replaces ? target + kPartEnding : target;
  // A directory, a pipe or a link that leads nowhere is nothing to write to.
  const bool hasPlace = (!replaces || isFile(target)) && (isFree(path) || isFileItself(path));
  if (!hasPlace) notify(&TNVHandlerDownloadObserver::onEventDownloadStarted);
  int code = hasPlace ? fetch(file.downloadAddress, path) : CURLE_WRITE_ERROR;
  if (code == CURLE_OK && replaces && !tnv::takePlace(path, target)) code = CURLE_WRITE_ERROR;
  if (code != CURLE_OK) {
    tnv::logLine("TNVDownloadManager::downlaodFile: Could not downlaod, reason: " +
                 std::to_string(code));
    return false;
  }
  progress = 1.0;
  notify(&TNVHandlerDownloadObserver::onEventDownloadFinished);
  return true;
}

int TNVHandlerDownload::fetch(const std::string& address, const std::string& path) {
  fileStream = std::ofstream(path, std::ios::binary | std::ios::trunc);
  const CloseAtEnd closeAtEnd(fileStream);
  tnv::CurlTransfer transfer(address, verifyCertificates);
  transfer.takeBody([this](const char* bytes, std::size_t count) {
    if (cancel) return false;
    fileStream.write(bytes, static_cast<std::streamsize>(count));
    return !fileStream.fail();
  });
  transfer.tellProgress([this](double total, double now) { tellProgress(total, now); });
  notify(&TNVHandlerDownloadObserver::onEventDownloadStarted);
  const int code = transfer.perform();
  fileStream.close();
  // A file without content is never written to, and what is left in the stream may find no room.
  return code == CURLE_OK && fileStream.fail() ? CURLE_WRITE_ERROR : code;
}

void TNVHandlerDownload::tellProgress(double total, double now) {
  if (!(total > 0)) return;
  notify(&TNVHandlerDownloadObserver::onEventDownloadUpdate);
  progress = now / total;
}

Files TNVHandlerDownload::getAllFiles(const std::string& address,
                                      const std::string& directory) const {
  const Files remotes = downloadList(address);
  logCount("dwnds", remotes);
  const Files locals = localFiles(directory);
  logCount("locals", locals);
  Files files = combined(remotes, locals);
  logCount("cmb", files);
  return files;
}

bool TNVHandlerDownload::importFile(const std::string& source, const std::string& directory) const {
  const std::string fileName = TNVFileInfo(source).fileName;
  if (refuseName("importFile", fileName)) return false;
  const std::string target = pathIn(directory, fileName);
  fs::copy(source, target);
  return TNVDirectory::exists(target);
}

bool TNVHandlerDownload::removeFile(const TNVDownloadFile& file,
                                    const std::string& directory) const {
  if (refuseName("removeFile", file.fileName)) return false;
  const std::string path = pathIn(directory, file.fileName);
  tnv::removeFile(path);
  return isFree(path);
}
