#include "verify/SetVerifier.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <unordered_map>
#include <unordered_set>

#include "CommandError.h"
#include "ProjectAccess.h"
#include "SampleSources.h"
#include "TNV_SampleBenchNative/WTNVToolLabelExchange.h"
#include "verify/DescriptionSyntax.h"
#include "verify/LabelPlaces.h"
#include "verify/PictureCheck.h"

namespace fs = std::filesystem;

namespace {

/// Pictures whose looks differ in no more than this many of 64 features are near twins.
constexpr int twinDistance = 3;

enum class List { train, test };

/// A picture of the set.
struct Sample {
  std::string path;
  List list = List::train;
  std::string label;  ///< empty if it has none
  std::optional<PictureMarks> marks;
};

std::string lowered(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
  return text;
}

bool isPicture(const fs::path& path) {
  static const std::set<std::string> endings{".jpg", ".jpeg", ".png", ".bmp"};
  return endings.contains(lowered(path.extension().string()));
}

bool isText(const fs::path& path) {
  return lowered(path.extension().string()) == ".txt";
}

bool isRegularFile(const fs::path& path) {
  std::error_code error;
  return fs::is_regular_file(path, error);
}

/// The regular files right in a directory, sorted.
std::vector<fs::path> filesIn(const fs::path& directory) {
  std::vector<fs::path> files;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(directory, error))
    if (entry.is_regular_file(error)) files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}

/// The directory and all below it, links not followed. What cannot be looked into is reported, and
/// the rest gone on with.
std::vector<fs::path> directoriesFrom(const fs::path& top, Findings& findings) {
  std::vector<fs::path> directories{top};
  for (std::size_t i = 0; i < directories.size(); ++i) {
    std::error_code error;
    const auto directory = directories[i];
    fs::directory_iterator entry(directory, error);
    for (; !error && entry != fs::directory_iterator(); entry.increment(error)) {
      std::error_code unknown;
      if (entry->is_directory(unknown) && !entry->is_symlink(unknown))
        directories.push_back(entry->path());
    }
    if (error)
      findings.push_back({directory.generic_string(), 0, "locked-directory",
                          "the directory cannot be looked into: " + error.message()});
  }
  return directories;
}

std::vector<std::string> picturesBelow(const fs::path& top, Findings& findings) {
  std::vector<std::string> pictures;
  for (const auto& directory : directoriesFrom(top, findings))
    for (const auto& file : filesIn(directory))
      if (isPicture(file)) pictures.push_back(file.generic_string());
  std::sort(pictures.begin(), pictures.end());
  return pictures;
}

std::string ifThere(const fs::path& path) {
  return isRegularFile(path) ? path.generic_string() : "";
}

/// The only file of that ending; empty if there is none, and with several as `several` says.
std::string onlyFile(const fs::path& directory, const std::string& ending, bool severalFail) {
  std::vector<std::string> found;
  for (const auto& file : filesIn(directory))
    if (file.extension() == ending) found.push_back(file.generic_string());
  if (found.size() > 1 && severalFail)
    throw CommandError("there are several sets in '" + directory.string() + "'; name one of " +
                       joined(found));
  return found.size() == 1 ? found.front() : "";
}

std::string valueOf(const DataFile& data, const std::string& key) {
  const auto value = data.values.find(key);
  return value == data.values.end() ? "" : value->second;
}

/// A list of one path, without one if it is empty.
std::vector<std::string> listOfOne(const std::string& path) {
  return path.empty() ? std::vector<std::string>() : std::vector<std::string>{path};
}

std::string namesFileIn(const fs::path& directory) {
  const auto names = onlyFile(directory, ".names", false);
  return names.empty() ? ifThere(directory / "classes.txt") : names;
}

/// All that lie there, if there are no lists to tell which.
std::vector<std::string> picturesOf(const fs::path& directory, Findings& findings) {
  const auto images = directory / "images";
  std::error_code error;
  return picturesBelow(fs::is_directory(images, error) ? images : directory, findings);
}

/// The format of labels that the file holds, by what stands not too far from its beginning; empty
/// if it is none of those that are only imported.
std::string otherFormatOf(const fs::path& file) {
  constexpr std::size_t farthest = 1U << 20U;
  const auto ending = lowered(file.extension().string());
  if (ending != ".json" && ending != ".xml") return "";
  std::string begin(farthest, '\0');
  std::ifstream stream(file, std::ios::binary);
  stream.read(begin.data(), std::ssize(begin));
  begin.resize(static_cast<std::size_t>(stream.gcount()));
  const auto holds = [&](const char* text) { return begin.find(text) != std::string::npos; };
  if (ending == ".xml") return holds("<annotation") ? "VOC" : "";
  return holds("\"images\"") || holds("\"annotations\"") ? "COCO" : "";
}

