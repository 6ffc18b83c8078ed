#include "PictureFile.h"

#include <opencv2/imgcodecs.hpp>

#include "CommandError.h"

cv::Mat pictureFrom(const PictureCall& call) {
  unsigned char* data = nullptr;
  int width = 0;
  int height = 0;
  int channels = 0;
  call(&data, &width, &height, &channels);
  if (data == nullptr) throw CommandError("the picture cannot be rendered");
  return {height, width, CV_8UC(channels), data};
}

void requireNoPicture(const std::string& file, const std::vector<PictureRecord>& pictures) {
  for (const auto& picture : pictures) {
    std::error_code error;
    if (std::filesystem::equivalent(file, picture.path, error))
      throw CommandError("'" + file + "' is a picture of the project; choose another file");
  }
}

void requireWritable(const std::string& file, const std::vector<PictureRecord>& pictures) {
  if (!cv::haveImageWriter(file))
    throw CommandError("'" + file + "' is of no format that can be written; use .png or .jpg");
  requireNoPicture(file, pictures);
}

void writePicture(const std::string& file, const cv::Mat& picture) {
  if (!cv::imwrite(file, picture))
    throw CommandError("'" + file + "' cannot be written; see that its directory exists");
}
