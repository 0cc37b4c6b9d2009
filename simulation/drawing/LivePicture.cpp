#include "drawing/LivePicture.h"

#include <algorithm>
#include <new>
#include <utility>

namespace VELTRO::KELVO::Simulation {

using ClientLib::MutexLock;
using ClientLib::Point2D;

LivePicture::LivePicture(Canvas& next, bool keepsAll)
    : next_(next), keepsAll_(keepsAll), roll_(std::make_shared<Roll>(0)) {}

void LivePicture::BeginRun() {
  next_.BeginRun();
  isOn_ = false;
  if (keepsAll_ || count_ == 0) return;
  std::shared_ptr<Roll> fresh;
  try {
    fresh = std::make_shared<Roll>(roll_->Number + 1);
  } catch (const std::bad_alloc&) {  // the old picture stays, and says that it is not all
    roll_->IsCut = true;
    return;
  }
  count_ = 0;
  const MutexLock lock(mutex_);
  roll_ = std::move(fresh);
}

void LivePicture::AddSegment(Kind kind, Point2D from, Point2D to, const Ink& ink) {
  next_.AddSegment(kind, from, to, ink);
  const bool goesOn = isOn_ && latest_ == from;
  const std::size_t points = goesOn ? 1 : 2;
  if (!HasRoomFor(points)) return;
  if (!goesOn) Put(count_, from, Pen::Start);
  Put(count_ + points - 1, to, kind == Kind::Mark ? Pen::Mark : Pen::Jump);
  Tell(points);
  latest_ = to;
  isOn_ = true;
}

void LivePicture::AddDot(Point2D at, const Ink& ink) {
  next_.AddDot(at, ink);
  if (!HasRoomFor(1)) return;
  Put(count_, at, Pen::Dot);
  Tell(1);
  isOn_ = false;
}

bool LivePicture::HasRoomFor(std::size_t points) noexcept {
  if (roll_->IsCut) return false;
  try {
    if (count_ + points > MostPoints) throw std::bad_alloc();
    auto& chunk = roll_->Chunks[(count_ + points - 1) / ChunkPoints];
    if (!chunk) chunk = std::make_unique_for_overwrite<Chunk>();
    auto& first = roll_->Chunks[count_ / ChunkPoints];
    if (!first) first = std::make_unique_for_overwrite<Chunk>();
    return true;
  } catch (const std::bad_alloc&) {
    roll_->IsCut = true;
    return false;
  }
}

void LivePicture::Put(std::size_t index, Point2D place, Pen pen) noexcept {
  Chunk& chunk = *roll_->Chunks[index / ChunkPoints];
  const std::size_t at = index % ChunkPoints;
  chunk.Places[2 * at] = static_cast<float>(place.X());
  chunk.Places[2 * at + 1] = static_cast<float>(place.Y());
  chunk.Pens[at] = pen;
}

std::shared_ptr<const LivePicture::Roll> LivePicture::GetRoll() const {
  const MutexLock lock(mutex_);
  return roll_;
}

LivePicture::Extent LivePicture::Look() const {
  const auto roll = GetRoll();
  return {roll->Number, roll->Count.load(std::memory_order_acquire), roll->IsCut};
}

LivePicture::Piece LivePicture::Copy(std::size_t from, std::size_t most) const {
  const auto roll = GetRoll();
  Piece piece{{roll->Number, roll->Count.load(std::memory_order_acquire), roll->IsCut}, {}, {}};
  from = std::min(from, piece.Of.Points);
  const std::size_t end = from + std::min(most, piece.Of.Points - from);
  piece.Places.reserve(2 * (end - from));
  piece.Pens.reserve(end - from);
  while (from < end) {
    const Chunk& chunk = *roll->Chunks[from / ChunkPoints];
    const std::size_t at = from % ChunkPoints;
    const std::size_t count = std::min(ChunkPoints - at, end - from);
    const auto places = chunk.Places.begin() + static_cast<std::ptrdiff_t>(2 * at);
    const auto pens = chunk.Pens.begin() + static_cast<std::ptrdiff_t>(at);
    piece.Places.insert(piece.Places.end(), places, places + static_cast<std::ptrdiff_t>(2 * count));
    piece.Pens.insert(piece.Pens.end(), pens, pens + static_cast<std::ptrdiff_t>(count));
    from += count;
  }
  return piece;
}

}  // namespace VELTRO::KELVO::Simulation