void requireNoOtherFormat(const fs::path& file, const std::string& named) {
  const auto format = otherFormatOf(file);
  if (!format.empty())
    throw CommandError("'" + named + "' holds labels of the format " + format +
                       "; verify and stats read sets for Darknet and its successors: take these "
                       "into a project with labels import, and write them with labels export "
                       "--format Darknet --copy");
}

/// Pictures without label texts beside labels of another format are no Darknet set with findings.
void requireNoOtherFormatIn(const fs::path& directory) {
  Findings ignored;
  LabelPlaces places(ignored, false);
  const auto pictures = picturesOf(directory, ignored);
  if (std::any_of(pictures.begin(), pictures.end(),
                  [&](const auto& picture) { return !places.labelOf(picture).empty(); }))
    return;
  for (const auto& place : {directory, directory / "annotations", directory / "Annotations"})
    for (const auto& file : filesIn(place))
      requireNoOtherFormat(file, directory.string());
}

void addFilesOfDirectory(const fs::path& directory, SetLayout& layout, Findings& findings) {
  layout.trainLists = listOfOne(ifThere(directory / "train.txt"));
  for (const auto* name : {"test.txt", "valid.txt", "val.txt"})
    if (layout.testLists.empty()) layout.testLists = listOfOne(ifThere(directory / name));
  layout.namesFile = namesFileIn(directory);
  if (!layout.trainLists.empty()) return;
  requireNoOtherFormatIn(directory);
  layout.pictures = picturesOf(directory, findings);
  if (layout.pictures.empty())
    throw CommandError("'" + directory.string() +
                       "' is no training set: it has no data file, no train.txt and no pictures");
}

void addFilesOfDataFile(const std::string& file, SetLayout& layout, Findings& findings) {
  layout.dataFile = file;
  layout.data = checkDataFile(file, findings);
  layout.namesFile = valueOf(layout.data, "names");
  layout.trainLists = listOfOne(valueOf(layout.data, "train"));
  layout.testLists = listOfOne(valueOf(layout.data, "valid"));
}

bool isDescription(const fs::path& file) {
  const auto extension = lowered(file.extension().string());
  return extension == ".yaml" || extension == ".yml";
}

std::string descriptionIn(const fs::path& directory) {
  const auto isOne = [](const fs::path& file) {
    return isDescription(file) && lowered(file.stem().string()) == "data";
  };
  const auto files = filesIn(directory);
  const auto found = std::find_if(files.begin(), files.end(), isOne);
  return found == files.end() ? "" : found->generic_string();
}

/// Takes the lists and the pictures in the directories that a description has under some keys.
class DescribedPlaces {
 public:
  DescribedPlaces(const std::string& descriptionFile, Findings& list)
      : file(descriptionFile), findings(list) {}

  void add(const char* key, std::vector<std::string>& lists, std::vector<std::string>& pictures) {
    for (const auto& place : WTNVToolLabelExchange::wReadDescription(file, key)) {
      const auto [first, isNew] = keys.emplace(place, key);
      std::error_code error;
      if (!isNew) {
        if (first->second == "train" && first->second != key)
          findings.push_back({file, 0, "same-picture",
                              std::string(key) + " is where train is, " + place +
                                  ": the test would tell nothing of new pictures"});
      } else if (fs::is_directory(place, error)) {
        const auto found = picturesBelow(place, findings);
        if (found.empty())
          findings.push_back({place, 0, "empty-list", "there are no pictures for " + quoted(key)});
        pictures.insert(pictures.end(), found.begin(), found.end());
      } else if (fs::is_regular_file(place, error)) {
        lists.push_back(place);
      } else {
        findings.push_back({file, 0, "missing-file",
                            "there is nothing at the place of " + quoted(key) + ", " + place});
      }
    }
  }

 private:
  static std::string quoted(const char* key) { return "'" + std::string(key) + "'"; }

  const std::string& file;
  Findings& findings;
  std::map<std::string, std::string> keys;  ///< by place
};

