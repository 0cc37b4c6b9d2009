// log: what goes between the tool and the card, and what the card has noted itself.
#include <kelvo/kelvo.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "LoggedRuns.h"
#include "Session.h"
#include "Verb.h"

namespace VELTRO::KELVO::Tool {

namespace {

constexpr std::size_t MostLogBytes = std::size_t{64} << 20;

ExitCode SwitchLogOn(Session& session, const Arguments& given) {
  if (given.Text("DIR").empty()) throw WrongUsage("DIR is empty.");
  LogRunsIn(given.Text("DIR"));
  session.Out.Remark("Every run writes a log into '" + Clean(given.Text("DIR")) + "' until 'kelvo log off'.");
  return ExitCode::Done;
}

ExitCode SwitchLogOff(Session&, const Arguments&) {
  LogRunsIn("");
  return ExitCode::Done;
}

ExitCode ShowCardLog(Session& session, const Arguments&) {
  // Only what is written to takes memory.
  const std::unique_ptr<char[]> text(new char[MostLogBytes]);
  std::uint32_t length = 0;
  session.Check(vlInternalGetLog(session.Card(), text.get(), MostLogBytes, &length));
  Json lines = Json::array();
  std::istringstream stream(std::string(text.get(), length));
  for (std::string line; std::getline(stream, line);) {
    if (!session.Out.AsJson) session.Out.Line(Clean(line));
    lines.push_back(std::move(line));
  }
  if (session.Out.AsJson) session.Out.Print(lines);
  return ExitCode::Done;
}

}  // namespace

std::span<const Verb> LogVerbs() {
  static const Verb Rows[] = {
      {"log on",
       "From now on, write the calls to the card and its answers into files, one for each run of the tool",
       {{"DIR", "", "The local directory for the files"}},
       &SwitchLogOn},
      {"log off", "Do not log runs any more", {}, &SwitchLogOff},
      {"log show", "Show the latest lines of the card's own log", {}, &ShowCardLog},
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::Tool
