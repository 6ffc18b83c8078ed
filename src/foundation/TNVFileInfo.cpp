#include "foundation/TNVFileInfo.h"

#include "foundation/Files.h"

TNVFileInfo::TNVFileInfo(const std::string& path) : fullPath(tnv::withForwardSlashes(path)) {
  const auto slash = fullPath.rfind('/');
  fileName = slash == std::string::npos ? fullPath : fullPath.substr(slash + 1);
  directory = fullPath.substr(0, slash) + "/";
  baseName = fileName.substr(0, fileName.find('.'));
  const auto dot = fileName.rfind('.');
  if (dot != std::string::npos && dot != 0) extension = fileName.substr(dot + 1);
}
