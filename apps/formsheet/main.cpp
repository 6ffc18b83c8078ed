// Draws one sheet with every form of mark in every state: formsheet FILE.

#include <cmath>
#include <filesystem>
#include <functional>
#include <iostream>
#include <string>
#include <vector>

#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "TNV_SampleBenchNative/TNV_SampleBenchNative.h"

namespace fs = std::filesystem;

namespace {

using Points = std::vector<std::vector<double>>;

const cv::Size cellSize(260, 170);
constexpr int headHeight = 34;
constexpr int nameWidth = 190;

struct Form {
  std::string name;
  // The last point is where the cursor is, for forms that lead a line to it.
  Points points;
};

Points ovalRim(double halfWidth, double halfHeight, int count) {
  Points points;
  for (int i = 0; i < count; ++i) {
    const double angle = 2 * CV_PI * i / count + 0.2;
    points.push_back({0.5 + halfWidth * std::cos(angle) / cellSize.width,
                      0.5 + halfHeight * std::sin(angle) / cellSize.height});
  }
  return points;
}

Points followedBy(Points points, std::vector<double> cursor) {
  points.push_back(std::move(cursor));
  return points;
}

std::vector<Form> allForms() {
  const Points path{{0.2, 0.7}, {0.35, 0.3}, {0.55, 0.65}, {0.75, 0.25}};
  const std::vector<double> cursor{0.85, 0.8};
  return {{"Rect", {{0.25, 0.25}, {0.7, 0.8}}},
          {"Rect Center", {{0.5, 0.5}, {0.7, 0.8}}},
          {"Point", {{0.5, 0.5}}},
          {"Image", {{0.5, 0.5}}},
          {"Circle", {{0.5, 0.5}, {0.65, 0.75}}},
          {"Circle Multiple", followedBy(ovalRim(55, 55, 7), cursor)},
          {"Line", {{0.25, 0.75}, {0.75, 0.3}}},
          {"PolyLine", followedBy(path, cursor)},
          {"PolyLine Closed", followedBy(path, cursor)},
          {"Ellipse", {{0.5, 0.5}, {0.75, 0.35}, {0.43, 0.25}}},
          {"Ellipse Multiple", followedBy(ovalRim(90, 45, 9), cursor)}};
}

cv::Mat ground() {
  cv::Mat picture(cellSize, CV_8UC3);
  for (int y = 0; y < picture.rows; ++y) {
    for (int x = 0; x < picture.cols; ++x) {
      const auto shade = static_cast<uchar>(60 + 30 * x / picture.cols + 20 * y / picture.rows);
      picture.at<cv::Vec3b>(y, x) = cv::Vec3b(shade, shade, static_cast<uchar>(shade * 3 / 4));
    }
  }
  return picture;
}

cv::Mat rendered(WTNVHandlerImageView& view) {
  unsigned char* data = nullptr;
  int width = 0;
  int height = 0;
  int channels = 0;
  view.wGetARImage(&data, &width, &height, &channels);
  return cv::Mat(height, width, CV_8UC(channels), data).clone();
}

struct State {
  std::string name;
  // Takes the mark into the state, and back out of it.
  std::function<void(WTNVHandlerMark&, WTNVHandlerImageView&, bool)> set;
};

std::vector<State> allStates() {
  return {{"normal", [](auto&, auto&, bool) {}},
          {"hovered", [](auto& marks, auto&, bool on) { marks.wSetAllMarksHovered(on, {}); }},
          {"selected", [](auto& marks, auto&, bool on) { marks.setAllMarksSelected(on, {}); }},
          {"filled", [](auto&, auto& view, bool on) { view.wSetDrawMarkFilled(on); }}};
}

void writeText(cv::Mat& sheet, const std::string& text, cv::Point bottomLeft) {
  cv::putText(sheet, text, bottomLeft, cv::FONT_HERSHEY_SIMPLEX, 0.6, cv::Scalar::all(30), 1,
              cv::LINE_AA);
}

cv::Rect cell(int row, int column) {
  return {{nameWidth + column * cellSize.width, headHeight + row * cellSize.height}, cellSize};
}

// One row of the sheet: the form while it is designed, and then as a mark in each state.
void drawForm(cv::Mat& sheet, int row, const Form& form, WTNVHandlerMark& marks,
              WTNVHandlerImageView& view) {
  writeText(sheet, form.name, {8, cell(row, 0).y + cellSize.height / 2});
  const auto states = allStates();
  int column = 0;
  if (!marks.designMark(form.points, form.name, {}))
    throw std::runtime_error("no mark of the form " + form.name);
  rendered(view).copyTo(sheet(cell(row, static_cast<int>(states.size()))));
  marks.addDesignedMark();
  for (const State& state : states) {
    state.set(marks, view, true);
    rendered(view).copyTo(sheet(cell(row, column++)));
    state.set(marks, view, false);
  }
  marks.removeMark(marks.getAllMarks().front());
}

cv::Mat drawSheet(WTNVProject& project) {
  WTNVMainProcess process(&project, nullptr);
  auto marks = process.getHndMark();
  auto view = process.getHndImageView();
  view.wSetDrawMarkFilled(false);
  view.setMarkDrawInfo("DNN Class Name");
  // The far corner keeps the cross out of the picture.
  view.wSetCrossPosition(1, 1);
  const auto forms = allForms();
  const auto columns = static_cast<int>(allStates().size()) + 1;
  cv::Mat sheet(cell(static_cast<int>(forms.size()), columns).tl().y, cell(0, columns).tl().x,
                CV_8UC3, cv::Scalar::all(245));
  for (int column = 0; column < columns; ++column) {
    const bool isState = column + 1 < columns;
    writeText(sheet, isState ? allStates()[static_cast<std::size_t>(column)].name : "designing",
              {cell(0, column).x + 8, headHeight - 12});
  }
  for (std::size_t row = 0; row < forms.size(); ++row)
    drawForm(sheet, static_cast<int>(row), forms[row], marks, view);
  return sheet;
}

cv::Mat sheetOfProject(const fs::path& directory) {
  const auto picture = (directory / "ground.png").string();
  cv::imwrite(picture, ground());
  WTNVProject project("sheet", (directory / "").string(), "", "");
  project.wCreate();
  project.wAddDNNClass("part", -1, -1);
  project.wAddImagesToImageSet({picture}, {true}, "set", false);
  return drawSheet(project);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: formsheet FILE\n";
    return 2;
  }
  const auto directory =
      fs::temp_directory_path() / ("formsheet-" + std::to_string(cv::getTickCount()));
  int exitCode = 0;
  try {
    fs::create_directories(directory);
    if (!cv::imwrite(argv[1], sheetOfProject(directory))) throw std::runtime_error("cannot write");
  } catch (const std::exception& error) {
    std::cerr << "formsheet: " << argv[1] << ": " << error.what() << '\n';
    exitCode = 1;
  }
  std::error_code ignored;
  fs::remove_all(directory, ignored);
  return exitCode;
}
