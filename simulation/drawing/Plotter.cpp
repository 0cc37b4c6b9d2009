#include "drawing/Plotter.h"

#include <utility>

#include "drawing/Picture.h"

namespace VELTRO::KELVO::Simulation {

using ClientLib::Point2D;

Plotter::Plotter(PlotterSettings settings) : settings_(std::move(settings)) {
  if (IsWanted()) WritePicture(drawing_, settings_.Beam, settings_.File);
}

void Plotter::BeginRun() {
  if (!settings_.AllRuns) drawing_.Clear();
}

void Plotter::AddSegment(Kind kind, Point2D from, Point2D to, const Ink&) {
  if (IsWanted()) drawing_.AddSegment(kind, from, to);
}

void Plotter::AddDot(Point2D at, const Ink&) {
  if (IsWanted()) drawing_.AddDot(at);
}

void Plotter::EndRun() {
  if (!IsWanted()) return;
  unwritten_ = true;
  WritePicture(drawing_, settings_.Beam, settings_.File);
  unwritten_ = false;
}

}  // namespace VELTRO::KELVO::Simulation
