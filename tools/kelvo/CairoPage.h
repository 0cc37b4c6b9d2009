// A page as a PNG or PDF file, by Cairo.
#pragma once

#include <cairo.h>

#include <memory>
#include <string>

#include "drawing/Page.h"

namespace VELTRO::KELVO::Tool {

class CairoPage : public Simulation::Page {
 public:
  enum class Kind { Png, Pdf };

  // Throws Failure, Refused.
  CairoPage(const Simulation::Box& box, Kind kind);

  void BeginGroup(std::string_view name, const Simulation::Style& style) override;
  void AddStroke(std::span<const ClientLib::Point2D> points) override;
  void AddDot(ClientLib::Point2D at, double diameter) override;
  void AddText(ClientLib::Point2D at, Side side, double size, std::string_view text) override;
  // Puts the file in its place. Throws Failure, Refused.
  void Write(const std::string& file);

 private:
  void Stroke();
  void Check(cairo_status_t status) const;

  const Kind kind_;
  std::string bytes_;  // of a PDF, as they come; of a PNG at the end
  const std::unique_ptr<cairo_surface_t, void (*)(cairo_surface_t*)> surface_;
  const std::unique_ptr<cairo_t, void (*)(cairo_t*)> cairo_;
  std::size_t waiting_ = 0;  // points of strokes that are not drawn yet
};

}  // namespace VELTRO::KELVO::Tool