void addFilesOfDescription(const std::string& file, SetLayout& layout, Findings& findings) {
  const auto directory = fs::path(file).parent_path();
  layout.description = file;
  const auto text = readTextFile(file);
  checkByteOrderMark(text, findings);
  checkDescriptionSyntax(text, findings);
  DescribedPlaces places(file, findings);
  places.add("train", layout.trainLists, layout.pictures);
  places.add("val", layout.testLists, layout.testPictures);
  places.add("test", layout.testLists, layout.testPictures);
  for (const auto* key : {"train", "val"})
    if (WTNVToolLabelExchange::wReadDescription(file, key).empty())
      findings.push_back({file, 0, "data-key", "there is no " + std::string(key) + ": ..."});
  const bool hasPictures = !layout.trainLists.empty() || !layout.pictures.empty() ||
                           !layout.testLists.empty() || !layout.testPictures.empty();
  if (!hasPictures) layout.pictures = picturesOf(directory.empty() ? "." : directory, findings);
}

/// Checks a set step by step.
class Verifier {
 public:
  Verifier(const SetLayout& files, VerifiedSet& verified)
      : layout(files), result(verified), places(verified.findings, hasLists(files)) {}

  void run(const VerifyProgress& progress) {
    readRules();
    readLists();
    progress.start(samples.size());
    for (auto& sample : samples) {
      checkSample(sample);
      progress.step();
    }
    findStrays();
    findSameContent();
    findTwins();
    result.pictures = samples.size();
  }

 private:
  void report(const std::string& file, const char* rule, const std::string& text,
              std::size_t line = 0) {
    result.findings.push_back({file, line, rule, text});
  }

  /// As Darknet itself reads a set, which looks for labels beside pictures.
  static bool hasLists(const SetLayout& files) {
    return files.description.empty() && !files.lists().empty();
  }

  void readRules() {
    if (!layout.description.empty()) {
      rules.classCount = checkDescription(layout.description, result.findings);
    } else if (layout.namesFile.empty()) {
      if (layout.dataFile.empty())
        report(layout.trainLists.empty() ? layout.directory : layout.trainLists.front(),
               "missing-names", "there is no file of class names");
    } else {
      rules.classCount = checkNames(layout.namesFile, result.findings);
    }
    if (!layout.dataFile.empty() && rules.classCount)
      checkDeclaredClasses(layout.dataFile, layout.data, *rules.classCount, result.findings);
    if (!layout.network.empty())
      rules.networkInput = checkNetwork(layout.network, rules.classCount, result.findings);
  }

  void readLists() {
    addPictures(layout.pictures, List::train);
    for (const auto& list : layout.trainLists)
      readList(list, List::train);
    if (samples.empty() && !layout.trainLists.empty())
      report(layout.trainLists.front(), "empty-list", "there is no picture to train with");
    addPictures(layout.testPictures, List::test);
    for (const auto& list : layout.testLists)
      readList(list, List::test);
  }

  /// Those of directories, of which one may lie in another.
  void addPictures(const std::vector<std::string>& pictures, List list) {
    for (const auto& picture : pictures) {
      const auto path = absolutePath(picture);
      if (listed.emplace(path, layout.description).second) samples.push_back({path, list, "", {}});
    }
  }

  void readList(const std::string& file, List list) {
    for (const auto& entry : checkList(file, result.findings)) {
      const auto [first, isNew] = listed.emplace(entry.picture, file);
      if (isNew) {
        samples.push_back({entry.picture, list, "", {}});
      } else {
        report(file, "listed-twice",
               entry.picture + " stands in " +
                   (first->second == file ? "this list already" : first->second + ", too"),
               entry.line);
      }
    }
  }

  void checkSample(Sample& sample) {
    std::error_code error;
    if (!fs::exists(sample.path, error)) {
      report(sample.path, "missing-picture", "a listed picture is not there");
      return;
    }
    sample.marks = checkPicture(sample.path, result.findings);
    sample.label = places.labelOf(sample.path);
    if (sample.label.empty()) {
      report(sample.path, "missing-label",
             "there is no label text; make an empty one for a picture without objects");
      return;
    }
    result.labels += checkLabels(readTextFile(sample.label), rules, result.findings);
  }

