#include "drawing/SvgWriter.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>
#include <string_view>
#include <system_error>

#include "common/ReplacedFile.h"

namespace VELTRO::KELVO::Simulation {

using ClientLib::Point2D;

namespace {

constexpr double MarginShare = 0.05;     // of the larger side
constexpr double MarginBeams = 5;        // at least, in widths of the beam
constexpr double JumpWidthBeams = 0.25;  // jumps are drawn this thin

// Text on its way into a file. Numbers never depend on the locale.
class Output {
 public:
  explicit Output(ClientLib::ReplacedFile& file) : file_(file) {}

  Output& operator<<(std::string_view text) {
    text_ += text;
    if (text_.size() >= PieceBytes) Flush();
    return *this;
  }
  // Nine digits: no trace of rounding in sums of relative moves, and a nanometre in a metre.
  Output& operator<<(double number) {
    char text[32];
    const auto end = std::to_chars(text, text + sizeof text, number + 0.0, std::chars_format::general, 9).ptr;
    return *this << std::string_view(text, static_cast<std::size_t>(end - text));
  }
  void Flush() {
    file_.Write(text_);
    text_.clear();
  }

 private:
  static constexpr std::size_t PieceBytes = 1 << 16;

  ClientLib::ReplacedFile& file_;
  std::string text_;
};

void WriteHead(Output& out, const Drawing::Box& box, double beam) {
  const double width = box.Upper.X() - box.Lower.X();
  const double height = box.Upper.Y() - box.Lower.Y();
  const double margin = std::max(MarginShare * std::max(width, height), MarginBeams * beam);
  const double fullWidth = width + 2 * margin;
  const double fullHeight = height + 2 * margin;
  out << "<?xml version='1.0' encoding='UTF-8'?>\n"
      << "<svg xmlns='http://www.w3.org/2000/svg' width='" << fullWidth << "mm' height='" << fullHeight
      << "mm' viewBox='" << box.Lower.X() - margin << " " << -box.Upper.Y() - margin << " " << fullWidth
      << " " << fullHeight << "'>\n";
}

void WriteStrokes(Output& out, const Drawing& drawing, Drawing::Kind kind) {
  for (const Drawing::Stroke& stroke : drawing.GetStrokes()) {
    if (stroke.StrokeKind != kind) continue;
    out << "<polyline points='";
    const char* separator = "";
    for (const Point2D& point : drawing.PointsOf(stroke)) {
      out << separator << point.X() << "," << point.Y();
      separator = " ";
    }
    out << "'/>\n";
  }
}

void WriteDots(Output& out, const Drawing& drawing, double beam) {
  for (const Point2D& dot : drawing.GetDots()) {
    out << "<circle cx='" << dot.X() << "' cy='" << dot.Y() << "' r='" << beam / 2 << "'/>\n";
  }
}

void WriteBody(Output& out, const Drawing& drawing, double beam) {
  if (drawing.IsCut()) {
    out << "<!-- Cut: only the first " << static_cast<double>(Drawing::MostSegments)
        << " segments are drawn. -->\n";
  }
  out << "<g transform='scale(1 -1)' fill='none' stroke-linecap='round' stroke-linejoin='round'>\n"
      << "<g id='jumps' stroke='#3070c0' stroke-opacity='0.35' stroke-width='" << JumpWidthBeams * beam
      << "'>\n";
  WriteStrokes(out, drawing, Drawing::Kind::Jump);
  out << "</g>\n<g id='marks' stroke='#202020' stroke-width='" << beam << "'>\n";
  WriteStrokes(out, drawing, Drawing::Kind::Mark);
  out << "</g>\n<g id='dots' fill='#202020'>\n";
  WriteDots(out, drawing, beam);
  out << "</g>\n</g>\n</svg>\n";
}

}  // namespace

void WriteSvg(const Drawing& drawing, double beam, const std::string& file) {
  try {
    ClientLib::ReplacedFile replaced(file);
    Output out(replaced);
    WriteHead(out, drawing.GetBox(), beam);
    WriteBody(out, drawing, beam);
    out.Flush();
    replaced.Commit();
  } catch (const std::system_error& error) {
    throw std::runtime_error("Cannot write '" + file + "': " + error.code().message() + ".");
  }
}

}  // namespace VELTRO::KELVO::Simulation
