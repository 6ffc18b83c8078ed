#pragma once

#include <string>
#include <vector>

/// Which picture each sample of a training set was made of. The library numbers samples in the
/// order of their pictures, and this counts along while a set is written.
class SampleSources {
 public:
  explicit SampleSources(std::string samplesDirectory);

  /// To be called after each picture: the samples that have come since are made of it.
  void add(const std::string& picture);

  /// The picture of each sample, by its number.
  const std::vector<std::string>& pictures() const { return sources; }

  /// The same by the path of the sample as it stands in a list; throws CommandError for a path that
  /// is none of this set.
  const std::string& pictureOf(const std::string& sample) const;

  /// A line for each sample: its file name, a tab, its picture.
  void write(const std::string& file) const;

 private:
  std::string directory;
  std::vector<std::string> sources;
};

/// What `SampleSources::write` wrote, as pairs of file name and picture; empty without such a file.
std::vector<std::pair<std::string, std::string>> readSampleSources(const std::string& file);
