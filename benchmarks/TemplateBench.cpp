// Filling a template that ships.

#include <filesystem>
#include <fstream>
#include <memory>

#include "Compare.h"
#include "generation/TNVKeyWordAndValue.h"
#include "support/TempDirectory.h"

namespace fs = std::filesystem;

namespace {

const std::string kFence = "###";

void fillTemplate(const std::string& source, const std::string& target) {
  TNVKeyWordAndValue words;
  words.sourceFile = source;
  words.targetFile = target;
  words.getAvailableKeys();
  for (const std::string& key : words.keys)
    words.setValueForKey(key, "7");
  words.replace();
}

void fillByHand(const std::string& source, const std::string& target) {
  std::string text = readFile(source);
  for (auto at = text.find(kFence); at != text.npos; at = text.find(kFence, at)) {
    const auto end = text.find(kFence, at + kFence.size());
    text.replace(at, end + kFence.size() - at, 1, '7');
  }
  std::ofstream(target + ".new", std::ios::binary) << text;
  fs::rename(target + ".new", target);
}

Pair makeFilling(const std::string& name) {
  const auto temp = std::make_shared<TempDirectory>();
  const std::string source = TNV_SOURCE_DIR "platforms/darknet/nets/" + name;
  const auto product = [=] { fillTemplate(source, *temp / "product"); };
  const auto bare = [=] { fillByHand(source, *temp / "bare"); };
  product();
  bare();
  requireSame(readFile(*temp / "product") == readFile(*temp / "bare"), name);
  return {{product}, {bare}};
}

}  // namespace

void addTemplates(const Plan& plan) {
  addComparison(plan, {"fill a template of 3 kB"}, [] { return makeFilling("yolov4-tiny.tmp"); });
}
