// What one or several runs left on the field: strokes of marks and jumps, and dots.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "common/Point.h"
#include "drawing/Canvas.h"
#include "drawing/Page.h"

namespace VELTRO::KELVO::Simulation {

class Drawing {
 public:
  // Lists may run for ever: of more segments and dots than this, the first are kept.
  static constexpr std::size_t MostSegments = 2'000'000;

  using Kind = Canvas::Kind;

  // A run of segments of one kind and ink, each beginning where the one before it ended.
  struct Stroke {
    Kind StrokeKind;
    std::size_t First;  // in the drawing's points
    std::size_t Count;
    Ink With;
  };

  struct Dot {
    ClientLib::Point2D Place;
    Ink With;
    std::size_t Behind;  // so many points of strokes
  };

  void Clear() { *this = Drawing(); }
  // Both throw std::bad_alloc, and leave the drawing as it was then.
  void AddSegment(Kind kind, ClientLib::Point2D from, ClientLib::Point2D to, const Ink& ink = {});
  void AddDot(ClientLib::Point2D at, const Ink& ink = {});

  std::span<const Stroke> GetStrokes() const { return strokes_; }
  std::span<const ClientLib::Point2D> PointsOf(const Stroke& stroke) const {
    return PointsFrom(stroke.First, stroke.Count);
  }
  std::span<const ClientLib::Point2D> PointsFrom(std::size_t first, std::size_t count) const {
    return std::span(points_).subspan(first, count);
  }
  std::size_t GetPointCount() const { return points_.size(); }
  std::span<const Dot> GetDots() const { return dots_; }
  // Whether there was more than the drawing keeps.
  bool IsCut() const { return cut_; }

  // The box around all that was marked; when that is nothing, around the jumps; without these, a point.
  Box GetBox() const;

 private:
  bool HasRoom();

  std::vector<Stroke> strokes_;
  std::vector<ClientLib::Point2D> points_;
  std::vector<Dot> dots_;
  std::size_t segments_ = 0;
  bool cut_ = false;
};

}  // namespace VELTRO::KELVO::Simulation
