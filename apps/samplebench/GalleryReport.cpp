#include "GalleryReport.h"

#include <algorithm>
#include <cmath>

#include "GalleryStatistics.h"
#include "HtmlPage.h"
#include "Numbers.h"
#include "Output.h"

namespace {

// Marks further off than this many deviations are told apart from the rest; a usual threshold for
// distances in units of the median absolute deviation.
constexpr double unusualScore = 5;

// A longer list of links starts folded up.
constexpr std::size_t mostOpenLinks = 24;

// Small cuts are shown enlarged, up to this factor and this longer side, in pixels of the page.
constexpr double largestEnlargement = 5;
constexpr double tileSide = 96;

constexpr auto style = R"(
.cuts { display: grid; grid-template-columns: repeat(auto-fill, minmax(8.5rem, 1fr)); gap: .6rem; }
.mark { content-visibility: auto; contain-intrinsic-size: auto 8.5rem auto 10.4rem; height: 10.4rem;
  margin: 0; padding: .5rem; border: 1px solid transparent; border-radius: 6px;
  background: var(--tile); text-align: center; }
.mark:target { border-color: var(--accent); box-shadow: 0 0 0 2px var(--accent); }
.cut { display: flex; align-items: center; justify-content: center; height: 96px; }
.cut span { color: var(--soft); font-size: .8rem; }
.mark figcaption { margin-top: .35rem; font-size: .74rem; line-height: 1.3; }
.name { display: -webkit-box; -webkit-box-orient: vertical; -webkit-line-clamp: 2;
  overflow: hidden; overflow-wrap: anywhere; }
.size { color: var(--soft); white-space: nowrap; font-variant-numeric: tabular-nums; }
.unusual .size { color: var(--warn); }
)";

struct Place {
  std::size_t dnnClass;
  std::size_t mark;
};

// What is known about the marks of one class.
struct ClassFindings {
  std::vector<double> scores;
  std::vector<std::size_t> tiny;
  std::vector<std::size_t> outside;
  std::vector<Repeat> repeats;
};

std::vector<cv::Rect2d> boxesOf(const GalleryClass& dnnClass) {
  std::vector<cv::Rect2d> boxes;
  for (const auto& mark : dnnClass.marks)
    boxes.push_back(mark.box);
  return boxes;
}

std::vector<PlacedBox> placedBoxes(const GalleryClass& dnnClass) {
  std::vector<PlacedBox> boxes;
  for (const auto& mark : dnnClass.marks)
    boxes.push_back({mark.box, mark.pictureSize});
  return boxes;
}

std::vector<Repeat> repeatsOf(const GalleryClass& dnnClass, const std::vector<cv::Rect2d>& boxes) {
  std::vector<Repeat> repeats;
  const auto& marks = dnnClass.marks;
  for (std::size_t begin = 0; begin < marks.size();) {
    auto end = begin;
    while (end < marks.size() && marks[end].picture == marks[begin].picture)
      ++end;
    for (const auto& [place, earlier] : findRepeats(std::span(boxes).subspan(begin, end - begin)))
      repeats.push_back({begin + place, begin + earlier});
    begin = end;
  }
  return repeats;
}

ClassFindings findingsOf(const GalleryClass& dnnClass) {
  const auto boxes = boxesOf(dnnClass);
  ClassFindings findings{outlierScores(boxes), {}, {}, repeatsOf(dnnClass, boxes)};
  for (std::size_t i = 0; i < boxes.size(); ++i) {
    if (isTiny(boxes[i])) findings.tiny.push_back(i);
    if (isOutside(boxes[i], dnnClass.marks[i].pictureSize)) findings.outside.push_back(i);
  }
  return findings;
}

std::string idOf(Place place) {
  return "c" + std::to_string(place.dnnClass) + "m" + std::to_string(place.mark);
}

std::string sizeText(const cv::Rect2d& box) {
  // Beyond this a size says no more than that it is absurd.
  constexpr double mostPixels = 1e9;
  if (!(std::abs(box.width) < mostPixels && std::abs(box.height) < mostPixels)) return "no size";
  return std::to_string(std::lround(box.width)) + " × " + std::to_string(std::lround(box.height));
}

std::string numberSign(const GalleryMark& mark) {
  return "#" + std::to_string(mark.number);
}

