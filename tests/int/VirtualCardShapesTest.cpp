// What the virtual card draws, and how long it takes: against points computed from the formulas.
#include <complex>
#include <numbers>

#include "drawing/Picture.h"
#include "int/CardClient.h"

namespace VELTRO::KELVO::Test {
namespace {

using std::numbers::pi;
using InPlane = std::complex<double>;
using Formula = std::function<Point3D(double)>;  // t from 0 to 1

// The values of an attribute in a group of the picture, as "A|B".
Text Part(const Text& svg, const Text& group, const Text& attribute) {
  Text result;
  std::size_t at = svg.find("id='" + group);
  const std::size_t end = svg.find("</g>", at);
  while ((at = svg.find(" " + attribute + "='", at)) < end) {
    at += attribute.size() + 3;
    result += (result.empty() ? "" : "|") + svg.substr(at, svg.find('\'', at) - at);
  }
  return result;
}

// From the lines of the path.
double Distance(const std::vector<InPlane>& path, InPlane p) {
  double least = HUGE_VAL;
  for (std::size_t i = 1; i < path.size(); ++i) {
    const InPlane line = path[i] - path[i - 1], way = p - path[i - 1];
    const double share = std::norm(line) > 0 ? std::real(way * std::conj(line)) / std::norm(line) : 0;
    least = std::min(least, std::abs(way - std::clamp(share, 0.0, 1.0) * line));
  }
  return least;
}

Formula Ellipse(InPlane centre, InPlane axes, double rotation, double from, double sweep, double z,
                double endZ) {
  return [=](double t) {
    const double angle = from + sweep * t;
    const InPlane local(axes.real() * std::cos(angle), axes.imag() * std::sin(angle));
    const InPlane p = centre + std::polar(1.0, rotation) * local;
    return Point3D{{p.real(), p.imag(), z + t * (endZ - z)}};
  };
}

// By repeated division.
Formula Bezier(std::vector<Point3D> points) {
  return [=](double t) {
    auto p = points;
    for (; p.size() > 1; p.pop_back()) {
      for (std::size_t i = 0; i < 3 * (p.size() - 1); ++i) {
        double& c = p[i / 3].Coordinates[i % 3];
        c += t * (p[i / 3 + 1].Coordinates[i % 3] - c);
      }
    }
    return p[0];
  };
}

struct Shape {
  std::vector<const char*> Commands;  // that mean the same, from 1,2,3
  Formula Points;
  double Length = 0;  // of the way, if it is not the formula's
};

TEST(VirtualCardShapes, LieOnTheirCurvesFromEndToEnd) {
  SKIP_UNDER_THREAD_SANITIZER();
  const double arc = std::atan2(-4, -3), elliptic = std::atan2(0.6, 0.8);
  const Shape shapes[] = {
      {{"ARCA 4,6 -2.5", "ARCR 3,4 -2.5", "ARC3A 4,6,3 -2.5", "ELLCA 4,6 1.0 0.7 -2.5"},
       Ellipse({4, 6}, {5, 5}, 0, arc, -2.5, 3, 3)},
      {{"ARC3A 4,6,10 7.0", "ARC3R 3,4,7 7.0"}, Ellipse({4, 6}, {5, 5}, 0, arc, 7, 3, 10)},
      {{"ELLA 4,6 5.0 2.0 0.5", "ELLR 3,4 5.0 2.0 0.5", "ELL3A 4,6,10 5.0 2.0 0.5",
        "ELL3R 3,4,7 5.0 2.0 0.5"},
       Ellipse({4, 6}, {5, 2}, 0.5, 0, 2 * pi, 3, 3)},
      {{"ELLCA 7,-2 2.0 1.5707963267948966 3.0", "ELLCR 6,-4 2.0 1.5707963267948966 3.0"},
       Ellipse({7, -2}, {5, 10}, pi / 2, elliptic, 3, 3, 3)},
      {{"ELLC3A 7,-2,-1 2.0 1.5707963267948966 3.0", "ELLC3R 6,-4,-4 2.0 1.5707963267948966 3.0"},
       Ellipse({7, -2}, {5, 10}, pi / 2, elliptic, 3, 3, -1)},
      {{"ELLG 1,1,1 3,0,4 1,5,0 -4.0"},
       [](double t) {
         const double c = std::cos(-4 * t), s = std::sin(-4 * t);
         return Point3D{{1 + 3 * c + s, 1 + 5 * s, 1 + 4 * c}};
       }},
      {{"BEZA 5,9 11,0", "BEZR 4,7 10,-2"}, Bezier({{{1, 2, 3}}, {{5, 9, 3}}, {{11, 0, 3}}})},
      {{"BEZ3A 5,9,-9 11,0,7", "BEZ3R 4,7,-12 10,-2,4"}, Bezier({{{1, 2, 3}}, {{5, 9, -9}}, {{11, 0, 7}}})},
      {{"BEZCA 5,9 -3,9 11,0", "BEZCR 4,7 -4,7 10,-2"},
       Bezier({{{1, 2, 3}}, {{5, 9, 3}}, {{-3, 9, 3}}, {{11, 0, 3}}})},
      {{"BEZC3A 5,9,-9 -3,9,0 11,0,7", "BEZC3R 4,7,-12 -4,7,-3 10,-2,4"},
       Bezier({{{1, 2, 3}}, {{5, 9, -9}}, {{-3, 9, 0}}, {{11, 0, 7}}})},
      // Scaled by 2 and 3, then x and y exchanged: a circle becomes an ellipse.
      {{"HSCA 2,1,1 SCF 1,3 TRA F64[0;1;0;1;0;0;0;0;1] F64[0;0;0] JA 1,0 ARCA 0,0 6.283185307179586"},
       Ellipse({0, 0}, {3, 2}, 0, pi / 2, -2 * pi, 3, 3)},
      {{"WOBA 0.5,0.25 WOBF 0.001,0.002 WOBP 0,1.5 WOBE true MA 11,2"},
       [](double t) {
         const double x = std::sin(20 * pi * t), y = std::sin(40 * pi * t + 1.5);
         return Point3D{{1 + 10 * t + 0.5 * x, 2 + 0.25 * y, 3}};
       },
       10},
  };
  constexpr int Samples = 4000;
  const PictureFile picture;
  LoneClient client({"--speed", "max", "--svg", picture.Name(), "--beam", "0.1"});
  for (const auto& [commands, formula, way] : shapes) {
    std::vector<InPlane> curve, drawn;
    double length = 0;
    for (int i = 0; i <= Samples; ++i) {
      const Point3D p = formula(1.0 * i / Samples), last = formula(std::max(0.0, i - 1.0) / Samples);
      curve.emplace_back(p.X(), p.Y());
      length += std::hypot(p.X() - last.X(), p.Y() - last.Y(), p.Z() - last.Z());
    }
    for (const Text command : commands) {
      SCOPED_TRACE(command);
      EXPECT_EQ(client.Run("JS 1e12 J3A 1,2,3 " + command).front(), "done 7");
      EXPECT_NEAR(client.Lists.GetLastExecutionStats().ExecutionTime, 1000 * (way > 0 ? way : length), 0.01);
      drawn.clear();
      double x, y;
      const Text marks = Part(picture.Content(), "marks", "points");
      std::istringstream points(marks);
      for (Text p; points >> p && std::sscanf(p.c_str(), "%lf,%lf", &x, &y) == 2;) drawn.emplace_back(x, y);
      ASSERT_GT(drawn.size(), 10U);
      EXPECT_EQ(marks.find('|'), Text::npos) << "more than one stroke";
      EXPECT_LT(std::abs(drawn.front() - curve.front()) + std::abs(drawn.back() - curve.back()), 1e-6);
      // A hundredth of the beam's width, and a bit for the samples.
      for (const InPlane p : drawn) EXPECT_LT(Distance(curve, p), 1e-4);
      for (const InPlane p : curve) EXPECT_LT(Distance(drawn, p), 0.0011);
    }
  }
}

TEST(VirtualCardShapes, AreDrawnInTheTimeThatTheyTake) {
  // List, microseconds, macro vectors, strokes, x and y of dots.
  const std::tuple<const char*, double, int, const char*, const char*> cases[] = {
      {"DLP F64[2;1] DLE true 0.5 MA 10,0", 10000, 1, "0,0 1.5,0|2.5,0 4.5,0|5.5,0 7.5,0|8.5,0 10,0", " "},
      {"DLP F64[3] DLE true 0.0 MA 2,0 MA 2,2 MA 2,9 JA 5,5 MA 7,5", 13500, 5, "0,0 2,0 2,1|2,4 2,7|5,5 7,5",
       " "},
      {"DLP F64[3] DLE true 0.0 MA 2,0 DLE true 1.0 MA 6,0", 6000, 2, "0,0 2,0 4,0", " "},
      {"DLP F64[1] DLE true 0.0 DLP F64[] MA 3,0", 3000, 1, "0,0 3,0", " "},
      {"BMPA 0,0 4,0 U16[9;0;0;5] 0 PWSC 0.0 1 BMP3R 0,0,0 0,2,0 U16[7] 1", 6000, 2, "0,0 1,0|3,0 4,0", " "},
      {"JD 50.0 BMPR 1,0 3,0 U16[5] 0", 100 + 50 + 2000, 1, "1,0 3,0", " "},
      {"JS 1e12 JD 10.0 JA 1,1 PASR 0,0 4,0 U16[9;0;9] F64[100;50] 0", 40 + 200, 2, "", "1|5 1|1"},
      {"JS 1e12 PAS3A 1,2,3 1,2,9 U16[1] F64[5;6] 1 PASA 3,4 9,9 U16[1] F64[1] 0", 12, 2, "", "1|1|3 2|2|4"},
      {"JS 1e12 JD 3.0 LY 0.5 JASA F64[1;2;3;4] 5 JAS3A F64[5;6;7] 1 JASA F64[8;8] 0", 22 + 12, 3, "",
       "1|3|5 2|4|6"},
      {"LONP 10 false JR 5,0", 500, 1, "0,0 1,0", " "},
      {"LONP 10 true LONP 10 false SL 50.0", 150, 0, "", "0|0 0|0"},
      {"LONP 10 false LOF JR 5,0", 500, 1, "", "0 0"},
      {"LONP 10 false LON JR 5,0", 500, 1, "0,0 5,0", " "},
      {"LN 400.0 LF -300.0 MA 1,0 LON JR 1,0", 1000 + 100, 2, "0,0 1,0 2,0", " "},
      {"JR 1,0", 100, 1, "", " "},
      {"LON UV2 P2I[1000,0;1500,500] LOF PV3 P3D[3,3,1]", 30, 2, "0,0 1,0 1.5,0.5", " "},
      {"JA 10,0 SCF 2,0 MR 1,7", 1000 + 2000, 2, "10,0 12,0", " "},
      {"PD 100.0 VPD true MA 1,0 MA 2,0 MA 2,1 MA 2,0", 4150, 4, "0,0 1,0 2,0 2,1 2,0", " "},
      {"JD 100.0 JDM 20.0 JLL 10.0 VJD true JA 5,0 JA 25,0", 560 + 2100, 2, "", " "},
      {"SKMMEMCH nan SKWM 2 SKET 10.0 SKAD 3.0 SKDD 4.0 SKMCH 0.5 MA 1,0 MA 2,0 MA 2,1", 13 + 27 + 14 + 3000,
       3, "0,0 1,0 2,0 2,1", " "},
      {"SKWM 1 SKET 10.0 SKAD 3.0 SKDD 4.0 PD 7.0 MA 1,0 MA 1,1 JA 1,2", 13 + 1000 + 7 + 1000 + 14 + 100, 3,
       "0,0 1,0 1,1", " "},
      {"SKET 10.0 SKAD 3.0 SKDD 4.0 MA 1,0", 1000, 1, "0,0 1,0", " "},
      {"SPSC 2.0 MA 1,0 JA 2,0 MAGS 0.01 SPMA 2.0 false SPMR 1.0 true", 500 + 50 + 100, 2, "0,0 1,0", " "},
      {"MFSTP 1,0 MFSTP3 1,0,5", 100 + 500, 2, "", " "},
  };
  const PictureFile picture;
  LoneClient client({"--speed", "max", "--svg", picture.Name()});
  for (const auto& [list, microseconds, macroVectors, strokes, dots] : cases) {
    SCOPED_TRACE(list);
    client.Run("J3A 0,0,0");
    EXPECT_EQ(client.Run(list).front(), "done 7");
    const ListExecutionStats stats = client.Lists.GetLastExecutionStats();
    EXPECT_NEAR(stats.ExecutionTime, microseconds, 1e-6);
    EXPECT_EQ(stats.MacroVectors, macroVectors);
    EXPECT_EQ(Part(picture.Content(), "marks", "points"), strokes);
    EXPECT_EQ(Part(picture.Content(), "dots", "cx") + " " + Part(picture.Content(), "dots", "cy"), dots);
  }
}

TEST(VirtualCardPicture, KeepsTheFirstOfTooMany) {
  const PictureFile picture;
  Simulation::Drawing drawing;
  for (std::size_t i = 0; i < Simulation::Drawing::MostSegments; ++i) {
    drawing.AddSegment(Simulation::Drawing::Kind::Mark, {}, {});
  }
  EXPECT_FALSE(drawing.IsCut());
  drawing.AddDot({});
  EXPECT_TRUE(drawing.GetDots().empty());
  WritePicture(drawing, 1, picture.Name());
  EXPECT_THAT(picture.Content(), HasSubstr("<!-- Cut: only the first 2000000 segments are drawn. -->"));
}

TEST(VirtualCardShapes, AreAbortedInTheMiddle) {
  LoneClient client({"--speed", "max", "--beam", "1e-9"});
  client.Run("PI 1 ARCA 1e6,0 6e5", "progress");
  const Stopwatch watch;
  client.Lists.AbortExecution();
  EXPECT_LT(watch.Milliseconds(), 10000);
  EXPECT_EQ(client.EventsUpTo("idle"), Events{"idle 7"});
  EXPECT_LT(client.Lists.GetLastExecutionStats().ExecutionTime, 6e5 * 1e6 / 0.001 / 2);
}

}  // namespace
}  // namespace VELTRO::KELVO::Test
