#include "downloads/PortalReply.h"

#include <algorithm>
#include <memory>
#include <stdexcept>

#include <json/json.h>

#include "foundation/JsonText.h"

namespace tnv {

namespace {

Json::Value parsed(const std::string& reply) {
  Json::Value root;
  const std::unique_ptr<Json::CharReader> reader(Json::CharReaderBuilder().newCharReader());
  try {
    parseJson(*reader, reply, root, nullptr);
  } catch (const Json::RuntimeError&) {
    // Nested deeper than any list of files is.
    return {};
  }
  return root;
}

/// The words are those that front ends know.
int toInt(const std::string& text) {
  try {
    return std::stoi(text);
  } catch (const std::invalid_argument&) {
    throw std::invalid_argument("invalid stoi argument");
  } catch (const std::out_of_range&) {
    throw std::out_of_range("stoi argument out of range");
  }
}

TNVDownloadFile fileOf(const Json::Value& member) {
  TNVDownloadFile file;
  file.fileName = member["name"].asString();
  file.md5Hash = member["hash"].asString();
  const std::string size = member["file_size"].asString();
  file.timeStamp = member["creation_date"].asString();
  file.downloadAddress = member["download_link"].asString();
  file.fileSize = toInt(size);
  return file;
}

}  // namespace

std::vector<TNVDownloadFile> filesOfReply(const std::string& reply) {
  const Json::Value root = parsed(reply);
  std::vector<TNVDownloadFile> files;
  for (Json::ArrayIndex i = root.size(); i-- > 0;)
    files.push_back(fileOf(root[std::to_string(i)]));
  return files;
}

std::string printable(std::string_view text) {
  std::string line(text);
  const auto leavesLine = [](unsigned char character) {
    return character < 0x20 || character == 0x7f;
  };
  std::replace_if(line.begin(), line.end(), leavesLine, '?');
  return line;
}

}  // namespace tnv
