// Importing label texts as marks, one text and one picture for each record.

#include <charconv>
#include <filesystem>
#include <fstream>
#include <memory>

#include "Compare.h"
#include "foundation/Files.h"
#include "marks/TNVMarkRect.h"
#include "project/TNVDNNClass.h"
#include "project/TNVTrainSet.h"
#include "support/TempDirectory.h"
#include "tools/TNVToolLabelExchange.h"

namespace fs = std::filesystem;

namespace {

constexpr int kLabels = 10;

/// A directory of pictures, which nobody looks into, with texts of distinct boxes beside them.
class LabelTexts {
 public:
  explicit LabelTexts(int count) {
    temp.write("classes.txt", "screw\nnut\n");
    for (int i = 0; i < count; ++i) {
      const std::string name = "picture_" + std::to_string(i);
      std::ofstream(temp / (name + ".jpg"));
      std::ofstream text(temp / (name + ".txt"));
      for (int k = 0; k < kLabels; ++k)
        text << k % 2 << " 0." << 2345 + 500 * k << "12 0.512345 0.123456 0." << 100000 + i << '\n';
      images.push_back(temp / (name + ".jpg"));
    }
  }

  TempDirectory temp;
  std::vector<std::string> images;
};

/// Records without marks.
class Records {
 public:
  void renew(const std::vector<std::string>& images) {
    pointers.clear();
    trainSets.clear();
    for (const std::string& image : images) {
      trainSets.push_back(std::make_unique<TNVTrainSet>(image, ""));
      pointers.push_back(trainSets.back().get());
    }
  }

  std::vector<TNVTrainSet*> pointers;

 private:
  std::vector<std::unique_ptr<TNVTrainSet>> trainSets;
};

struct BareLabel {
  int number;
  double cx, cy, width, height;
};

/// Takes a number and the blank or line feed behind it.
template <class Number>
const char* take(const char* place, const char* end, Number& number) {
  const auto result = std::from_chars(place, end, number);
  return result.ptr == end ? end : result.ptr + 1;
}

std::vector<BareLabel> bareLabels(const std::string& text) {
  std::vector<BareLabel> labels;
  const char* const end = text.data() + text.size();
  for (const char* place = text.data(); place != end;) {
    BareLabel label{};
    place = take(place, end, label.number);
    for (double* number : {&label.cx, &label.cy, &label.width, &label.height})
      place = take(place, end, *number);
    labels.push_back(label);
  }
  return labels;
}

std::size_t readBare(const std::string& directory) {
  std::vector<std::vector<BareLabel>> all;
  std::size_t count = 0;
  for (const auto& entry : fs::directory_iterator(directory)) {
    if (entry.path().extension() != ".txt" || entry.path().filename() == "classes.txt") continue;
    std::ifstream file(entry.path(), std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    all.push_back(bareLabels(text));
    count += all.back().size();
  }
  return count;
}

Pair makeImport(int count) {
  const auto texts = std::make_shared<LabelTexts>(count);
  const auto records = std::make_shared<Records>();
  const auto screw = std::make_shared<TNVDNNClass>(0);
  const auto nut = std::make_shared<TNVDNNClass>(1);
  screw->name = "screw";
  nut->name = "nut";
  const int total = count * kLabels;
  const auto import = [=] {
    TNVToolLabelExchange exchange;
    requireSame(exchange.read(texts->temp.path()), "read");
    requireSame(exchange.addMarks(records->pointers, {screw.get(), nut.get()}) == total, "marks");
  };
  const auto bare = [=] {
    requireSame(readBare(texts->temp.path()) == static_cast<std::size_t>(total), "bare count");
  };
  return {{import, [=] { records->renew(texts->images); }}, {bare}};
}

}  // namespace

void addLabels(const Plan& plan) {
  for (const int count : plan.sizes({1000, 10'000, 100'000}))
    addComparison(plan, {"import labels", count}, [=] { return makeImport(count); });
}
