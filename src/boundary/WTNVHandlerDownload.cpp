#include "TNV_SampleBenchNative/WTNVHandlerDownload.h"

#include "downloads/TNVHandlerDownload.h"

namespace {

/// An empty object has an empty name, which every operation refuses.
TNVDownloadFile recordOf(const WTNVDownloadFile& file) {
  const TNVDownloadFile* record = file.wGetNativeDownloadFile();
  return record == nullptr ? TNVDownloadFile() : *record;
}

}  // namespace

WTNVHandlerDownload::WTNVHandlerDownload(TNVHandlerDownload* handler) : native(handler) {
  native->addObserver(this);
}

WTNVHandlerDownload::WTNVHandlerDownload(const WTNVHandlerDownload& other)
    : TNVHandlerDownloadObserver(other), native(other.native) {
  native->addObserver(this);
}

WTNVHandlerDownload& WTNVHandlerDownload::operator=(const WTNVHandlerDownload& other) = default;

WTNVHandlerDownload::~WTNVHandlerDownload() {
  native->removeObserver(this);
}

std::vector<WTNVDownloadFile> WTNVHandlerDownload::wGetAllFiles(const std::string& portalAddress,
                                                                const std::string& directory) {
  std::vector<WTNVDownloadFile> files;
  for (const TNVDownloadFile& file : native->getAllFiles(portalAddress, directory))
    files.emplace_back(file);
  return files;
}

bool WTNVHandlerDownload::wDownloadFile(WTNVDownloadFile file, const std::string& directory) {
  return native->downlaodFile(recordOf(file), directory);
}

bool WTNVHandlerDownload::wImportFile(const std::string& sourcePath, const std::string& directory) {
  return native->importFile(sourcePath, directory);
}

bool WTNVHandlerDownload::wRemoveFile(WTNVDownloadFile file, const std::string& directory) {
  return native->removeFile(recordOf(file), directory);
}

bool WTNVHandlerDownload::wStopDownload() {
  return false;
}

void WTNVHandlerDownload::setCBDownloadStarted(void (*callback)()) {
  downloadStarted.set(callback);
}

void WTNVHandlerDownload::setCBDownloadUpdate(void (*callback)()) {
  downloadUpdate.set(callback);
}

void WTNVHandlerDownload::setCBDownloadFinished(void (*callback)()) {
  downloadFinished.set(callback);
}

void WTNVHandlerDownload::onEventDownloadStarted() {
  downloadStarted.call();
}

void WTNVHandlerDownload::onEventDownloadUpdate() {
  downloadUpdate.call();
}

void WTNVHandlerDownload::onEventDownloadFinished() {
  downloadFinished.call();
}
