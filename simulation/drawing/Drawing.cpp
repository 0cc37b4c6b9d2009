#include "drawing/Drawing.h"

#include <algorithm>
#include <optional>

namespace VELTRO::KELVO::Simulation {

using ClientLib::Point2D;

namespace {

class BoxBuilder {
 public:
  void Add(std::span<const Point2D> points) {
    for (const Point2D& point : points) Add(point);
  }
  bool IsEmpty() const { return !box_; }
  Box Get() const { return box_.value_or(Box{}); }

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

  std::optional<Box> box_;
};

// Room for `count` more, so that adding them does not fail halfway.
template <class T>
void MakeRoom(std::vector<T>& all, std::size_t count) {
  const std::size_t wanted = all.size() + count;
  if (wanted > all.capacity()) all.reserve(std::max(wanted, 2 * all.capacity()));
}

}  // namespace

bool Drawing::HasRoom() {
  if (segments_ == MostSegments) cut_ = true;
  return !cut_;
}

void Drawing::AddSegment(Kind kind, Point2D from, Point2D to, const Ink& ink) {
  if (!HasRoom()) return;
  MakeRoom(points_, 2);
  MakeRoom(strokes_, 1);
  if (strokes_.empty() || strokes_.back().StrokeKind != kind || points_.back() != from ||
      !(strokes_.back().With == ink)) {
    strokes_.push_back({kind, points_.size(), 1, ink});
    points_.push_back(from);
  }
  points_.push_back(to);
  ++strokes_.back().Count;
  ++segments_;
}

void Drawing::AddDot(Point2D at, const Ink& ink) {
  if (!HasRoom()) return;
  dots_.push_back({at, ink, points_.size()});
  ++segments_;
}

Box Drawing::GetBox() const {
  BoxBuilder marked;
  BoxBuilder jumped;
  for (const Dot& dot : dots_) marked.Add({&dot.Place, 1});
  for (const Stroke& stroke : strokes_) {
    (stroke.StrokeKind == Kind::Mark ? marked : jumped).Add(PointsOf(stroke));
  }
  return marked.IsEmpty() ? jumped.Get() : marked.Get();
}

}  // namespace VELTRO::KELVO::Simulation
