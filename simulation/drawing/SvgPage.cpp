#include "drawing/SvgPage.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace VELTRO::KELVO::Simulation {

using ClientLib::Point2D;

namespace {

constexpr std::size_t PieceBytes = 1 << 16;
constexpr std::size_t MostPathPoints = 4096;  // programs that show pictures draw long paths slowly

constexpr double MostUnits = 50000;  // along the larger side: coordinates of five digits

// 1, 2 or 5 times a power of ten.
double UnitOf(const Box& box) {
  const double least = std::max({box.GetWidth(), box.GetHeight(), 1e-6}) / MostUnits;
  const double ten = std::pow(10, std::floor(std::log10(least)));
  for (const double factor : {1, 2, 5}) {
    if (factor * ten >= least) return factor * ten;
  }
  return 10 * ten;
}

}  // namespace

SvgPage::SvgPage(const std::string& file, const Box& box, Precision precision)
    : file_(file),
      isExact_(precision == Precision::Exact),
      unit_(precision == Precision::Exact ? 1 : UnitOf(box)) {
  *this << "<?xml version='1.0' encoding='UTF-8'?>\n<svg xmlns='http://www.w3.org/2000/svg' width='"
        << box.GetWidth() << "mm' height='" << box.GetHeight() << "mm' viewBox='" << box.Lower.X() << " "
        << -box.Upper.Y() << " " << box.GetWidth() << " " << box.GetHeight() << "'>\n";
}

SvgPage& SvgPage::operator<<(std::string_view text) {
  text_ += text;
  if (text_.size() >= PieceBytes) {
    file_.Write(text_);
    text_.clear();
  }
  return *this;
}

// Numbers never depend on the locale.
SvgPage& SvgPage::operator<<(double number) {
  std::array<char, 32> text;
  const auto end =
      std::to_chars(text.data(), text.data() + text.size(), number + 0.0, std::chars_format::general, 9).ptr;
  return *this << std::string_view(text.data(), static_cast<std::size_t>(end - text.data()));
}

SvgPage& SvgPage::operator<<(Colour colour) {
  constexpr std::string_view Digits = "0123456789abcdef";
  std::array<char, 7> text{'#'};
  std::size_t i = 1;
  for (const unsigned part : {colour.Red, colour.Green, colour.Blue}) {
    text[i++] = Digits[part / 16];
    text[i++] = Digits[part % 16];
  }
  return *this << std::string_view(text.data(), text.size());
}

void SvgPage::AddComment(std::string_view text) {
  *this << "<!-- " << text << " -->\n";
}

void SvgPage::BeginGroup(std::string_view name, const Style& style) {
  EndGroup();
  *this << "<g id='" << name << "' transform='scale(" << unit_ << " " << -unit_ << ")'";
  if (style.IsFilled) {
    *this << " fill='" << style.Of << "'";
  } else {
    *this << " fill='none' stroke-linecap='round' stroke-linejoin='round' stroke='" << style.Of
          << "' stroke-width='" << style.Width / unit_ << "'";
  }
  if (style.Opacity < 1) *this << " stroke-opacity='" << style.Opacity << "'";
  if (style.Dash > 0) *this << " stroke-dasharray='" << style.Dash / unit_ << "'";
  *this << ">\n";
  isInGroup_ = true;
}

void SvgPage::EndGroup() {
  EndPath();
  if (isInGroup_) *this << "</g>\n";
  isInGroup_ = false;
}

void SvgPage::EndPath() {
  if (isInPath_) *this << "'/>\n";
  isInPath_ = false;
}

SvgPage::Place SvgPage::Rounded(Point2D point) const {
  return {std::llround(point.X() / unit_), std::llround(point.Y() / unit_)};
}

// What a minus separates needs no blank.
void SvgPage::AddWholes(char letter, std::int64_t x, std::int64_t y) {
  std::array<char, 48> text;
  char* at = text.data();
  char* const end = at + text.size();
  *at++ = letter;
  at = std::to_chars(at, end, x).ptr;
  if (y >= 0) *at++ = ' ';
  at = std::to_chars(at, end, y).ptr;
  *this << std::string_view(text.data(), static_cast<std::size_t>(at - text.data()));
}

void SvgPage::AddStroke(std::span<const Point2D> points) {
  if (isExact_) {
    *this << "<polyline points='";
    const char* separator = "";
    for (const Point2D& point : points) {
      *this << separator << point.X() << "," << point.Y();
      separator = " ";
    }
    *this << "'/>\n";
    return;
  }
  if (isInPath_ && pathEnd_ < points.size()) EndPath();
  const Place begin = Rounded(points.front());
  if (!isInPath_) {
    *this << "<path d='";
    AddWholes('M', begin.X, begin.Y);
    isInPath_ = true;
    pathEnd_ = MostPathPoints;
  } else {
    AddWholes('m', begin.X - pen_.X, begin.Y - pen_.Y);
  }
  pen_ = begin;
  for (std::size_t i = 1; i < points.size(); ++i) {
    const Place place = Rounded(points[i]);
    AddWholes('l', place.X - pen_.X, place.Y - pen_.Y);
    pen_ = place;
    if (i % MostPathPoints != 0 || i + 1 == points.size()) continue;
    EndPath();
    *this << "<path d='";
    AddWholes('M', pen_.X, pen_.Y);
    isInPath_ = true;
    pathEnd_ = MostPathPoints;
  }
  pathEnd_ -= std::min(pathEnd_, points.size());
}

void SvgPage::AddDot(Point2D at, double diameter) {
  EndPath();
  *this << "<circle cx='" << at.X() / unit_ << "' cy='" << at.Y() / unit_ << "' r='" << diameter / 2 / unit_
        << "'/>\n";
}

void SvgPage::AddText(Point2D at, Side side, double size, std::string_view text) {
  EndPath();
  *this << "<text transform='translate(" << at.X() / unit_ << " " << at.Y() / unit_
        << ") scale(1 -1)' font-size='" << size / unit_
        << "' font-family='sans-serif' stroke='none' fill='#404040'"
        << (side == Side::Ends ? " text-anchor='end'>" : ">");
  for (const char c : text) {
    c == '<' ? *this << "&lt;" : c == '&' ? *this << "&amp;" : *this << std::string_view(&c, 1);
  }
  *this << "</text>\n";
}

void SvgPage::Finish() {
  EndGroup();
  *this << "</svg>\n";
  file_.Write(text_);
  text_.clear();
  file_.Commit();
}

}  // namespace VELTRO::KELVO::Simulation
