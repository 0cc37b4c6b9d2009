// Keeps the picture of the runs in a file, if one is wanted.
#pragma once

#include <string>

#include "drawing/Drawing.h"

namespace VELTRO::KELVO::Simulation {

struct PlotterSettings {
  std::string File;  // empty: no picture
  double Beam = 0.1;
  bool AllRuns = false;  // one picture of all runs, not of the latest alone
};

// One thread at a time.
class Plotter {
 public:
  // Writes an empty picture, so that a file that cannot be written is found out at once and none is left from
  // an earlier card. Throws as WriteSvg does.
  explicit Plotter(PlotterSettings settings);

  double GetBeam() const { return settings_.Beam; }

  void BeginRun();
  void AddSegment(Drawing::Kind kind, ClientLib::Point2D from, ClientLib::Point2D to);
  void AddDot(ClientLib::Point2D at);
  // Writes the picture. Throws as WriteSvg does.
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
