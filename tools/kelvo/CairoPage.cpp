#include "CairoPage.h"

#include <cairo-pdf.h>

#include <algorithm>
#include <array>

#include "Failure.h"
#include "Files.h"

namespace VELTRO::KELVO::Tool {

namespace {

constexpr double PointsPerMillimetre = 72 / 25.4;
constexpr double LongerSidePixels = 2000;
constexpr std::size_t MostWaiting = 500;  // a path takes more than twice the time when it is twice as long

cairo_status_t Append(void* bytes, const unsigned char* data, unsigned count) {
  try {
    static_cast<std::string*>(bytes)->append(reinterpret_cast<const char*>(data), count);
    return CAIRO_STATUS_SUCCESS;
  } catch (const std::bad_alloc&) {
    return CAIRO_STATUS_NO_MEMORY;
  }
}

// Of a millimetre, in what the surface counts.
double ScaleOf(const Simulation::Box& box, CairoPage::Kind kind) {
  return kind == CairoPage::Kind::Pdf ? PointsPerMillimetre
                                      : LongerSidePixels / std::max(box.GetWidth(), box.GetHeight());
}

cairo_surface_t* MakeSurface(const Simulation::Box& box, CairoPage::Kind kind, std::string& bytes) {
  const double width = box.GetWidth() * ScaleOf(box, kind), height = box.GetHeight() * ScaleOf(box, kind);
  if (kind == CairoPage::Kind::Pdf)
    return cairo_pdf_surface_create_for_stream(&Append, &bytes, width, height);
  return cairo_image_surface_create(CAIRO_FORMAT_RGB24, std::max(1, static_cast<int>(width)),
                                    std::max(1, static_cast<int>(height)));
}

}  // namespace

CairoPage::CairoPage(const Simulation::Box& box, Kind kind)
    : kind_(kind),
      surface_(MakeSurface(box, kind, bytes_), &cairo_surface_destroy),
      cairo_(cairo_create(surface_.get()), &cairo_destroy) {
  Check(cairo_status(cairo_.get()));
  cairo_set_source_rgb(cairo_.get(), 1, 1, 1);
  cairo_paint(cairo_.get());
  const double scale = ScaleOf(box, kind);
  cairo_scale(cairo_.get(), scale, -scale);
  cairo_translate(cairo_.get(), -box.Lower.X(), -box.Upper.Y());
  cairo_set_line_cap(cairo_.get(), CAIRO_LINE_CAP_ROUND);
  cairo_set_line_join(cairo_.get(), CAIRO_LINE_JOIN_ROUND);
}

void CairoPage::Check(cairo_status_t status) const {
  if (status != CAIRO_STATUS_SUCCESS) {
    throw Refused(std::string("The picture cannot be drawn: ") + cairo_status_to_string(status) + ".");
  }
}

void CairoPage::BeginGroup(std::string_view, const Simulation::Style& style) {
  Stroke();
  cairo_t* const cairo = cairo_.get();
  cairo_set_source_rgba(cairo, style.Of.Red / 255.0, style.Of.Green / 255.0, style.Of.Blue / 255.0,
                        style.Opacity);
  cairo_set_line_width(cairo, style.Width);
  cairo_set_dash(cairo, &style.Dash, style.Dash > 0 ? 1 : 0, 0);
}

void CairoPage::Stroke() {
  cairo_stroke(cairo_.get());
  waiting_ = 0;
}

void CairoPage::AddStroke(std::span<const ClientLib::Point2D> points) {
  cairo_move_to(cairo_.get(), points.front().X(), points.front().Y());
  for (const auto& point : points.subspan(1)) {
    cairo_line_to(cairo_.get(), point.X(), point.Y());
    if (++waiting_ < MostWaiting) continue;
    Stroke();
    cairo_move_to(cairo_.get(), point.X(), point.Y());
  }
}

void CairoPage::AddDot(ClientLib::Point2D at, double diameter) {
  Stroke();
  cairo_arc(cairo_.get(), at.X(), at.Y(), diameter / 2, 0, 7);
  cairo_fill(cairo_.get());
}

void CairoPage::AddText(ClientLib::Point2D at, Side side, double size, std::string_view text) {
  Stroke();
  cairo_t* const cairo = cairo_.get();
  const std::string copy(text);
  cairo_save(cairo);
  cairo_translate(cairo, at.X(), at.Y());
  cairo_scale(cairo, 1, -1);
  cairo_set_source_rgb(cairo, 0.25, 0.25, 0.25);
  cairo_select_font_face(cairo, "sans-serif", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
  cairo_set_font_size(cairo, size);
  cairo_text_extents_t extents;
  cairo_text_extents(cairo, copy.c_str(), &extents);
  cairo_move_to(cairo, side == Side::Ends ? -extents.x_advance : 0, 0);
  cairo_show_text(cairo, copy.c_str());
  cairo_new_path(cairo);
  cairo_restore(cairo);
}

void CairoPage::Write(const std::string& file) {
  Stroke();
  Check(cairo_status(cairo_.get()));
  if (kind_ == Kind::Pdf) {
    cairo_surface_finish(surface_.get());
  } else {
    Check(cairo_surface_write_to_png_stream(surface_.get(), &Append, &bytes_));
  }
  Check(cairo_surface_status(surface_.get()));
  WriteFile(file, bytes_);
}

}  // namespace VELTRO::KELVO::Tool
