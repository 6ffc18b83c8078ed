#include "TNV_SampleBenchNative/WTNVDownloadFile.h"

#include <utility>

#include "downloads/TNVDownloadFile.h"

namespace {

TNVDownloadFile* copyOf(const TNVDownloadFile* file) {
  return file == nullptr ? nullptr : new TNVDownloadFile(*file);
}

}  // namespace

WTNVDownloadFile::WTNVDownloadFile() : native(nullptr) {}

WTNVDownloadFile::WTNVDownloadFile(const TNVDownloadFile& file) : native(copyOf(&file)) {}

WTNVDownloadFile::WTNVDownloadFile(const WTNVDownloadFile& other) : native(copyOf(other.native)) {}

WTNVDownloadFile& WTNVDownloadFile::operator=(const WTNVDownloadFile& other) {
  WTNVDownloadFile copy(other);
  std::swap(native, copy.native);
  return *this;
}

WTNVDownloadFile::~WTNVDownloadFile() {
  delete native;
}

const TNVDownloadFile& WTNVDownloadFile::record() const {
  static const TNVDownloadFile none;
  return native == nullptr ? none : *native;
}

std::string WTNVDownloadFile::wGetTimeStamp() const {
  return record().timeStamp;
}

std::string WTNVDownloadFile::wGetFileName() const {
  return record().fileName;
}

std::string WTNVDownloadFile::wGetDownloadAddress() const {
  return record().downloadAddress;
}

std::string WTNVDownloadFile::wGetMD5Hash() const {
  return record().md5Hash;
}

int WTNVDownloadFile::wGetFileSize() const {
  return record().fileSize;
}

bool WTNVDownloadFile::wGetStateMD5Valid() const {
  return record().stateMD5Valid;
}

bool WTNVDownloadFile::wGetStateFileSizeValid() const {
  return record().stateFileSizeValid;
}

bool WTNVDownloadFile::wGetStateDownloadable() const {
  return record().stateDownloadable;
}

bool WTNVDownloadFile::wGetStateDownloaded() const {
  return record().stateDownloaded;
}

TNVDownloadFile* WTNVDownloadFile::wGetNativeDownloadFile() const {
  return native;
}
