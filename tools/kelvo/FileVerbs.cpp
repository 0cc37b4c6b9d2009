// files: the card's directories.
#include <kelvo/kelvo.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "Interrupt.h"
#include "Session.h"
#include "SoundsLike.h"
#include "Spinner.h"
#include "Verb.h"
#include "services/FileEnums.h"

namespace VELTRO::KELVO::Tool {

namespace {

using ClientLib::DirectorySelector;

// Throws Failure, WrongUsage.
std::int32_t ParseDirectory(const std::string& name) {
  const auto known = DirectorySelector::_from_string_nothrow(name);
  if (known) return known->_to_integral();
  const std::vector<std::string> names(DirectorySelector::_names().begin(),
                                       DirectorySelector::_names().end());
  std::string hint = DidYouMean(name, names);
  if (hint.empty()) {
    hint = "There are";
    for (const std::string& one : names) hint += (&one == &names.front() ? " " : ", ") + one;
    hint += ".";
  }
  throw WrongUsage("There is no directory '" + Clean(name) + "'.", hint);
}

struct RemoteFile {
  std::int32_t Directory;
  std::string Name;
};

// "JOBFILES/plate.bin". Throws Failure, WrongUsage.
RemoteFile ParseRemote(const std::string& text) {
  const std::size_t slash = text.find('/');
  if (slash == std::string::npos || slash + 1 == text.size()) {
    throw WrongUsage("'" + Clean(text) + "' is no file of the card.",
                     "One is written like JOBFILES/plate.bin.");
  }
  return {ParseDirectory(text.substr(0, slash)), text.substr(slash + 1)};
}

std::vector<std::string> NamesIn(Session& session, std::int32_t directory) {
  std::vector<char> names(std::size_t{1} << 20);
  std::uint32_t length = 0, count = 0;
  session.Check(vlFileGetFiles(session.Card(), directory, names.data(),
                               static_cast<std::uint32_t>(names.size()), &length, &count));
  std::vector<std::string> list;
  for (const char* name = names.data(); list.size() < count; name += list.back().size() + 1)
    list.emplace_back(name);
  return list;
}

ExitCode ShowFiles(Session& session, const Arguments& given) {
  Json all = Json::object();
  std::vector<std::string> directories = given.All("DIRECTORY");
  if (directories.empty())
    directories.assign(DirectorySelector::_names().begin(), DirectorySelector::_names().end());
  for (const std::string& directory : directories)
    all[directory] = NamesIn(session, ParseDirectory(directory));
  if (session.Out.AsJson) {
    session.Out.Print(all);
    return ExitCode::Done;
  }
  for (const auto& [directory, names] : all.items()) {
    for (const Json& name : names) session.Out.Line(directory + "/" + Shown(name));
  }
  return ExitCode::Done;
}

bool ShowTransfer(void* bar, std::uint64_t moved, std::uint64_t all) {
  static_cast<Bar*>(bar)->Show(all == 0 ? 1 : static_cast<double>(moved) / static_cast<double>(all));
  return true;
}

ExitCode PutFile(Session& session, const Arguments& given) {
  const std::string &remote = given.Text("REMOTE"), &local = given.Text("LOCAL");
  const RemoteFile file = ParseRemote(remote);
  const std::int32_t card = session.Card();
  const Interrupt interrupt;
  Bar bar(session.Out, "Sending '" + local + "'");
  const bool isSent = session.CheckUnlessInterrupted(interrupt, [&] {
    return vlFilePut(card, file.Directory, file.Name.c_str(), local.c_str(), &ShowTransfer, &bar);
  });
  if (isSent) return ExitCode::Done;
  bar.End();
  session.Out.Remark("Interrupted: what the card has of '" + remote + "' is being deleted.");
  bool isThere = false;
  session.Check(vlFileExists(session.Card(), file.Directory, file.Name.c_str(), &isThere));
  if (isThere) session.Check(vlFileDelete(session.Card(), file.Directory, file.Name.c_str()));
  session.Out.Remark("The card has no '" + remote + "'.");
  return ExitCode::Interrupted;
}

ExitCode GetFile(Session& session, const Arguments& given) {
  const RemoteFile file = ParseRemote(given.Text("REMOTE"));
  // A name that a card gave never decides where a file goes.
  const std::string path =
      given.Has("-o") ? given.Text("-o") : std::filesystem::path(file.Name).filename().string();
  if (path.empty()) throw WrongUsage("Name the local file by -o.");
  const std::int32_t card = session.Card();
  const Interrupt interrupt;
  Bar bar(session.Out, "Fetching '" + given.Text("REMOTE") + "'");
  const bool isFetched = session.CheckUnlessInterrupted(interrupt, [&] {
    return vlFileGet(card, file.Directory, file.Name.c_str(), path.c_str(), &ShowTransfer, &bar);
  });
  if (isFetched) return ExitCode::Done;
  bar.End();
  session.Out.Remark("Interrupted: '" + path + "' is as it was.");
  return ExitCode::Interrupted;
}

ExitCode RemoveFiles(Session& session, const Arguments& given) {
  std::vector<RemoteFile> files;
  for (const std::string& text : given.All("REMOTE")) files.push_back(ParseRemote(text));
  for (const auto& [directory, name] : files)
    session.Check(vlFileDelete(session.Card(), directory, name.c_str()));
  return ExitCode::Done;
}

}  // namespace

std::span<const Verb> FileVerbs() {
  static const Verb Rows[] = {
      {"files ls",
       "Show the card's files",
       {{"DIRECTORY", "", "JOBFILES, LISTFILES, ...; all without any", Parameter::Any}},
       &ShowFiles},
      {"files put",
       "Send a file to the card",
       {{"LOCAL", "", "A local file"}, {"REMOTE", "", "JOBFILES/plate.bin"}},
       &PutFile},
      {"files get",
       "Fetch a file from the card",
       {{"REMOTE", "", "JOBFILES/plate.bin"}, {"-o", "FILE", "The local file; else of that name, here"}},
       &GetFile},
      {"files rm",
       "Delete files on the card",
       {{"REMOTE", "", "JOBFILES/plate.bin", Parameter::AtLeastOne}},
       &RemoveFiles},
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::Tool
