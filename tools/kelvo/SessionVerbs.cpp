// session show: a recorded session for people.
#include <nlohmann/json.hpp>

#include "Session.h"
#include "SessionShow.h"
#include "Verb.h"
#include "session/SessionReader.h"

namespace VELTRO::KELVO::Tool {

namespace {

using ClientLib::Recording::CutShort;
using ClientLib::Recording::SessionReader;

std::string HeadOf(const SessionReader& reader) {
  const auto& head = reader.GetHead();
  std::string text = "Recorded " + reader.GetStarted() + " by " + head.By;
  if (!head.SerialNumber.empty()) text += ", card " + head.SerialNumber + ", firmware " + head.Firmware;
  return Clean(text + (head.HasContent ? "." : "; contents of files are left out."));
}

ExitCode ShowSession(Session& session, const Arguments& given) {
  SessionReader reader(given.Text("FILE"));
  const bool isStatistics = given.Has("--stats");
  AnswerTimes times;
  AnswerStatistics statistics;
  Json lines = Json::array();
  std::string cut;
  if (!session.Out.AsJson) session.Out.Line(HeadOf(reader));
  try {
    while (const auto line = reader.Next()) {
      const auto took = times.Take(*line);
      if (isStatistics) {
        statistics.Take(*line, took);
      } else if (session.Out.AsJson) {
        lines.push_back(JsonOfLine(*line, took));
      } else {
        session.Out.Line(ShownLine(*line, took));
      }
    }
  } catch (const CutShort& error) {
    cut = error.what();
  }
  if (isStatistics) {
    statistics.Print(session.Out);
  } else if (session.Out.AsJson) {
    session.Out.Print(lines);
  }
  if (cut.empty()) return ExitCode::Done;
  session.Out.Remark(cut);
  return ExitCode::FaultsFound;
}

}  // namespace

std::span<const Verb> SessionVerbs() {
  static const Verb Rows[] = {
      {"session show",
       "Show a recorded session",
       {{"FILE", "", "The recording"},
        {"--stats", "", "How long the answers of each method took, with a histogram"}},
       &ShowSession},
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::Tool
