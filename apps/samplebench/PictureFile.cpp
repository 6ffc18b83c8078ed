#include "PictureFile.h"

#include <algorithm>

#include <opencv2/imgcodecs.hpp>

#include "CommandError.h"
#include "OutputFile.h"
#include "TNV_SampleBenchNative/WTNVToolLabelExchange.h"

namespace fs = std::filesystem;

namespace {

void requireFormat(const std::string& file) {
  if (!cv::haveImageWriter(file))
    throw CommandError("'" + file + "' is of no format that can be written; use .png or .jpg",
                       exitUsage);
}

std::vector<unsigned char> encoded(const std::string& file, const cv::Mat& picture) {
  std::vector<unsigned char> bytes;
  if (!cv::imencode(fs::path(file).extension().string(), picture, bytes))
    throw CommandError("'" + file + "' cannot be written; choose another format, .png or .jpg");
  return bytes;
}

}  // namespace

cv::Mat pictureFrom(const PictureCall& call) {
  unsigned char* data = nullptr;
  int width = 0;
  int height = 0;
  int channels = 0;
  call(&data, &width, &height, &channels);
  if (data == nullptr) throw CommandError("the picture cannot be rendered");
  return {height, width, CV_8UC(channels), data};
}

bool isFile(const std::string& path) {
  std::error_code error;
  return fs::is_regular_file(path, error);
}

bool looksLikePicture(const std::string& file) {
  return isFile(file) && cv::haveImageReader(file);
}

void requireReadable(const WTNVProject& project, const std::vector<PictureRecord>& pictures,
                     const std::string& owner) {
  const auto name = project.wGetProjectName();
  if (pictures.empty())
    throw CommandError("the project has no pictures; add some with: samplebench import " + name +
                       " SET DIRECTORY");
  const auto isReadable = [](const auto& picture) { return looksLikePicture(picture.path); };
  if (std::none_of(pictures.begin(), pictures.end(), isReadable))
    throw CommandError("none of the pictures of " + owner + " (" + std::to_string(pictures.size()) +
                       ") can be read; samplebench check " + name +
                       " says why, and samplebench relink tells the project where they are if they "
                       "were moved");
}

cv::Size pictureSize(const std::string& file) {
  cv::Size size;
  WTNVToolLabelExchange::wGetPictureSize(file, size.width, size.height);
  return size;
}

void sayLeftOut(std::size_t pictures, Output& output) {
  output.fact("leftOut", static_cast<Json::UInt64>(pictures));
  if (pictures == 0) return;
  output.say(counted(pictures, "picture") + " left out as unreadable");
  output.setFindings();
}

void requireWritablePicture(const std::string& file) {
  // First: a directory has no format to speak of.
  requireReplaceableFile(file);
  requireFormat(file);
  requireWritable(file);
}

void requireWritablePicture(const std::string& file, const WTNVProject& project,
                            const std::vector<PictureRecord>& pictures) {
  requireReplaceableFile(file);
  requireFormat(file);
  requireWritable(file, project, pictures);
}

void writePicture(const std::string& file, const cv::Mat& picture) {
  const auto bytes = encoded(file, picture);
  writeWhole(file, [&](std::ostream& stream) {
    stream.write(reinterpret_cast<const char*>(bytes.data()),
                 static_cast<std::streamsize>(bytes.size()));
  });
}

void writeResult(const std::string& file, const cv::Mat& picture, const std::string& details,
                 Output& output) {
  if (!output.isDryRun()) writePicture(file, picture);
  output.fact("file", file);
  output.fact("width", picture.cols);
  output.fact("height", picture.rows);
  sayWritten(file,
             " (" + std::to_string(picture.cols) + "x" + std::to_string(picture.rows) + " pixels" +
                 details + ")",
             output);
}
