#pragma once

#include <string>
#include <vector>

#include "TNV_SampleBenchNative/Export.h"

class TNVDNNClass;

/// Handle on a DNN class: a label that a mark carries and a network is to learn. The project owns
/// the class; the handle owns nothing and dangles once the class was removed, which nothing
/// detects. Methods other than `isValid` and `getNativeDNNClass` need a handle that is not null.
/// For use on the front end's thread.
class TNV_SAMPLEBENCH_API WTNVDNNClass {
 public:
  /// A null handle.
  WTNVDNNClass();
  explicit WTNVDNNClass(TNVDNNClass* dnnClass);
  WTNVDNNClass(const WTNVDNNClass& other);
  WTNVDNNClass& operator=(const WTNVDNNClass& other);
  ~WTNVDNNClass();

  /// The class itself, borrowed; null for a null handle.
  TNVDNNClass* getNativeDNNClass() const;

  /// Whether the handle is not null.
  bool isValid() const;

  /// Whether both handles stand for the same class of the project. Neither may be null.
  bool equal(WTNVDNNClass other) const;

  std::string wGetName() const;

  /// The number that the class has in the labels of a training set.
  int wGetDNNId() const;

  /// Path of the sample picture with forward slashes; may be empty.
  std::string wGetSamplePath() const;
  std::string wGetComment() const;

  /// The drawing colour, each channel 0 to 255. Writes nothing if a pointer is null.
  void wGetColor(int* red, int* green, int* blue) const;

  /// Reads the sample picture anew and hands it out: 8-bit pixels in the order blue, green, red,
  /// rows of `width * channels` bytes. The pixels belong to the class and stay valid until the next
  /// call on the same class. Without a sample path, or when the file is no picture: null and zeros.
  void wGetSampleImage(unsigned char** data, int* width, int* height, int* channels) const;

  /// The first class of the list with that unique index (`WTNVMark::wGetClassIdx`); a null handle
  /// if there is none.
  static WTNVDNNClass wGetDNNClassByIdx(const std::vector<WTNVDNNClass>& classes, int uniqueIdx);

 private:
  TNVDNNClass* native;
};
