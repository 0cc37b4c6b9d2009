#include "CardFiles.h"

#include <fcntl.h>
#include <kelvo/kelvo.h>

#include <cerrno>
#include <system_error>

#include "common/Descriptor.h"
#include "services/FileEnums.h"

namespace VELTRO::KELVO::Tool {

namespace {

// Names of files may come while they are asked for.
constexpr std::size_t RoomForMore = 65536;

}  // namespace

bool Transfer::Show(void* user, std::uint64_t moved, std::uint64_t whole) {
  auto& self = *static_cast<Transfer*>(user);
  self.moved_ = moved;
  self.bar_.Show(whole == 0 ? 1 : static_cast<double>(moved) / static_cast<double>(whole));
  return !self.interrupt_.Came();
}

void Transfer::Run(const std::function<std::int32_t()>& call) {
  bool isInterrupted = false;
  try {
    isInterrupted = !session_.CheckUnlessInterrupted(interrupt_, call);
  } catch (...) {
    bar_.End();
    throw;
  }
  bar_.End();
  if (isInterrupted) throw Failure(ExitCode::Interrupted, "Interrupted.");
}

void CheckReadable(const std::string& path) {
  const ClientLib::Descriptor file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (file.Get() < 0)
    throw Refused("Cannot open '" + path + "': " + std::generic_category().message(errno) + ".");
}

std::vector<std::string> NamesIn(Session& session, std::int32_t directory) {
  std::uint32_t length = 0, count = 0;
  session.Check(vlFileGetFiles(session.Card(), directory, nullptr, 0, &length, &count));
  std::vector<char> names(length + RoomForMore);
  session.Check(vlFileGetFiles(session.Card(), directory, names.data(),
                               static_cast<std::uint32_t>(names.size()), &length, &count));
  std::vector<std::string> list;
  for (const char* name = names.data(); list.size() < count; name += list.back().size() + 1)
    list.emplace_back(name);
  return list;
}

std::string CardFile::Path() const {
  return ClientLib::DirectorySelector::_from_integral(Directory)._to_string() + ("/" + Name);
}

void SendFile(Session& session, const Interrupt& interrupt, const std::string& local,
              const CardFile& remote) {
  const auto& [directory, name] = remote;
  CheckReadable(local);
  bool wasThere = false, isThere = false;
  session.Check(vlFileExists(session.Card(), directory, name.c_str(), &wasThere));
  Transfer transfer(session, interrupt, "Sending '" + Clean(local) + "'");
  try {
    transfer.Run([&, card = session.Card()] {
      return vlFilePut(card, remote.Directory, remote.Name.c_str(), local.c_str(), &Transfer::Show,
                       &transfer);
    });
  } catch (const Failure& failure) {
    // A card that has refused the file from the beginning has what it had.
    const bool isAsked = vlFileExists(session.Card(), directory, name.c_str(), &isThere) == 0;
    if (isAsked && (!isThere || (wasThere && transfer.Moved() == 0))) throw;
    const bool isDeleted = isAsked && vlFileDelete(session.Card(), directory, name.c_str()) == 0;
    throw Failure(
        failure.Code, failure.what(),
        "'" + remote.Path() + "' " + (isDeleted ? "is not on the card." : "may be on the card in part."));
  }
}

void FetchFile(Session& session, const Interrupt& interrupt, const CardFile& remote,
               const std::string& local) {
  Transfer transfer(session, interrupt, "Fetching '" + Clean(remote.Path()) + "'");
  transfer.Run([&, card = session.Card()] {
    return vlFileGet(card, remote.Directory, remote.Name.c_str(), local.c_str(), &Transfer::Show, &transfer);
  });
}

}  // namespace VELTRO::KELVO::Tool
