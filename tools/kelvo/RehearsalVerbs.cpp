// list check, list preview, font preview: what a list or a font does, seen without a card.
#include <cmath>
#include <nlohmann/json.hpp>
#include <set>
#include <system_error>

#include "CairoPage.h"
#include "FontFile.h"
#include "ListText.h"
#include "Session.h"
#include "Staging.h"
#include "drawing/Sheet.h"
#include "drawing/SvgPage.h"
#include "execution/FlowCheck.h"

namespace VELTRO::KELVO::Tool {

namespace {

using Simulation::Box;
using Simulation::Colouring;
using Simulation::Ink;
using Simulation::Rehearsal;
using Simulation::RunResult;

constexpr std::size_t MostFaults = 50;
constexpr double DefaultBeam = 0.1;

// Looks whether what is marked or jumped stays within the field.
class FieldGuard : public Simulation::Canvas {
 public:
  explicit FieldGuard(std::optional<Box> field) : field_(field) {}

  void Watch(const Rehearsal& rehearsal) { rehearsal_ = &rehearsal; }
  // The list's commands that lead out of the field, the first ones.
  const std::map<std::size_t, ClientLib::Point2D>& GetOutside() const { return outside_; }

  double GetBeam() const override { return DefaultBeam; }
  void BeginRun() override {}
  void AddSegment(Kind, ClientLib::Point2D, ClientLib::Point2D to, const Ink&) override { Look(to); }
  void AddDot(ClientLib::Point2D at, const Ink&) override { Look(at); }

 private:
  void Look(ClientLib::Point2D at) {
    if (!field_ || outside_.size() == MostFaults) return;
    if (at.X() >= field_->Lower.X() && at.X() <= field_->Upper.X() && at.Y() >= field_->Lower.Y() &&
        at.Y() <= field_->Upper.Y()) {
      return;
    }
    const std::int32_t caret = rehearsal_->GetCaret(OwnList);
    if (caret >= 0) outside_.try_emplace(static_cast<std::size_t>(caret), at);
  }

  const std::optional<Box> field_;
  const Rehearsal* rehearsal_ = nullptr;
  std::map<std::size_t, ClientLib::Point2D> outside_;
};

class Sketch : public Simulation::Canvas {
 public:
  explicit Sketch(double beam) : beam_(beam) {}

  const Simulation::Drawing& Get() const { return drawing_; }

  double GetBeam() const override { return beam_; }
  void BeginRun() override { drawing_.Clear(); }
  void AddSegment(Kind kind, ClientLib::Point2D from, ClientLib::Point2D to, const Ink& ink) override {
    drawing_.AddSegment(kind, from, to, kind == Kind::Mark ? ink : Ink());
  }
  void AddDot(ClientLib::Point2D at, const Ink& ink) override { drawing_.AddDot(at, ink); }

