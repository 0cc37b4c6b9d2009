// files backup, files restore: all files of the card at once.
#include <algorithm>
#include <filesystem>
#include <functional>
#include <nlohmann/json.hpp>
#include <optional>

#include "CardFiles.h"
#include "Verb.h"
#include "common/ReplacedFile.h"
#include "services/FileEnums.h"

namespace VELTRO::KELVO::Tool {

namespace {

using ClientLib::DirectorySelector;
using std::filesystem::path;

struct Pair {
  CardFile Remote;
  path Local;
};

// A name that a card gave is one of a file in the directory, and of nothing else.
bool IsFileName(const std::string& name) {
  return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos &&
         !ClientLib::ReplacedFile::IsTemporary(name);
}

bool IsPlainFile(const path& local) {
  return std::filesystem::is_regular_file(std::filesystem::symlink_status(local));
}

// The local directory of one of the card's. Throws Failure when something else has its place.
void MakeDirectory(const path& local) {
  std::error_code error;
  std::filesystem::create_directory(local, error);
  if (error || !std::filesystem::is_directory(std::filesystem::symlink_status(local)))
    throw Refused("'" + local.string() + "' cannot be a directory of the backup.", error.message() + ".");
}

// Moves the files one after the other. What cannot be moved is left out and told at the end; what has been moved is
// told whatever ends it. `moved` says what happens: "fetched".
ExitCode MoveAll(Session& session, const std::vector<Pair>& pairs, const std::string& moved,
                 const std::function<void(const Interrupt&, const Pair&)>& move) {
  Json done = Json::array();
  std::string refusal;
  std::optional<Failure> end;
  const Interrupt interrupt;
  for (const Pair& pair : pairs) {
    const std::string name = pair.Remote.Path();
    try {
      if (interrupt.Came()) throw Failure(ExitCode::Interrupted, "Interrupted.");
      move(interrupt, pair);
      done.push_back(name);
      if (!session.Out.AsJson) session.Out.Line(Clean(name));
    } catch (const Failure& failure) {
      if (failure.Code != ExitCode::Refused) {
        end.emplace(failure.Code, failure.Told());
        break;
      }
      const std::string told = "'" + name + "': " + failure.Told();
      if (refusal.empty()) refusal = told;
      session.Out.Remark(Clean(std::string("Not ").append(moved).append(": ").append(told)));
    }
    std::fflush(stdout);
  }
  if (session.Out.AsJson) session.Out.Print(done);
  const std::string count =
      std::to_string(done.size()) + " of " + std::to_string(pairs.size()) + " files were " + moved;
  if (end) throw Failure(end->Code, end->what(), count + ".");
  if (!refusal.empty()) throw Refused(count + ". " + refusal);
  session.Out.Remark(count + ".");
  return ExitCode::Done;
}

ExitCode BackUp(Session& session, const Arguments& given) {
  const path top = given.Text("DIR");
  std::vector<Pair> pairs;
  for (const DirectorySelector directory : DirectorySelector::_values()) {
    for (std::string& name : NamesIn(session, directory._to_integral())) {
      const path local = top / directory._to_string() / name;
      pairs.push_back({{directory._to_integral(), std::move(name)}, local});
    }
  }
  std::error_code error;
  std::filesystem::create_directories(top, error);
  if (error) throw Refused("Cannot make '" + top.string() + "': " + error.message() + ".");
  for (const DirectorySelector directory : DirectorySelector::_values())
    MakeDirectory(top / directory._to_string());
  return MoveAll(session, pairs, "fetched", [&session](const Interrupt& interrupt, const Pair& pair) {
    const auto& [remote, local] = pair;
    if (!IsFileName(remote.Name)) throw Refused("This is no name for a local file.");
    if (exists(symlink_status(local)) && !IsPlainFile(local))
      throw Refused("'" + local.string() + "' is no plain file.");
    FetchFile(session, interrupt, remote, local);
  });
}

ExitCode Restore(Session& session, const Arguments& given) {
  const path top = given.Text("DIR");
  std::vector<Pair> pairs;
  bool isBackup = false;
  for (const DirectorySelector directory : DirectorySelector::_values()) {
    std::error_code error;
    std::filesystem::directory_iterator entries(top / directory._to_string(), error);
    isBackup = isBackup || !error;
    for (; !error && entries != std::filesystem::directory_iterator(); entries.increment(error)) {
      const std::string name = entries->path().filename();
      if (!ClientLib::ReplacedFile::IsTemporary(name))
        pairs.push_back({{directory._to_integral(), name}, entries->path()});
    }
    if (error && error != std::errc::no_such_file_or_directory)
      throw Refused("Cannot read '" + (top / directory._to_string()).string() + "': " + error.message() +
                    ".");
  }
  if (!isBackup) throw Refused("'" + top.string() + "' is no backup: it has no directory like JOBFILES.");
  std::ranges::sort(pairs, {}, &Pair::Local);
  session.Card();
  return MoveAll(session, pairs, "sent", [&session](const Interrupt& interrupt, const Pair& pair) {
    const auto& [remote, local] = pair;
    if (!IsPlainFile(local)) throw Refused("'" + local.string() + "' is no plain file.");
    SendFile(session, interrupt, local, remote);
  });
}

}  // namespace

std::span<const Verb> BackupVerbs() {
  static const Verb Rows[] = {
      {"files backup",
       "Fetch all files of the card into a local directory",
       {{"DIR", "", "The local directory; it gets one for each of the card's"}},
       &BackUp},
      {"files restore",
       "Send all files of a backup to the card; others that the card has stay",
       {{"DIR", "", "What 'files backup' has filled"}},
       &Restore},
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::Tool