std::size_t cutCount(const GalleryClass& dnnClass) {
  return static_cast<std::size_t>(std::count_if(dnnClass.marks.begin(), dnnClass.marks.end(),
                                                [](const auto& mark) { return mark.cut >= 0; }));
}

// Writes the parts of the page one after the other.
class PageWriter {
 public:
  PageWriter(std::ostream& target, const Gallery& content, const ThumbnailSource& source)
      : page(target), gallery(content), thumbnails(source) {
    for (const auto& dnnClass : gallery.classes)
      findings.push_back(findingsOf(dnnClass));
  }

  void write() {
    writeHead();
    writeTotals();
    writeCallouts();
    writeContents();
    for (std::size_t place = 0; place < gallery.classes.size(); ++place)
      if (!gallery.classes[place].marks.empty()) writeClass(place);
    writePageEnd(page);
  }

 private:
  void writeHead() { writePageHead(page, "Marks of " + gallery.project, style); }

  void writeTotals() {
    const auto empty = std::count_if(gallery.classes.begin(), gallery.classes.end(),
                                     [](const auto& dnnClass) { return dnnClass.marks.empty(); });
    page
        << "<table class=\"totals\">\n<thead><tr><th>Pictures</th><th>Marks</th>"
           "<th>Marks without class</th><th>Classes</th><th>Classes without marks</th></tr></thead>"
           "\n<tbody><tr><td>"
        << gallery.pictures << "</td><td>" << gallery.marks << "</td><td>"
        << gallery.marksWithoutClass << "</td><td>" << gallery.classes.size() << "</td><td>"
        << empty << "</td></tr></tbody>\n</table>\n";
  }

  void writeCallouts() {
    page << "<section>\n<h2>To look at first</h2>\n";
    writeMarksFound("under 10 pixels on a side", &ClassFindings::tiny);
    writeMarksFound("wholly outside the picture", &ClassFindings::outside);
    writeRepeats();
    writeUnreadable();
    page << "</section>\n";
  }

  void beginLinks(const std::string& summary, std::size_t count) {
    page << "<details class=\"found\"" << (count <= mostOpenLinks ? " open" : "") << "><summary>"
         << summary << "</summary>\n<ul class=\"links\">\n";
  }

  void writeMarksFound(const std::string& what, std::vector<std::size_t> ClassFindings::*which) {
    std::size_t count = 0;
    for (const auto& each : findings)
      count += (each.*which).size();
    if (count == 0) {
      page << "<p class=\"none\">No marks " << what << ".</p>\n";
      return;
    }
    beginLinks(counted(count, "mark") + " " + what, count);
    for (std::size_t place = 0; place < findings.size(); ++place)
      for (const auto mark : findings[place].*which)
        page << "<li>" << link({place, mark}) << "</li>\n";
    page << "</ul></details>\n";
  }

  void writeRepeats() {
    std::size_t count = 0;
    for (const auto& each : findings)
      count += each.repeats.size();
    if (count == 0) {
      page << "<p class=\"none\">No marks that repeat another one of their class.</p>\n";
      return;
    }
    beginLinks(counted(count, "mark") + (count == 1 ? " repeats" : " repeat") +
                   " another one of the same class (over 90 % of their union is shared)",
               count);
    for (std::size_t place = 0; place < findings.size(); ++place)
      for (const auto& [mark, earlier] : findings[place].repeats)
        page << "<li>" << link({place, mark}) << " repeats <a href=\"#" << idOf({place, earlier})
             << "\">" << numberSign(gallery.classes[place].marks[earlier]) << "</a></li>\n";
    page << "</ul></details>\n";
  }

  void writeUnreadable() {
    if (gallery.unreadable.empty()) return;
    const auto count = gallery.unreadable.size();
    beginLinks(counted(count, "picture") + " with marks cannot be read; the marks are not shown",
               count);
    for (const auto& name : gallery.unreadable)
      page << "<li>" << htmlText(name) << "</li>\n";
    page << "</ul></details>\n";
  }

  std::string link(Place place) const {
    const auto& dnnClass = gallery.classes[place.dnnClass];
    const auto& mark = dnnClass.marks[place.mark];
    return "<a href=\"#" + idOf(place) + "\">" + htmlText(mark.fileName) + " " + numberSign(mark) +
           "</a> <small>" + htmlText(dnnClass.label) + ", " + sizeText(mark.box) + "</small>";
  }