 private:
  const double beam_;
  Simulation::Drawing drawing_;
};

struct Fault {
  TextFault InText;
  const char* Kind;
  std::optional<std::size_t> Command;
};

std::string Number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.6g", value);
  return text;
}

std::vector<Fault> FindFaults(const Arguments& given) {
  const std::string& path = given.Text("FILE");
  const auto field = ParseField(given);
  Simulation::Stage stage = MakeStage(given);
  ListText text(path);
  ClientLib::CommandList list;
  std::vector<Fault> faults;
  for (TextFault& fault : text.Read(list, MostFaults)) faults.push_back({std::move(fault), "text", {}});
  if (!faults.empty()) return faults;
  const auto add = [&](const char* kind, std::size_t command, std::string what) {
    if (faults.size() < MostFaults)
      faults.push_back({{text.PlaceOf(command), std::move(what)}, kind, command});
  };
  for (const auto& fault : Simulation::CheckFlow(list)) add("flow", fault.First, fault.Text);
  Rehearsal rehearsal(std::move(stage));
  FieldGuard guard(field);
  guard.Watch(rehearsal);
  const std::size_t count = list.GetCommandCount();
  const RunResult result = rehearsal.Run(OwnList, std::move(list), guard);
  for (const auto& [command, at] : guard.GetOutside()) {
    add("field", command, "It leads out of the field, to X=" + Number(at.X()) + " Y=" + Number(at.Y()) + ".");
  }
  if (result.Error) {
    const bool isOwn =
        result.ErrorPlace && result.ErrorPlace->ListId == OwnList && result.ErrorPlace->Index < count;
    // The flow's faults have been told.
    const bool isTold =
        isOwn && std::ranges::any_of(faults, [&](const Fault& fault) {
          return fault.Command == result.ErrorPlace->Index && result.Error->ends_with(fault.InText.Text);
        });
    if (!isTold) add("run", isOwn ? result.ErrorPlace->Index : 0, *result.Error);
  }
  return faults;
}

ExitCode CheckList(Session& session, const Arguments& given) {
  const std::string& path = given.Text("FILE");
  const std::vector<Fault> faults = FindFaults(given);
  Json list = Json::array();
  for (const auto& [fault, kind, command] : faults) {
    if (!session.Out.AsJson) {
      session.Out.Line(Shown(path, fault) + "\n  " + fault.Place.Excerpt + "\n  " +
                       std::string(fault.Place.Caret, ' ') + "^");
      continue;
    }
    Json one = {
        {"line", fault.Place.Line}, {"column", fault.Place.Column}, {"kind", kind}, {"text", fault.Text}};
    if (command) one["command"] = *command;
    list.push_back(std::move(one));
  }
  if (session.Out.AsJson) session.Out.Print(list);
  if (faults.size() >= MostFaults) session.Out.Remark("There may be more: the first 50 are shown.");
  if (faults.empty()) session.Out.Remark("No faults found.");
  return faults.empty() ? ExitCode::Done : ExitCode::FaultsFound;
}

Colouring ParseColouring(const Arguments& given) {
  if (!given.Has("--colour")) return Colouring::None;
  const std::string& text = given.Text("--colour");
  if (text == "power") return Colouring::Power;
  if (text == "speed") return Colouring::Speed;
  if (text == "order") return Colouring::Order;
  throw WrongUsage("--colour takes power, speed or order, not '" + text + "'.");
}

void WriteSheet(const Simulation::Sheet& sheet, const std::string& file) {
  const auto isOfKind = [&](std::string_view end) { return file.ends_with(end); };
  if (isOfKind(".png") || isOfKind(".pdf")) {
    CairoPage page(sheet.GetBox(), isOfKind(".png") ? CairoPage::Kind::Png : CairoPage::Kind::Pdf);
    sheet.Draw(page);
    page.Write(file);
    return;
  }
  try {
    Simulation::SvgPage page(file, sheet.GetBox(), Simulation::SvgPage::Precision::Compact);
    sheet.Draw(page);
    page.Finish();
  } catch (const std::system_error& error) {
    throw Refused("Cannot write '" + file + "': " + error.code().message() + ".");
  }
}

const std::string& ParseDrawingName(const Arguments& given) {
  const std::string& file = given.Text("-o");
  if (!file.empty() && !file.ends_with(".svg") && !file.ends_with(".png") && !file.ends_with(".pdf")) {
    throw WrongUsage("-o takes a name that ends in .svg, .png or .pdf, not '" + file + "'.");
  }
  return file;
}

double ParseBeam(const Arguments& given) {
  const double beam = given.Has("--beam") ? ParseNumber("--beam", given.Text("--beam")) : DefaultBeam;
  if (!(beam > 0)) throw WrongUsage("--beam takes a width above 0.");
  return beam;
}

ExitCode PreviewList(Session& session, const Arguments& given) {
  const std::string& path = given.Text("FILE");
  const std::string& file = ParseDrawingName(given);
  Simulation::SheetSettings settings;
  settings.By = ParseColouring(given);
  settings.Field = ParseField(given);
  settings.Beam = ParseBeam(given);
  Rehearsal rehearsal(MakeStage(given));
  ListText text(path);
  Sketch sketch(settings.Beam);
  const RunResult result = rehearsal.Run(OwnList, text.ReadWhole(), sketch);
  if (result.Error) {
    if (result.ErrorPlace && result.ErrorPlace->ListId == OwnList) {
      throw Refused(Shown(path, {text.PlaceOf(result.ErrorPlace->Index), *result.Error}));
    }
    throw Refused("'" + path + "': " + *result.Error);
  }
  if (!file.empty()) WriteSheet(Simulation::Sheet(sketch.Get(), settings), file);
  if (sketch.Get().IsCut()) {
    session.Out.Remark("The drawing has the first " + std::to_string(Simulation::Drawing::MostSegments) +
                       " segments.");
  }
  if (result.Aborted) session.Out.Remark("The run ends where the list waits for a second start.");
  const double time = result.Stats.ExecutionTime;
  const double share = time > 0 ? result.Totals.LaserTime / time : 0;
  if (session.Out.AsJson) {
    session.Out.Print({{"time", time},
                       {"markedLength", result.Totals.MarkedLength},
                       {"jumpedLength", result.Totals.JumpedLength},
                       {"laserShare", share}});
    return ExitCode::Done;
  }
  session.Out.Table({}, {{"Time", Number(time / 1e6) + " s"},
                         {"Marked", Number(result.Totals.MarkedLength) + " mm"},
                         {"Jumped", Number(result.Totals.JumpedLength) + " mm"},
                         {"Laser on", Number(100 * share) + " % of the time"}});
  return ExitCode::Done;
}

// What is drawn of a list. Throws Failure, Refused.
Box BoxOf(const ClientLib::CommandList& list, const std::string& name, double beam) {
  Sketch sketch(beam);
  const RunResult result = Rehearsal({}).Run(OwnList, list, sketch);
  if (result.Error) throw Refused(name + ": " + *result.Error);
  return sketch.Get().GetBox();
}

// All characters, sixteen in a line, each on a place that the largest has room on.
ExitCode PreviewFont(Session& session, const Arguments& given) {
  constexpr std::size_t Columns = 16;
  const std::string& path = given.Text("FILE");
  const std::string& file = ParseDrawingName(given);
  const double beam = ParseBeam(given);
  const ClientLib::Font font = ReadFont(0, path);
  double width = beam, height = beam;
  for (const auto& [code, glyph] : font.CharContainer) {
    const Box box = BoxOf(glyph, "'" + Clean(path) + "', character '" + CharacterName(code) + "'", beam);
    width = std::max(width, box.GetWidth());
    height = std::max(height, box.GetHeight());
  }
  ClientLib::CommandList list;
  double column = 0, line = 0;
  for (const auto& [code, glyph] : font.CharContainer) {
    list.AppendJumpAbs(ClientLib::Point2D{{1.5 * width * column, -1.5 * height * line}});
    list.Append(glyph);
    column = column + 1 < Columns ? column + 1 : 0;
    if (column == 0) ++line;
  }
  Sketch sketch(beam);
  Rehearsal({}).Run(OwnList, std::move(list), sketch);
  Simulation::SheetSettings settings;
  settings.Beam = beam;
  WriteSheet(Simulation::Sheet(sketch.Get(), settings), file.empty() ? "font.svg" : file);
  session.Out.Remark(std::to_string(font.CharContainer.size()) + " characters.");
  return ExitCode::Done;
}

std::vector<Parameter> WithStage(std::vector<Parameter> parameters) {
  parameters.insert(parameters.end(), StageOptions().begin(), StageOptions().end());
  return parameters;
}

}  // namespace

std::span<const Verb> RehearsalVerbs() {
  static const Parameter File{"FILE", "", "Text of a list; - for standard input"};
  static const Verb Rows[] = {
      {"list check", "Find what is wrong with a list, without a card", WithStage({File}), &CheckList},
      {"list preview", "Draw a list and estimate its time, without a card",
       WithStage({File,
                  {"-o", "FILE", "Write the drawing into this file: .svg, .png or .pdf"},
                  {"--colour", "BY", "Colours tell power, speed or order"},
                  {"--beam", "WIDTH", "Width of marks, in millimetres (0.1)"}}),
       &PreviewList},
      {"font preview",
       "Draw the characters of a font",
       {{"FILE", "", "What 'font get' wrote"},
        {"-o", "FILE", "Write the drawing into this file: .svg, .png or .pdf (font.svg)"},
        {"--beam", "WIDTH", "Width of marks, in millimetres (0.1)"}},
       &PreviewFont},
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::Tool
