// Keeps the picture of the runs in a file, if one is wanted.
#pragma once

#include <string>

#include "drawing/Canvas.h"
#include "drawing/Drawing.h"

namespace VELTRO::KELVO::Simulation {

struct PlotterSettings {
  std::string File;  // empty: no picture
  double Beam = 0.1;
  bool AllRuns = false;  // one picture of all runs, not of the latest alone
};

// One thread at a time.
class Plotter : public Canvas {
 public:
  // Writes an empty picture, so that a file that cannot be written is found out at once and none is left from
  // an earlier card. Throws as WritePicture does.
  explicit Plotter(PlotterSettings settings);

  double GetBeam() const override { return settings_.Beam; }
  void BeginRun() override;
  // All ink is one colour: marks that continue each other are one line.
  void AddSegment(Kind kind, ClientLib::Point2D from, ClientLib::Point2D to, const Ink& ink) override;
  void AddDot(ClientLib::Point2D at, const Ink& ink) override;
  // Writes the picture. Throws as WritePicture does.
  void EndRun();
  // Whether the latest picture could not be written.
  bool IsUnwritten() const { return unwritten_; }

 private:
  bool IsWanted() const { return !settings_.File.empty(); }

  const PlotterSettings settings_;
  Drawing drawing_;
  bool unwritten_ = false;
};

}  // namespace VELTRO::KELVO::Simulation
