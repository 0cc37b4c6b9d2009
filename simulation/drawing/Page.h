// Something to draw on, whatever it becomes a file of. All lengths are millimetres, y points up.
#pragma once

#include <span>
#include <string_view>

#include "common/Point.h"

namespace VELTRO::KELVO::Simulation {

struct Box {
  ClientLib::Point2D Lower, Upper;

  double GetWidth() const { return Upper.X() - Lower.X(); }
  double GetHeight() const { return Upper.Y() - Lower.Y(); }
};

struct Colour {
  unsigned char Red = 0, Green = 0, Blue = 0;
};

struct Style {
  Colour Of;
  double Width = 0;       // of strokes
  double Opacity = 1;     // of strokes
  double Dash = 0;        // how long dashes are, and the gaps between them; 0: none
  bool IsFilled = false;  // for dots
};

class Page {
 public:
  virtual ~Page() = default;

  // What follows has this style, until the next group. Once for each name.
  virtual void BeginGroup(std::string_view name, const Style& style) = 0;
  virtual void AddStroke(std::span<const ClientLib::Point2D> points) = 0;
  virtual void AddDot(ClientLib::Point2D at, double diameter) = 0;
  // The text's beginning is at `at`, or its end.
  enum class Side { Begins, Ends };
  virtual void AddText(ClientLib::Point2D at, Side side, double size, std::string_view text) = 0;
};

}  // namespace VELTRO::KELVO::Simulation
