#include "drawing/Sheet.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <set>

#include "drawing/Picture.h"

namespace VELTRO::KELVO::Simulation {

using ClientLib::Point2D;

namespace {

constexpr std::size_t MostBins = 10;
constexpr double MostGridLines = 120;  // along the larger side
constexpr long long LinesBetweenNumbers = 10;
constexpr Colour GridColour{0xd8, 0xd8, 0xd8}, StrongGridColour{0xb0, 0xb0, 0xb0},
    FrameColour{0x60, 0x60, 0x60}, JumpsColour{0x30, 0x70, 0xc0}, PlainColour{0x20, 0x20, 0x20};

// From dark blue to orange: as bright steps for those who do not tell red from green.
Colour ColourAt(double share) {
  constexpr std::array<std::array<double, 3>, 5> Stops{
      {{38, 38, 128}, {32, 112, 168}, {40, 160, 120}, {190, 180, 40}, {232, 96, 16}}};
  const double at = std::clamp(share, 0.0, 1.0) * (Stops.size() - 1);
  const std::size_t i = std::min(static_cast<std::size_t>(at), Stops.size() - 2);
  const auto mix = [&](std::size_t part) {
    return static_cast<unsigned char>(
        std::lerp(Stops[i][part], Stops[i + 1][part], at - static_cast<double>(i)));
  };
  return {mix(0), mix(1), mix(2)};
}

std::string Number(double value) {
  std::array<char, 32> text;
  const auto end =
      std::to_chars(text.data(), text.data() + text.size(), value + 0.0, std::chars_format::general, 4).ptr;
  return {text.data(), end};
}

// 1, 10, 100 ... millimetres, or a tenth, a hundredth ... of one.
double GridStep(const Box& field) {
  const double side = std::max({field.GetWidth(), field.GetHeight(), 1e-6});
  return std::pow(10, std::ceil(std::log10(side / MostGridLines)));
}

Box FieldOf(const Drawing& drawing, const SheetSettings& settings) {
  return settings.Field ? *settings.Field : WithMargin(drawing.GetBox(), settings.Beam);
}

const char* LegendTitle(Colouring by) {
  switch (by) {
    case Colouring::Power:
      return "power";
    case Colouring::Speed:
      return "speed, field units per us";
    case Colouring::Order:
      return "order, parts of the run";
    case Colouring::None:
      break;
  }
  return "";
}

}  // namespace

Sheet::Sheet(const Drawing& drawing, const SheetSettings& settings)
    : drawing_(drawing),
      settings_(settings),
      field_(FieldOf(drawing, settings)),
      textSize_(std::max(field_.GetWidth(), field_.GetHeight()) / 50) {
  MakeBins();
  Fill();
}

Box Sheet::GetBox() const {
  const double legend =
      bins_.size() > 1 ? textSize_ * (1.5 * static_cast<double>(bins_.size()) + 3) : textSize_;
  return {{{field_.Lower.X() - 4 * textSize_, field_.Lower.Y() - 2 * textSize_ - legend}},
          {{field_.Upper.X() + 2 * textSize_, field_.Upper.Y() + 2 * textSize_}}};
}

double Sheet::ValueOf(const Ink& ink, std::size_t order) const {
  switch (settings_.By) {
    case Colouring::Power:
      return ink.Power;
    case Colouring::Speed:
      return ink.Speed;
    case Colouring::Order:
      return static_cast<double>(order) /
             static_cast<double>(std::max<std::size_t>(drawing_.GetPointCount(), 1));
    case Colouring::None:
      break;
  }
  return 0;
}

std::size_t Sheet::BinOf(const Ink& ink, std::size_t order) const {
  if (values_.size() == 1) return 0;
  const auto above = std::ranges::upper_bound(values_, ValueOf(ink, order));
  return static_cast<std::size_t>(std::max<std::ptrdiff_t>(above - values_.begin(), 1) - 1);
}

// Each value has a bin, or of many values as many even parts as there may be bins.
void Sheet::MakeBins() {
  std::set<double> values;
  const auto add = [&](const Ink& ink, std::size_t order) {
    const double value = ValueOf(ink, order);
    // Only the ends of too many are of interest.
    if (values.size() < 2 * MostBins || value < *values.begin() || value > *values.rbegin())
      values.insert(value);
  };
  if (settings_.By == Colouring::Order) {
    for (std::size_t i = 0; i < MostBins; ++i) values.insert(static_cast<double>(i) / MostBins);
  } else if (settings_.By != Colouring::None) {
    for (const auto& stroke : drawing_.GetStrokes()) {
      if (stroke.StrokeKind == Drawing::Kind::Mark) add(stroke.With, stroke.First);
    }
    for (const auto& dot : drawing_.GetDots()) add(dot.With, dot.Behind);
  }
  if (values.empty()) values.insert(0);
  const double least = *values.begin(), most = *values.rbegin();
  const bool areParts = values.size() > MostBins;
  if (!areParts) values_.assign(values.begin(), values.end());
  for (std::size_t i = 0; areParts && i < MostBins; ++i) {
    values_.push_back(std::lerp(least, most, static_cast<double>(i) / MostBins));
  }
  for (std::size_t i = 0; i < values_.size(); ++i) {
    const double share =
        static_cast<double>(i) / static_cast<double>(std::max<std::size_t>(values_.size() - 1, 1));
    std::string label = Number(values_[i]);
    if (settings_.By == Colouring::Order) {
      label = Number(100 * values_[i]) + " to " + Number(100 * (values_[i] + 1.0 / MostBins)) + " %";
    } else if (areParts) {
      label += " to " + Number(i + 1 < values_.size() ? values_[i + 1] : most);
    }
    bins_.push_back({values_.size() == 1 ? PlainColour : ColourAt(share), std::move(label), {}, {}});
  }
}

void Sheet::Fill() {
  const std::size_t partPoints = drawing_.GetPointCount() / MostBins + 1;
  for (const Drawing::Stroke& stroke : drawing_.GetStrokes()) {
    if (stroke.StrokeKind != Drawing::Kind::Mark) continue;
    if (settings_.By != Colouring::Order) {
      bins_[BinOf(stroke.With, stroke.First)].Strokes.push_back({stroke.First, stroke.Count});
      continue;
    }
    // A long stroke changes its colour on the way.
    for (std::size_t begin = stroke.First, end = stroke.First + stroke.Count; begin + 1 < end;) {
      const std::size_t next = std::min(end - 1, (begin / partPoints + 1) * partPoints);
      bins_[BinOf(stroke.With, begin)].Strokes.push_back({begin, next - begin + 1});
      begin = next;
    }
  }
  for (const Drawing::Dot& dot : drawing_.GetDots())
    bins_[BinOf(dot.With, dot.Behind)].Dots.push_back(dot.Place);
}

void Sheet::DrawGrid(Page& page) const {
  const double step = GridStep(field_);
  const double thin = textSize_ / 40;
  const auto lines = [&](bool strong, auto draw) {
    const auto along = [&](double from, double to, bool isX) {
      const auto most = std::llround(std::floor(to / step + 1e-9));
      for (auto i = std::llround(std::ceil(from / step - 1e-9)); i <= most; ++i) {
        if ((i % LinesBetweenNumbers == 0) == strong) draw(static_cast<double>(i) * step, isX);
      }
    };
    along(field_.Lower.X(), field_.Upper.X(), true);
    along(field_.Lower.Y(), field_.Upper.Y(), false);
  };
  const auto line = [&](double at, bool isX) {
    const std::array<Point2D, 2> ends =
        isX ? std::array<Point2D, 2>{{{{at, field_.Lower.Y()}}, {{at, field_.Upper.Y()}}}}
            : std::array<Point2D, 2>{{{{field_.Lower.X(), at}}, {{field_.Upper.X(), at}}}};
    page.AddStroke(ends);
  };
  page.BeginGroup("grid", {.Of = GridColour, .Width = thin});
  lines(false, line);
  page.BeginGroup("grid-tens", {.Of = StrongGridColour, .Width = thin});
  lines(true, line);
  page.BeginGroup("frame", {.Of = FrameColour, .Width = 2 * thin});
  const Point2D lower = field_.Lower, upper = field_.Upper;
  const std::array<Point2D, 5> corners{
      {lower, {{upper.X(), lower.Y()}}, upper, {{lower.X(), upper.Y()}}, lower}};
  page.AddStroke(corners);
  const auto number = [&](double at, bool isX) {
    const std::string text = Number(at);
    isX ? page.AddText({{at, lower.Y() - 1.2 * textSize_}}, Page::Side::Begins, textSize_, text)
        : page.AddText({{lower.X() - 0.3 * textSize_, at}}, Page::Side::Ends, textSize_, text);
  };
  lines(true, number);
  page.AddText({{lower.X(), upper.Y() + 0.5 * textSize_}}, Page::Side::Begins, textSize_,
               "grid " + Number(step) + " mm");
}

void Sheet::DrawLegend(Page& page) const {
  if (bins_.size() < 2) return;
  double y = field_.Lower.Y() - 3.5 * textSize_;
  const double x = field_.Lower.X();
  for (std::size_t i = 0; i < bins_.size(); ++i) {
    y -= 1.5 * textSize_;
    const double middle = y + 0.35 * textSize_;
    page.BeginGroup("legend-" + std::to_string(i + 1), {.Of = bins_[i].Of, .Width = textSize_ / 2});
    page.AddStroke(std::array<Point2D, 2>{{{{x, middle}}, {{x + 2 * textSize_, middle}}}});
  }
  page.BeginGroup("legend", {.Of = FrameColour});
  y = field_.Lower.Y() - 3.5 * textSize_;
  page.AddText({{x, y}}, Page::Side::Begins, textSize_, LegendTitle(settings_.By));
  for (const Bin& bin : bins_) {
    y -= 1.5 * textSize_;
    page.AddText({{x + 3 * textSize_, y}}, Page::Side::Begins, textSize_, bin.Label);
  }
}

void Sheet::Draw(Page& page) const {
  DrawGrid(page);
  page.BeginGroup("jumps", {.Of = JumpsColour,
                            .Width = 0.4 * settings_.Beam,
                            .Opacity = 0.8,
                            .Dash = std::max(2 * settings_.Beam, textSize_ / 3)});
  for (const Drawing::Stroke& stroke : drawing_.GetStrokes()) {
    if (stroke.StrokeKind == Drawing::Kind::Jump) page.AddStroke(drawing_.PointsOf(stroke));
  }
  for (std::size_t i = 0; i < bins_.size(); ++i) {
    const std::string number = bins_.size() > 1 ? "-" + std::to_string(i + 1) : "";
    page.BeginGroup("marks" + number, {.Of = bins_[i].Of, .Width = settings_.Beam});
    for (const Piece& piece : bins_[i].Strokes) page.AddStroke(drawing_.PointsFrom(piece.First, piece.Count));
    page.BeginGroup("dots" + number, {.Of = bins_[i].Of, .IsFilled = true});
    for (const Point2D& dot : bins_[i].Dots) page.AddDot(dot, settings_.Beam);
  }
  DrawLegend(page);
}

}  // namespace VELTRO::KELVO::Simulation
