// A drawing for people: to scale, with a frame, a grid, colours that tell something, and a legend.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "drawing/Drawing.h"

namespace VELTRO::KELVO::Simulation {

enum class Colouring { None, Power, Speed, Order };

struct SheetSettings {
  Colouring By = Colouring::None;
  std::optional<Box> Field;  // without it, what is marked with a margin
  double Beam = 0.1;
};

class Sheet {
 public:
  Sheet(const Drawing& drawing, const SheetSettings& settings);

  // With the frame, the numbers at it and the legend.
  Box GetBox() const;
  // Groups "grid", "frame", "jumps", "marks" or, by colours, "marks-1" and so on, "dots" likewise, "legend".
  void Draw(Page& page) const;

 private:
  // The strokes and dots of one colour: indices of strokes' points from First on, Count of them.
  struct Piece {
    std::size_t First, Count;
  };
  struct Bin {
    Colour Of;
    std::string Label;
    std::vector<Piece> Strokes;
    std::vector<ClientLib::Point2D> Dots;
  };

  void MakeBins();
  void Fill();
  std::size_t BinOf(const Ink& ink, std::size_t order) const;
  double ValueOf(const Ink& ink, std::size_t order) const;
  void DrawGrid(Page& page) const;
  void DrawLegend(Page& page) const;

  const Drawing& drawing_;
  const SheetSettings settings_;
  const Box field_;
  const double textSize_;
  std::vector<double> values_;  // the least of each bin
  std::vector<Bin> bins_;
};

}  // namespace VELTRO::KELVO::Simulation
