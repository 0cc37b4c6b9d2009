// A page as an SVG file, to scale.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "common/ReplacedFile.h"
#include "drawing/Page.h"

namespace VELTRO::KELVO::Simulation {

// Everything throws std::system_error when the file cannot be written. Whoever reads the file sees the old picture or the
// new one (ReplacedFile).
class SvgPage : public Page {
 public:
  // Exact: nine digits, which leave no trace of rounding in sums of relative moves; a nanometre in a metre.
  // Compact: the larger side of the page has 20000 to 50000 units, and a mark takes less than half of the bytes.
  enum class Precision { Exact, Compact };

  SvgPage(const std::string& file, const Box& box, Precision precision);

  void AddComment(std::string_view text);
  void BeginGroup(std::string_view name, const Style& style) override;
  void AddStroke(std::span<const ClientLib::Point2D> points) override;
  void AddDot(ClientLib::Point2D at, double diameter) override;
  void AddText(ClientLib::Point2D at, Side side, double size, std::string_view text) override;
  // Ends the file, which is there then.
  void Finish();

 private:
  struct Place {
    std::int64_t X, Y;
  };

  SvgPage& operator<<(std::string_view text);
  SvgPage& operator<<(double number);
  SvgPage& operator<<(Colour colour);
  void EndGroup();
  void EndPath();
  void AddWholes(char letter, std::int64_t x, std::int64_t y);
  Place Rounded(ClientLib::Point2D point) const;

  ClientLib::ReplacedFile file_;
  std::string text_;  // not written yet
  const bool isExact_;
  const double unit_;  // millimetres of a coordinate in strokes
  bool isInGroup_ = false;
  bool isInPath_ = false;
  std::size_t pathEnd_ = 0;  // how many more points the path takes
  Place pen_{0, 0};          // where the path is
};

}  // namespace VELTRO::KELVO::Simulation