  /// Where a set keeps its pictures and labels, whether listed or not.
  std::set<fs::path> foldersOfSet() {
    std::set<fs::path> folders;
    // Without lists all pictures that are there make up the set.
    if (layout.trainLists.empty()) return folders;
    for (const auto* name : {"samples", "images", "labels", "JPEGImages"}) {
      const fs::path folder = absolutePath((fs::path(layout.directory) / name).string());
      std::error_code error;
      if (!fs::is_directory(folder, error)) continue;
      for (const auto& directory : directoriesFrom(folder, result.findings))
        folders.insert(directory);
    }
    return folders;
  }

  /// Whether strays in the directory would be those of the set: a list may name pictures anywhere.
  bool belongsToSet(const fs::path& directory) const {
    return liesWithin(directory, layout.directory);
  }

  /// Looks at all files in the directories of the samples and of their labels.
  void findStrays() {
    auto directories = foldersOfSet();
    std::unordered_set<std::string> known;
    auto files = layout.lists();
    files.insert(files.end(), {layout.namesFile, layout.sources});
    for (const auto& file : files)
      if (!file.empty()) known.insert(absolutePath(file));
    for (const auto& sample : samples) {
      known.insert(sample.path);
      // What a bad line of a list leads to would make everything around it strays.
      if (!isRegularFile(sample.path)) continue;
      directories.insert(fs::path(sample.path).parent_path());
      if (sample.label.empty()) continue;
      known.insert(sample.label);
      directories.insert(fs::path(sample.label).parent_path());
    }
    for (const auto& directory : directories)
      findStraysIn(directory, known);
  }

  /// A directory that lists lie in, or where the user works, holds texts of other kinds, too.
  bool isShared(const fs::path& directory) const {
    std::error_code error;
    return fs::equivalent(directory, fs::current_path(error), error) ||
           fs::equivalent(directory, layout.directory, error);
  }

  static bool readsAsLabels(const fs::path& file) {
    const auto lines = readTextFile(file.string()).lines;
    return std::all_of(lines.begin(), lines.end(), [](const std::string& line) {
      return trimmed(line).empty() || parseLabelLine(line);
    });
  }

  void findStraysIn(const fs::path& directory, const std::unordered_set<std::string>& known) {
    std::map<std::string, std::string> byStem;
    const bool holdsOtherTexts = isShared(directory);
    const bool isOfSet = belongsToSet(directory);
    for (const auto& file : filesIn(directory)) {
      const auto path = file.generic_string();
      if (isPicture(file)) {
        const auto [first, isNew] = byStem.emplace(file.stem().string(), path);
        if (!isNew) report(path, "same-stem", "shares its label text with " + first->second);
        if (isOfSet && !known.contains(path))
          report(path, "stray-picture", "the picture is in no list");
      } else if (isOfSet && isText(file) && !known.contains(path) &&
                 (!holdsOtherTexts || readsAsLabels(file))) {
        report(path, "stray-text", "the text belongs to no picture of the set");
      }
    }
  }

  void findSameContent() {
    std::unordered_map<std::uint64_t, std::vector<const Sample*>> byContent;
    for (const auto& sample : samples)
      if (sample.marks) byContent[sample.marks->content].push_back(&sample);
    for (const auto& sample : samples) {
      if (sample.list != List::test || !sample.marks) continue;
      for (const auto* other : byContent[sample.marks->content]) {
        if (other->list != List::train || other->marks->bytes != sample.marks->bytes ||
            !haveSameContent(other->path, sample.path))
          continue;
        report(sample.path, "same-picture",
               "the same picture is in the training list: " + other->path);
        same.insert(sample.path);
        break;
      }
    }
  }

  void findTwins() {
    const auto sources = readSampleSources(layout.sources);
    if (sources.empty()) {
      findTwinsByLook();
    } else {
      findTwinsBySource(sources);
    }
  }

  void findTwinsBySource(const std::vector<std::pair<std::string, std::string>>& sources) {
    const std::map<std::string, std::string> sourceOf(sources.begin(), sources.end());
    const auto source = [&](const Sample& sample) {
      const auto found = sourceOf.find(fs::path(sample.path).filename().string());
      return found == sourceOf.end() ? std::string() : found->second;
    };
    std::unordered_map<std::string, std::string> training;
    for (const auto& sample : samples)
      if (sample.list == List::train) training.emplace(source(sample), sample.path);
    for (const auto& sample : samples) {
      if (sample.list != List::test || source(sample).empty()) continue;
      const auto twin = training.find(source(sample));
      if (twin != training.end()) reportTwin(sample, twin->second, "made of one picture");
    }
  }

