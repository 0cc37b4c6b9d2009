#include "drawing/Drawing.h"

#include <algorithm>
#include <optional>

namespace VELTRO::KELVO::VirtualCard {

using ClientLib::Point2D;

namespace {

class BoxBuilder {
 public:
  void Add(std::span<const Point2D> points) {
    for (const Point2D& point : points) Add(point);
  }
  bool IsEmpty() const { return !box_; }
  Drawing::Box Get() const { return box_.value_or(Drawing::Box{}); }

 private:
  void Add(const Point2D& point) {
    if (!box_) box_ = {point, point};
    for (std::size_t i = 0; i < Point2D::Dimensions; ++i) {
      double& lower = box_->Lower.Coordinates[i];
      double& upper = box_->Upper.Coordinates[i];
      lower = std::min(lower, point.Coordinates[i]);
      upper = std::max(upper, point.Coordinates[i]);
    }
  }

  std::optional<Drawing::Box> box_;
};

}  // namespace

bool Drawing::Count() {
  if (segments_ == MostSegments) cut_ = true;
  if (!cut_) ++segments_;
  return !cut_;
}

void Drawing::AddSegment(Kind kind, Point2D from, Point2D to) {
  if (!Count()) return;
  if (strokes_.empty() || strokes_.back().StrokeKind != kind || points_.back() != from) {
    strokes_.push_back({kind, points_.size(), 1});
    points_.push_back(from);
  }
  points_.push_back(to);
  ++strokes_.back().Count;
}

void Drawing::AddDot(Point2D at) {
  if (Count()) dots_.push_back(at);
}

Drawing::Box Drawing::GetBox() const {
  BoxBuilder marked;
  BoxBuilder jumped;
  marked.Add(dots_);
  for (const Stroke& stroke : strokes_) {
    (stroke.StrokeKind == Kind::Mark ? marked : jumped).Add(PointsOf(stroke));
  }
  return marked.IsEmpty() ? jumped.Get() : marked.Get();
}

}  // namespace VELTRO::KELVO::VirtualCard
