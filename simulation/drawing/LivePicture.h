// What is being drawn, for others to look at while it grows.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "common/Mutex.h"
#include "drawing/Canvas.h"

namespace VELTRO::KELVO::Simulation {

// A canvas that keeps what it passes on to another one. It only grows, so that how far somebody has seen it is an index.
// Drawing takes no lock, and for want of memory the picture is cut: a run does not fail for those who look at it.
class LivePicture : public Canvas {
 public:
  // How the beam came to a point from the one before it; Start: by no way that is seen.
  enum class Pen : unsigned char { Start, Jump, Mark, Dot };

  // As many as a Drawing keeps need two points each at most.
  static constexpr std::size_t MostPoints = 4'000'000;

  // `next` outlives it. `keepsAll`: one picture of all runs, not of the latest alone.
  LivePicture(Canvas& next, bool keepsAll);

  double GetBeam() const override { return next_.GetBeam(); }
  void BeginRun() override;
  void AddSegment(Kind kind, ClientLib::Point2D from, ClientLib::Point2D to, const Ink& ink) override;
  void AddDot(ClientLib::Point2D at, const Ink& ink) override;

  // What follows any thread may call.

  struct Extent {
    std::uint64_t Number;  // of the picture: another one has another number
    std::size_t Points;
    bool IsCut;
  };
  Extent Look() const;

  struct Piece {
    Extent Of;
    std::vector<float> Places;  // x and y by turns
    std::vector<Pen> Pens;
  };
  // `most` points from the index `from` on, or as many as there are.
  Piece Copy(std::size_t from, std::size_t most) const;

 private:
  static constexpr std::size_t ChunkPoints = 16384;

  struct Chunk {
    std::array<float, 2 * ChunkPoints> Places;
    std::array<Pen, ChunkPoints> Pens;
  };
  // One picture. Those points may be read whose count is told.
  struct Roll {
    explicit Roll(std::uint64_t number) : Number(number) {}

    const std::uint64_t Number;
    std::array<std::unique_ptr<Chunk>, (MostPoints + ChunkPoints - 1) / ChunkPoints> Chunks;
    std::atomic<std::size_t> Count{0};
    std::atomic<bool> IsCut{false};
  };

  std::shared_ptr<const Roll> GetRoll() const;
  bool HasRoomFor(std::size_t points) noexcept;
  void Put(std::size_t index, ClientLib::Point2D place, Pen pen) noexcept;
  void Tell(std::size_t points) { roll_->Count.store(count_ += points, std::memory_order_release); }

  Canvas& next_;
  const bool keepsAll_;

  // The drawing thread's own, but that others take the roll under the mutex, under which it is replaced.
  mutable ClientLib::Mutex mutex_;
  std::shared_ptr<Roll> roll_;
  std::size_t count_ = 0;
  bool isOn_ = false;  // the latest point is where the beam is
  ClientLib::Point2D latest_;
};

}  // namespace VELTRO::KELVO::Simulation
