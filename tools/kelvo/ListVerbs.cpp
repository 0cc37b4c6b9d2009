// list: jobs on their way to the card, and their runs.
#include <kelvo/kelvo.h>

#include <chrono>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <optional>

#include "Files.h"
#include "Interrupt.h"
#include "ListText.h"
#include "RecordJson.h"
#include "Session.h"
#include "Settings.h"
#include "Spinner.h"
#include "Verb.h"
#include "config/ProcessVariables.h"
#include "execution/Rehearsal.h"

namespace VELTRO::KELVO::Tool {

namespace {

constexpr std::size_t MostListBytes = std::size_t{512} << 20;
constexpr std::size_t LongListBytes = std::size_t{64} << 20;
constexpr std::int32_t NoListField = -1;
constexpr std::int32_t LookMs = 100;

// A list of the library that goes with the object.
class LocalList {
 public:
  LocalList(Session& session, std::int64_t handle) : Handle(session.Check(handle)) {}
  ~LocalList() { vlListReleaseHandle(Handle); }
  LocalList(const LocalList&) = delete;
  LocalList& operator=(const LocalList&) = delete;

  const std::int64_t Handle;
};

std::string ReadList(const std::string& path) {
  // Before so much is read, it is known to be a list.
  std::error_code none;
  if (path != "-" && std::filesystem::file_size(path, none) > LongListBytes && !none) ReadListFile(path);
  std::string text = ReadFile(path, MostListBytes);
  bool isInComment = false;
  BlankComments(text.data(), text.data() + text.size(), isInComment);
  return text;
}

// A list of which the card has a part only is worse than none: somebody could run it.
void DeleteRest(Session& session, std::int32_t id) {
  session.Out.Remark("Interrupted: what the card has of list " + std::to_string(id) + " is being deleted.");
  if (vlListDelete(session.Card(), id, false) < 0) {
    const std::string text = LastError();
    std::int32_t status = 0;
    session.Check(vlListGetListStatus(session.Card(), id, &status));
    if (status != vlListStatus_NoSuchList) session.Fail(text);
  }
  session.Out.Remark("The card has no list " + std::to_string(id) + ".");
}

// Returns the number of commands; nothing when Ctrl-C came, and then nothing of the list stays on the card.
struct Sent {
  std::int32_t Commands;
  std::optional<double> Seconds;  // that its run is going to take
};

// As the simulation runs it with the card's process variables; nothing when it does not.
std::optional<double> ExpectedSeconds(Session& session, const std::string& text) {
  constexpr std::uint64_t MostCommands = 5'000'000;  // a moment's work
  try {
    Simulation::Stage stage;
    RecordJson::Form<ClientLib::ProcessVariables>::From(FindArea("process").Get(session), stage.Variables,
                                                        "process");
    stage.MostCommands = MostCommands;
    Simulation::NoCanvas canvas;
    const auto result =
        Simulation::Rehearsal(std::move(stage)).Run(1, ClientLib::CommandList::FromString(text), canvas);
    if (result.Error || result.Aborted) return std::nullopt;
    return result.Stats.ExecutionTime / 1e6;
  } catch (const std::exception&) {  // it is a mere help
    return std::nullopt;
  }
}

std::optional<Sent> Upload(Session& session, std::int32_t id, const std::string& path, bool isToRun,
                           const Interrupt& interrupt) {
  const std::string text = ReadList(path);
  const std::int64_t made = vlListAllocateFromString(session.Card(), text.c_str());
  if (made < 0) {
    const std::string error = LastError();
    ListText(path, text).ReadWhole();  // which throws with the place
    throw Refused("'" + path + "': " + error);
  }
  const LocalList list(session, made);
  const std::int32_t commands = vlListCommandCount(list.Handle);
  const Spinner spinner(session.Out, "Sending list " + std::to_string(id));
  const bool isSent = session.CheckUnlessInterrupted(interrupt, [card = session.Card(), id, &list] {
    return vlListSet(card, id, list.Handle, false, NoListField);
  });
  spinner.Stop();
  if (!isSent) {
    DeleteRest(session, id);
    return std::nullopt;
  }
  session.Out.Remark("List " + std::to_string(id) + ": " + std::to_string(commands) + " commands from '" +
                     path + "'.");
  return Sent{commands, isToRun && IsTerminal(session.Out) ? ExpectedSeconds(session, text) : std::nullopt};
}

ExitCode PutList(Session& session, const Arguments& given) {
  session.Card();  // until there is a connection Ctrl-C has nothing to leave in order
  const Interrupt interrupt;
  const bool isDone = Upload(session, given.Int32("ID"), given.Text("FILE"), false, interrupt).has_value();
  return isDone ? ExitCode::Done : ExitCode::Interrupted;
}

ExitCode GetList(Session& session, const Arguments& given) {
  const LocalList list(session, vlListAllocate(session.Card()));
  session.Check(vlListGet(session.Card(), given.Int32("ID"), list.Handle));
  std::string text(static_cast<std::size_t>(session.Check(vlListStringLen(list.Handle))) + 2, '\0');
  std::uint32_t length = 0;
  session.Check(vlListToString(list.Handle, text.data(), static_cast<std::uint32_t>(text.size()), &length));
  text.resize(length);
  if (given.Has("-o")) {
    WriteFile(given.Text("-o"), text + "\n");
  } else if (session.Out.AsJson) {
    session.Out.Print({{"list", given.Int32("ID")}, {"text", text}});
  } else {
    session.Out.Line(text);
  }
  return ExitCode::Done;
}

// Ends what runs on the card, waits until it is idle, and says so.
ExitCode AbortRun(Session& session) {
  session.Out.Remark("Interrupted: the execution on the card is being aborted.");
  session.Check(vlListAbortExecution(session.Card()));
  bool isRunning = true;
  while (isRunning) session.Check(vlListIsExecutionInProgress(session.Card(), &isRunning));
  session.Out.Remark("The card is idle.");
  return ExitCode::Interrupted;
}

// Returns false when it was interrupted.
bool RunOnce(Session& session, std::int32_t id, const Sent& sent, const Interrupt& interrupt) {
  const std::int32_t card = session.Card();
  Bar bar(session.Out, "Running list " + std::to_string(id), sent.Seconds);
  session.Check(vlListClearPendingEvents(card));
  session.Check(vlListExecute(card, id));
  std::int32_t ended = 0, caret = 0;
  while (session.Check(vlListWaitForListIdle(card, &ended, LookMs)) != 0) {
    if (interrupt.Came()) return false;
    if (sent.Commands > 0 && vlListGetListCaret(card, id, &caret) == 0 && caret >= 0)
      bar.Show(1.0 * caret / sent.Commands);
  }
  bar.Show(1);
  return true;
}

Json Statistics(Session& session) {
  vlListExecutionStats stats{};
  session.Check(vlListGetLastExecutionStats(session.Card(), &stats));
  return {{"macroVectors", stats.MacroVectors},
          {"microVectors", stats.MicroVectors},
          {"executionTime", stats.ExecutionTime},
          {"computationTime", stats.ComputationTime}};
}

// The card's text of an error during the run. The callback has come before the run's end is told.
std::string runError;

void NoteError(std::int32_t, std::int32_t, const char* text, std::uint32_t) {
  runError = text;
}

void ShowStatistics(const Output& out, const Json& statistics) {
  char text[200];
  std::snprintf(text, sizeof text, "List %d done: %d vectors in %.3f s.", statistics["list"].get<int>(),
                statistics["macroVectors"].get<int>(), statistics["executionTime"].get<double>() / 1e6);
  out.Line(text);
}

ExitCode RunFiles(Session& session, const Arguments& given) {
  const std::int64_t repeats = given.Has("--repeat") ? given.Whole("--repeat", 1, INT32_MAX) : 1;
  std::int32_t id = given.Has("--id") ? given.Int32("--id") : 1;
  Json runs = Json::array();
  session.Card();
  const Interrupt interrupt;
  std::uint32_t callback = 0;
  session.Check(vlListRegisterErrorEventCallback(session.Card(), &NoteError, &callback));
  for (const std::string& path : given.All("FILE")) {
    const auto sent = Upload(session, id, path, true, interrupt);
    if (!sent) return ExitCode::Interrupted;
    if (given.Has("--store")) session.Check(vlListStore(session.Card(), id));
    for (std::int64_t i = 0; i < repeats; ++i) {
      if (interrupt.Came() || !RunOnce(session, id, *sent, interrupt)) return AbortRun(session);
      if (!runError.empty()) throw Refused(WordsOf(runError));
      Json statistics = {{"list", id}, {"file", path}};
      statistics.update(Statistics(session));
      if (!session.Out.AsJson) ShowStatistics(session.Out, statistics);
      runs.push_back(std::move(statistics));
    }
    ++id;
  }
  if (session.Out.AsJson) session.Out.Print(runs);
  return ExitCode::Done;
}

template <std::int32_t (*Action)(std::int32_t, std::int32_t)>
ExitCode OnList(Session& session, const Arguments& given) {
  session.Check(Action(session.Card(), given.Int32("ID")));
  return ExitCode::Done;
}

ExitCode DeleteList(Session& session, const Arguments& given) {
  session.Check(vlListDelete(session.Card(), given.Int32("ID"), given.Has("--stored")));
  return ExitCode::Done;
}

std::string StatusName(std::int32_t status) {
  if (status == vlListStatus_NoSuchList) return "no such list";
  if (status == vlListStatus_Ready) return "ready";
  return status == vlListStatus_Running ? "running" : std::to_string(status);
}

ExitCode ShowLists(Session& session, const Arguments&) {
  std::vector<std::int32_t> ids(65536);
  std::uint32_t count = 0;
  session.Check(
      vlListGetStoredListIDs(session.Card(), ids.data(), static_cast<std::uint32_t>(ids.size()), &count));
  ids.resize(count);
  if (session.Out.AsJson) {
    session.Out.Print(Json(ids));
  } else {
    for (const std::int32_t id : ids) session.Out.Line(std::to_string(id));
  }
  return ExitCode::Done;
}

ExitCode ShowStatus(Session& session, const Arguments& given) {
  std::int32_t status = 0;
  session.Check(vlListGetListStatus(session.Card(), given.Int32("ID"), &status));
  session.Out.AsJson ? session.Out.Print({{"list", given.Int32("ID")}, {"status", StatusName(status)}})
                     : session.Out.Line(StatusName(status));
  return ExitCode::Done;
}

ExitCode ShowCaret(Session& session, const Arguments& given) {
  std::int32_t caret = 0;
  session.Check(vlListGetListCaret(session.Card(), given.Int32("ID"), &caret));
  session.Out.AsJson ? session.Out.Print({{"list", given.Int32("ID")}, {"caret", caret}})
                     : session.Out.Line(std::to_string(caret));
  return ExitCode::Done;
}

ExitCode AbortList(Session& session, const Arguments&) {
  session.Check(vlListAbortExecution(session.Card()));
  return ExitCode::Done;
}

constexpr Parameter ListId{"ID", "", "The list's number on the card"};

}  // namespace

std::span<const Verb> ListVerbs() {
  static const Verb Rows[] = {
      {"list run",
       "Upload lists and run them, one after another",
       {{"FILE", "", "Text of a list; - for standard input", Parameter::AtLeastOne},
        {"--repeat", "N", "Run each so many times"},
        {"--id", "ID", "Number on the card of the first list (1), those behind it count on"},
        {"--store", "", "Make the card store each list, too"}},
       &RunFiles},
      {"list put", "Upload a list", {ListId, {"FILE", "", "Text of a list; - for standard input"}}, &PutList},
      {"list get", "Fetch a list as text", {ListId, {"-o", "FILE", "Write into this file"}}, &GetList},
      {"list load", "Make a stored list one that the card can run", {ListId}, &OnList<vlListLoad>},
      {"list store", "Make the card store a list", {ListId}, &OnList<vlListStore>},
      {"list delete",
       "Delete a list on the card",
       {ListId, {"--stored", "", "What is stored of it, too"}},
       &DeleteList},
      {"list ls", "Show the numbers of the card's lists", {}, &ShowLists},
      {"list status", "Show the status of a list", {ListId}, &ShowStatus},
      {"list caret", "Show where the card is in a list", {ListId}, &ShowCaret},
      {"list abort", "End what runs on the card", {}, &AbortList},
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::Tool
