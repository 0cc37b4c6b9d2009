// files: the card's directories.
#include <kelvo/kelvo.h>

#include <filesystem>
#include <nlohmann/json.hpp>

#include "CardFiles.h"
#include "SoundsLike.h"
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

// "JOBFILES/plate.bin". Throws Failure, WrongUsage.
CardFile ParseRemote(const std::string& text) {
  const std::size_t slash = text.find('/');
  if (slash == std::string::npos || slash + 1 == text.size()) {
    throw WrongUsage("'" + Clean(text) + "' is no file of the card.",
                     "One is written like JOBFILES/plate.bin.");
  }
  return {ParseDirectory(text.substr(0, slash)), text.substr(slash + 1)};
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

ExitCode PutFile(Session& session, const Arguments& given) {
  const CardFile remote = ParseRemote(given.Text("REMOTE"));
  session.Card();
  SendFile(session, Interrupt(), given.Text("LOCAL"), remote);
  return ExitCode::Done;
}

ExitCode GetFile(Session& session, const Arguments& given) {
  const CardFile remote = ParseRemote(given.Text("REMOTE"));
  // A name that a card gave never decides where a file goes.
  const std::string path =
      given.Has("-o") ? given.Text("-o") : std::filesystem::path(remote.Name).filename().string();
  if (path.empty()) throw WrongUsage("Name the local file by -o.");
  session.Card();
  FetchFile(session, Interrupt(), remote, path);
  return ExitCode::Done;
}

ExitCode RemoveFiles(Session& session, const Arguments& given) {
  std::vector<CardFile> files;
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