  void writeContents() {
    page << "<section>\n<h2>Classes</h2>\n<table>\n<thead><tr><th>Class</th><th>Marks</th>"
            "<th>Cuts</th><th>Median side, px</th><th>Unusual</th></tr></thead>\n<tbody>\n";
    for (std::size_t place = 0; place < gallery.classes.size(); ++place)
      writeContentsRow(place);
    page << "</tbody>\n</table>\n<p class=\"none\">Unusual: further than " << unusualScore
         << " median absolute deviations from the median size and shape of the class; such marks "
            "come first and have their sizes in colour.</p>\n</section>\n";
  }

  void writeContentsRow(std::size_t place) {
    const auto& dnnClass = gallery.classes[place];
    const auto label = htmlText(dnnClass.label);
    const auto& scores = findings[place].scores;
    const auto unusual = std::count_if(scores.begin(), scores.end(),
                                       [](double each) { return each > unusualScore; });
    page << "<tr><td>";
    if (dnnClass.marks.empty()) {
      page << label << "</td><td>0</td><td>0</td><td></td><td></td></tr>\n";
      return;
    }
    page << "<a href=\"#c" << place << "\">" << label << "</a></td><td>" << dnnClass.marks.size()
         << "</td><td>" << cutCount(dnnClass) << "</td><td>"
         << pageNumber(median(sidesOf(boxesOf(dnnClass)))) << "</td><td>" << unusual
         << "</td></tr>\n";
  }

  void writeClass(std::size_t place) {
    const auto& dnnClass = gallery.classes[place];
    page << "<section>\n<h2 id=\"c" << place << "\">" << htmlText(dnnClass.label) << " <small>"
         << counted(dnnClass.marks.size(), "mark") << ", " << counted(cutCount(dnnClass), "cut")
         << ", the most unusual in size and shape first</small></h2>\n<div class=\"plots\">\n";
    writeBoxPlots(page, placedBoxes(dnnClass));
    page << "</div>\n<div class=\"cuts\">\n";
    for (const auto mark : outliersFirst(findings[place].scores))
      writeMark({place, mark});
    page << "</div>\n</section>\n";
  }

  void writeMark(Place place) {
    const auto& mark = gallery.classes[place.dnnClass].marks[place.mark];
    const auto score = findings[place.dnnClass].scores[place.mark];
    const auto name = htmlText(mark.fileName);
    page << "<figure class=\"mark" << (score > unusualScore ? " unusual" : "") << "\" id=\""
         << idOf(place) << "\"><div class=\"cut\">";
    writeThumbnail(mark);
    page << "</div><figcaption><span class=\"name\" title=\"" << name << "\">" << name
         << "</span><span class=\"size\">" << numberSign(mark) << " · " << sizeText(mark.box)
         << "</span></figcaption></figure>\n";
  }

  void writeThumbnail(const GalleryMark& mark) {
    const auto [jpeg, size] = mark.cut < 0 ? Thumbnail() : thumbnails(mark.cut);
    if (jpeg.empty() || size.empty()) {
      page << "<span>no cut</span>";
      return;
    }
    const auto factor = std::min(largestEnlargement, tileSide / std::max(size.width, size.height));
    page << "<img loading=\"lazy\" decoding=\"async\" alt=\"\" width=\""
         << std::max(1L, std::lround(size.width * factor)) << "\" height=\""
         << std::max(1L, std::lround(size.height * factor)) << "\" src=\"data:image/jpeg;base64,"
         << base64(jpeg) << "\">";
  }

  std::ostream& page;
  const Gallery& gallery;
  const ThumbnailSource& thumbnails;
  std::vector<ClassFindings> findings;
};

}  // namespace

std::string base64(std::string_view bytes) {
  constexpr std::string_view digits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string result;
  result.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const auto count = std::min<std::size_t>(3, bytes.size() - i);
    unsigned bits = 0;
    for (std::size_t j = 0; j < 3; ++j)
      bits = bits << 8U | (j < count ? static_cast<unsigned char>(bytes[i + j]) : 0U);
    for (std::size_t j = 0; j < 4; ++j)
      result += j <= count ? digits[bits >> (18 - 6 * j) & 63U] : '=';
  }
  return result;
}

void writeGalleryPage(std::ostream& page, const Gallery& gallery,
                      const ThumbnailSource& thumbnails) {
  PageWriter(page, gallery, thumbnails).write();
}
