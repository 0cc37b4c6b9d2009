// laser: its status, and what fires or arms it.
#include <kelvo/kelvo.h>
#include <unistd.h>

#include <cstdio>
#include <nlohmann/json.hpp>

#include "Session.h"
#include "Verb.h"

namespace VELTRO::KELVO::Tool {

namespace {

// Asks on the terminal unless --yes was given. Throws Failure, Refused, for any answer but yes, and without a terminal.
void Confirm(const Arguments& given, const char* question) {
  if (given.Has("--yes")) return;
  if (isatty(STDIN_FILENO) != 1 || isatty(STDERR_FILENO) != 1) {
    throw Refused("This needs somebody who says yes.", "--yes says it without a terminal.");
  }
  std::fprintf(stderr, "%s [y/N] ", question);
  char answer[16] = "";
  if (std::fgets(answer, sizeof answer, stdin) == nullptr || (answer[0] != 'y' && answer[0] != 'Y')) {
    throw Refused("Not done.");
  }
}

ExitCode ShowLaser(Session& session, const Arguments&) {
  std::uint32_t status = 0;
  session.Check(vlLaserReadLaserStatus(session.Card(), &status));
  const Json told = {{"pilot", (status & vlLaserStatus_Pilot) != 0},
                     {"armed", (status & vlLaserStatus_Armed) != 0},
                     {"alarm", (status & vlLaserStatus_Alarm) != 0}};
  if (session.Out.AsJson) {
    session.Out.Print(told);
    return ExitCode::Done;
  }
  std::vector<std::vector<std::string>> rows;
  for (const auto& [name, isOn] : told.items()) rows.push_back({name, isOn.get<bool>() ? "yes" : "no"});
  session.Out.Table({}, rows);
  return ExitCode::Done;
}

ExitCode SwitchPilot(Session& session, const Arguments& given) {
  const std::string& state = given.Text("STATE");
  if (state != "on" && state != "off") throw WrongUsage("STATE takes on or off, not '" + Clean(state) + "'.");
  if (state == "on") Confirm(given, "Switch the pilot laser on?");
  session.Check(vlLaserEnablePilot(session.Card(), state == "on" ? 1 : 0));
  return ExitCode::Done;
}

ExitCode ArmLaser(Session& session, const Arguments& given) {
  Confirm(given, "Arm the laser?");
  session.Check(vlLaserArmLaser(session.Card(), 1));
  return ExitCode::Done;
}

ExitCode DisarmLaser(Session& session, const Arguments&) {
  session.Check(vlLaserArmLaser(session.Card(), 0));
  return ExitCode::Done;
}

constexpr Parameter Yes{"--yes", "", "Do not ask"};

}  // namespace

std::span<const Verb> LaserVerbs() {
  static const Verb Rows[] = {
      {"laser status", "Show the status of the laser", {}, &ShowLaser},
      {"laser pilot",
       "Switch the pilot laser; asks before it is switched on",
       {{"STATE", "", "on or off"}, Yes},
       &SwitchPilot},
      {"laser arm", "Arm the laser; asks before", {Yes}, &ArmLaser},
      {"laser disarm", "Disarm the laser", {}, &DisarmLaser},
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::Tool
