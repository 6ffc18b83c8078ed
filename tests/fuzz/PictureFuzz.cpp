#include "foundation/PictureFile.h"
#include "foundation/PictureHead.h"
#include "fuzz/Fuzzing.h"

/// Any file that a user calls a picture.
void fuzz::run(std::string_view input) {
  const auto picture = tnv::readPicture(place().write("picture.jpg", std::string(input)));
  require(picture.empty() || picture.type() == CV_8UC3, "a picture has three channels of a byte");
}