  /// Of 64 features in four parts, three that differ leave one part whole: only looks that share a
  /// part have to be compared.
  void findTwinsByLook() {
    std::unordered_map<std::uint64_t, std::vector<const Sample*>> byPart;
    const auto parts = [](std::uint64_t look) {
      std::vector<std::uint64_t> keys;
      for (unsigned part = 0; part < 4; ++part)
        keys.push_back((look >> (16 * part) & 0xffffU) | std::uint64_t{part} << 16U);
      return keys;
    };
    for (const auto& sample : samples)
      if (sample.list == List::train && sample.marks && sample.marks->look)
        for (const auto key : parts(*sample.marks->look))
          byPart[key].push_back(&sample);
    for (const auto& sample : samples) {
      if (sample.list != List::test || !sample.marks || !sample.marks->look) continue;
      if (const auto* twin = twinOf(sample, parts(*sample.marks->look), byPart))
        reportTwin(sample, twin->path, "all but the same");
    }
  }

  static const Sample* twinOf(
      const Sample& sample, const std::vector<std::uint64_t>& keys,
      const std::unordered_map<std::uint64_t, std::vector<const Sample*>>& byPart) {
    for (const auto key : keys) {
      const auto candidates = byPart.find(key);
      if (candidates == byPart.end()) continue;
      for (const auto* candidate : candidates->second)
        if (lookDistance(*candidate->marks->look, *sample.marks->look) <= twinDistance)
          return candidate;
    }
    return nullptr;
  }

  void reportTwin(const Sample& sample, const std::string& twin, const std::string& how) {
    if (same.contains(sample.path)) return;
    report(sample.path, "near-twin",
           how + " as a picture of the training list, " + twin +
               ": the test would be too easy (see generate --keep-together)");
  }

  const SetLayout& layout;
  VerifiedSet& result;
  LabelPlaces places;
  LabelRules rules;
  std::vector<Sample> samples;
  std::unordered_map<std::string, std::string> listed;  ///< picture and its list
  std::unordered_set<std::string> same;
};

}  // namespace

std::vector<std::string> SetLayout::lists() const {
  auto lists = trainLists;
  lists.insert(lists.end(), testLists.begin(), testLists.end());
  return lists;
}

namespace {

/// Whether a file of any name reads as a data file.
bool hasDataKeys(const std::string& path) {
  Findings ignored;
  const auto values = checkDataFile(path, ignored).values;
  return std::any_of(values.begin(), values.end(), [](const auto& entry) {
    static const std::set<std::string> keys{"train", "valid", "names", "classes", "backup"};
    return keys.contains(entry.first);
  });
}

void requireSetFile(const std::string& path) {
  const auto takes = "give the directory of the set, its data file or its data.yaml";
  if (path.ends_with(".cfg"))
    throw CommandError("'" + path + "' is a network file; " + takes +
                       ", and the network with --net");
  requireNoOtherFormat(path, path);
  if (!path.ends_with(".data") && !isDescription(path) && !hasDataKeys(path))
    throw CommandError("'" + path + "' describes no training set; " + takes);
}

}  // namespace

SetLayout findSet(const std::string& path, const std::string& network, Findings& findings) {
  std::error_code error;
  const bool isDirectory = fs::is_directory(path, error);
  if (!isDirectory && !fs::is_regular_file(path, error))
    throw CommandError("there is no training set at '" + path +
                       "'; give its directory, its data file or its data.yaml");
  if (!isDirectory) requireSetFile(path);
  const fs::path directory = isDirectory ? fs::path(path) : fs::path(path).parent_path();
  SetLayout layout;
  layout.directory = directory.empty() ? "." : directory.generic_string();
  const auto dataFile = isDirectory ? onlyFile(directory, ".data", true) : path;
  const auto description = dataFile.empty() ? descriptionIn(directory) : dataFile;
  if (isDescription(description)) {
    addFilesOfDescription(description, layout, findings);
  } else if (dataFile.empty()) {
    addFilesOfDirectory(directory, layout, findings);
  } else {
    addFilesOfDataFile(dataFile, layout, findings);
  }
  layout.network = network.empty() ? onlyFile(directory, ".cfg", false) : network;
  layout.sources = ifThere(directory / "sources.txt");
  return layout;
}

VerifiedSet verifySet(const SetLayout& layout, Findings found, const VerifyProgress& progress) {
  VerifiedSet result;
  result.findings = std::move(found);
  Verifier(layout, result).run(progress);
  return result;
}
