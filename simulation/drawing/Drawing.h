// What one or several runs left on the field: strokes of marks and jumps, and dots.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "common/Point.h"

namespace VELTRO::KELVO::Simulation {

class Drawing {
 public:
  // Lists may run for ever: of more segments and dots than this, the first are kept.
  static constexpr std::size_t MostSegments = 2'000'000;

  enum class Kind { Jump, Mark };

  // A run of segments of one kind, each beginning where the one before it ended.
  struct Stroke {
    Kind StrokeKind;
    std::size_t First;  // in the drawing's points
    std::size_t Count;
  };

  struct Box {
    ClientLib::Point2D Lower, Upper;
  };

  void Clear() { *this = Drawing(); }
  // Both throw std::bad_alloc, and leave the drawing as it was then.
  void AddSegment(Kind kind, ClientLib::Point2D from, ClientLib::Point2D to);
  void AddDot(ClientLib::Point2D at);

  std::span<const Stroke> GetStrokes() const { return strokes_; }
  std::span<const ClientLib::Point2D> PointsOf(const Stroke& stroke) const {
    return std::span(points_).subspan(stroke.First, stroke.Count);
  }
  std::span<const ClientLib::Point2D> GetDots() const { return dots_; }
  // Whether there was more than the drawing keeps.
  bool IsCut() const { return cut_; }

  // The box around all that was marked; when that is nothing, around the jumps; without these, a point.
  Box GetBox() const;

 private:
  bool HasRoom();

  std::vector<Stroke> strokes_;
  std::vector<ClientLib::Point2D> points_;
  std::vector<ClientLib::Point2D> dots_;
  std::size_t segments_ = 0;
  bool cut_ = false;
};

}  // namespace VELTRO::KELVO::Simulation
