#include "drawing/Picture.h"

#include <algorithm>
#include <stdexcept>
#include <system_error>

#include "drawing/SvgPage.h"

namespace VELTRO::KELVO::Simulation {

namespace {

constexpr double MarginShare = 0.05;     // of the larger side
constexpr double MarginBeams = 5;        // at least
constexpr double JumpWidthBeams = 0.25;  // jumps are drawn this thin
constexpr Colour MarkColour{0x20, 0x20, 0x20};
constexpr Colour JumpColour{0x30, 0x70, 0xc0};

void AddStrokes(SvgPage& page, const Drawing& drawing, Drawing::Kind kind) {
  for (const Drawing::Stroke& stroke : drawing.GetStrokes()) {
    if (stroke.StrokeKind == kind) page.AddStroke(drawing.PointsOf(stroke));
  }
}

}  // namespace

Box WithMargin(const Box& box, double beam) {
  const double margin = std::max(MarginShare * std::max(box.GetWidth(), box.GetHeight()), MarginBeams * beam);
  return {{{box.Lower.X() - margin, box.Lower.Y() - margin}},
          {{box.Upper.X() + margin, box.Upper.Y() + margin}}};
}

void WritePicture(const Drawing& drawing, double beam, const std::string& file) {
  try {
    SvgPage page(file, WithMargin(drawing.GetBox(), beam), SvgPage::Precision::Exact);
    if (drawing.IsCut()) {
      page.AddComment("Cut: only the first " + std::to_string(Drawing::MostSegments) +
                      " segments are drawn.");
    }
    page.BeginGroup("jumps", {.Of = JumpColour, .Width = JumpWidthBeams * beam, .Opacity = 0.35});
    AddStrokes(page, drawing, Drawing::Kind::Jump);
    page.BeginGroup("marks", {.Of = MarkColour, .Width = beam});
    AddStrokes(page, drawing, Drawing::Kind::Mark);
    page.BeginGroup("dots", {.Of = MarkColour, .IsFilled = true});
    for (const Drawing::Dot& dot : drawing.GetDots()) page.AddDot(dot.Place, beam);
    page.Finish();
  } catch (const std::system_error& error) {
    throw std::runtime_error("Cannot write '" + file + "': " + error.code().message() + ".");
  }
}

}  // namespace VELTRO::KELVO::Simulation
