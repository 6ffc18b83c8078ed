#include "GalleryReport.h"

#include <algorithm>
#include <cmath>

#include "GalleryStatistics.h"
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

// Ranges of the plots: a common one to start with, so that classes can be compared, and the most.
constexpr Octaves leastSides{3, 9};
constexpr Octaves mostSides{0, 15};
constexpr Octaves leastAspects{-2, 2};
constexpr Octaves mostAspects{-6, 6};

// Sizes of the plots in units of their own.
constexpr double plotWidth = 300;
constexpr double plotHeight = 96;
constexpr double labelHeight = 16;
constexpr double placesSide = 112;

constexpr auto style = R"(
:root { color-scheme: light dark; --ink: #1d2024; --soft: #636b74; --line: #dcdfe3; --ground: #fff;
  --tile: #f3f4f6; --accent: #1f5fbf; --warn: #a8430a; --bar: #5b8bd0; }
@media (prefers-color-scheme: dark) { :root { --ink: #e4e6e9; --soft: #9aa2ac; --line: #363b42;
  --ground: #16181b; --tile: #22262b; --accent: #86b3f5; --warn: #f0a070; --bar: #5f8fd6; } }
* { box-sizing: border-box; }
body { margin: 0 auto; max-width: 78rem; padding: 2rem 1.5rem 4rem; background: var(--ground);
  color: var(--ink); font: 15px/1.5 system-ui, "Segoe UI", Roboto, "Helvetica Neue", sans-serif; }
h1 { margin: 0 0 1rem; font-size: 1.7rem; line-height: 1.2; }
h2 { margin: 2.5rem 0 .75rem; font-size: 1.2rem; overflow-wrap: anywhere; }
h1, h2, th { font-weight: 600; }
small { color: var(--soft); font-size: .85rem; font-weight: 400; }
a { color: var(--accent); text-decoration: none; }
a:hover { text-decoration: underline; }
table { border-collapse: collapse; font-variant-numeric: tabular-nums; }
th, td { padding: .25rem 1.5rem .25rem 0; border-bottom: 1px solid var(--line); text-align: right; }
th:first-child, td:first-child { text-align: left; overflow-wrap: anywhere; }
thead th { color: var(--soft); font-size: .85rem; }
.totals { margin-bottom: 1rem; }
details { margin: .4rem 0; }
summary { cursor: pointer; }
.found > summary { color: var(--warn); font-weight: 600; }
.links { display: grid; grid-template-columns: repeat(auto-fill, minmax(18rem, 1fr)); gap: 0 1.5rem;
  margin: .4rem 0 1rem; padding: 0; list-style: none; font-size: .87rem; }
.links li { overflow-wrap: anywhere; }
.none { color: var(--soft); margin: .4rem 0; }
.plots { display: flex; flex-wrap: wrap; gap: 1rem 2.5rem; margin: 0 0 1rem; }
.plots figure { margin: 0; }
.plots figcaption { color: var(--soft); font-size: .8rem; }
svg { display: block; height: 7rem; width: auto; max-width: 100%; }
svg text { fill: var(--soft); font-size: 11px; text-anchor: middle; }
.bar { fill: var(--bar); }
.axis, .frame { fill: none; stroke: var(--line); }
.dots { fill: none; stroke: var(--bar); stroke-width: 2.4; stroke-linecap: round; }
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

// One decimal is finer than a pixel of the page.
std::string coordinate(double value) {
  return numberText(std::round(value * 10) / 10);
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
    page << "</body>\n</html>\n";
  }

 private:
  void writeHead() {
    const auto title = "Marks of " + htmlText(gallery.project);
    page << "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
            "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
            "img-src data:; style-src 'unsafe-inline'\">\n"
            "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n<title>"
         << title << "</title>\n<style>" << style << "</style>\n</head>\n<body>\n<h1>" << title
         << "</h1>\n";
  }

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
         << coordinate(median(sidesOf(dnnClass))) << "</td><td>" << unusual << "</td></tr>\n";
  }

  static std::vector<double> sidesOf(const GalleryClass& dnnClass) {
    std::vector<double> sides;
    for (const auto& mark : dnnClass.marks)
      if (hasArea(mark.box))
        sides.push_back(std::sqrt(mark.box.width) * std::sqrt(mark.box.height));
    return sides;
  }

  static std::vector<double> aspectsOf(const GalleryClass& dnnClass) {
    std::vector<double> aspects;
    for (const auto& mark : dnnClass.marks)
      if (hasArea(mark.box)) aspects.push_back(mark.box.width / mark.box.height);
    return aspects;
  }

  void writeClass(std::size_t place) {
    const auto& dnnClass = gallery.classes[place];
    page << "<section>\n<h2 id=\"c" << place << "\">" << htmlText(dnnClass.label) << " <small>"
         << counted(dnnClass.marks.size(), "mark") << ", " << counted(cutCount(dnnClass), "cut")
         << ", the most unusual in size and shape first</small></h2>\n<div class=\"plots\">\n";
    writePlot("Side of the box in pixels, √(width × height)", sidesOf(dnnClass), leastSides,
              mostSides);
    writePlot("Width by height of the box", aspectsOf(dnnClass), leastAspects, mostAspects);
    writePlaces(dnnClass);
    page << "</div>\n<div class=\"cuts\">\n";
    for (const auto mark : outliersFirst(findings[place].scores))
      writeMark({place, mark});
    page << "</div>\n</section>\n";
  }

  void writePlot(const std::string& caption, const std::vector<double>& values, Octaves least,
                 Octaves most) {
    const auto range = octavesAround(values, least, most);
    page << "<figure><svg viewBox=\"0 0 " << plotWidth << ' ' << plotHeight + labelHeight
         << "\" role=\"img\" aria-label=\"" << caption << "\">\n";
    writeBars(logBins(values, range), range);
    page << "<path class=\"axis\" d=\"M0 " << plotHeight << "H" << plotWidth << "\"/>\n";
    writeTicks(range);
    page << "</svg><figcaption>" << caption << "</figcaption></figure>\n";
  }

  void writeBars(const std::vector<std::size_t>& bins, Octaves range) {
    const auto step = plotWidth / static_cast<double>(bins.size());
    const auto most = *std::max_element(bins.begin(), bins.end());
    for (std::size_t i = 0; i < bins.size(); ++i) {
      if (bins[i] == 0) continue;
      // A single one among thousands is seen, too.
      const auto height =
          std::max(1.5, plotHeight * static_cast<double>(bins[i]) / static_cast<double>(most));
      const auto exponent = range.low + static_cast<double>(i) / binsPerOctave;
      page << "<rect class=\"bar\" x=\"" << coordinate(static_cast<double>(i) * step + 0.5)
           << "\" y=\"" << coordinate(plotHeight - height) << "\" width=\"" << coordinate(step - 1)
           << "\" height=\"" << coordinate(height) << "\"><title>" << axisText(exponent) << " to "
           << axisText(exponent + 1.0 / binsPerOctave) << ": " << bins[i] << "</title></rect>\n";
    }
  }

  // Three digits tell all edges apart.
  static std::string axisText(double exponent) {
    const auto value = std::exp2(exponent);
    const auto unit = std::pow(10.0, std::floor(std::log10(value)) - 2);
    return value >= 100 ? numberText(std::round(value))
                        : numberText(std::round(std::round(value / unit) * unit * 1e6) / 1e6);
  }

  void writeTicks(Octaves range) {
    const auto octave = plotWidth / (range.high - range.low);
    for (auto exponent = range.low + 1; exponent < range.high; ++exponent)
      page << "<text x=\"" << coordinate((exponent - range.low) * octave) << "\" y=\""
           << plotHeight + labelHeight - 3 << "\">" << tickText(exponent) << "</text>\n";
  }

  static std::string tickText(int exponent) {
    return exponent < 0 ? "1/" + std::to_string(1 << -exponent) : std::to_string(1 << exponent);
  }

  // One path for all dots keeps the page small; a stroke of no length is a dot.
  void writePlaces(const GalleryClass& dnnClass) {
    page << "<figure><svg viewBox=\"0 0 " << placesSide << ' ' << placesSide
         << "\" role=\"img\" aria-label=\"Centres on the picture\">\n<rect class=\"frame\" "
            "x=\"0.5\" "
            "y=\"0.5\" width=\""
         << placesSide - 1 << "\" height=\"" << placesSide - 1 << "\"/>\n<path class=\"dots\" d=\"";
    for (const auto& mark : dnnClass.marks)
      writeDot(mark);
    page << "\"/>\n</svg><figcaption>Centres on the picture</figcaption></figure>\n";
  }

  void writeDot(const GalleryMark& mark) {
    const auto x = (mark.box.x + mark.box.width / 2) / mark.pictureSize.width;
    const auto y = (mark.box.y + mark.box.height / 2) / mark.pictureSize.height;
    if (!std::isfinite(x) || !std::isfinite(y)) return;
    page << 'M' << coordinate(std::clamp(x, 0.0, 1.0) * placesSide) << ' '
         << coordinate(std::clamp(y, 0.0, 1.0) * placesSide) << "h0";
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

std::string htmlText(std::string_view text) {
  std::string result;
  for (const char character : text) {
    switch (character) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      case '>':
        result += "&gt;";
        break;
      case '"':
        result += "&quot;";
        break;
      case '\'':
        result += "&#39;";
        break;
      default:
        result += character;
    }
  }
  return result;
}

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
