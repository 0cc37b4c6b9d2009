#include "session/SessionReader.h"

#include <cerrno>
#include <system_error>

namespace VELTRO::KELVO::ClientLib::Recording {

SessionReader::SessionReader(const std::string& path) : path_(path), file_(path, std::ios::binary) {
  if (!file_) {
    const int reason = errno;
    throw std::runtime_error("Unable to open recording '" + path_ +
                             "': " + std::generic_category().message(reason));
  }
  const auto refuse = [&] { throw std::runtime_error("'" + path_ + "' is no recorded session."); };
  if (file_.peek() != '{') refuse();
  TakeText();
  std::int64_t version = 0;
  try {
    const Object members = ReadObject(text_);
    version = members.Get<std::int64_t>("kelvoSession");
    if (version == SessionVersion) {
      head_.By = members.Get<std::string>("by", "");
      head_.Firmware = members.Get<std::string>("firmware", "");
      head_.SerialNumber = members.Get<std::string>("serialNumber", "");
      head_.HasContent = members.Get<bool>("content", true);
      started_ = members.Get<std::string>("started", "");
    }
  } catch (const std::runtime_error&) {
    refuse();
  }
  if (version != SessionVersion) {
    throw std::runtime_error("'" + path_ + "' is a session of version " + std::to_string(version) +
                             "; this program reads version " + std::to_string(SessionVersion) + ".");
  }
}

std::optional<Line> SessionReader::Next() {
  if (!TakeText()) return std::nullopt;
  try {
    return ReadLine(text_);
  } catch (const std::runtime_error& error) {
    throw std::runtime_error(Place() + error.what());
  }
}

bool SessionReader::TakeText() {
  if (!std::getline(file_, text_)) {
    if (file_.bad()) throw std::runtime_error("Unable to read recording '" + path_ + "'.");
    return false;
  }
  ++lineNumber_;
  // A line's end is what it is written with last.
  if (file_.eof()) throw CutShort(Place() + "The recording ends in the middle of a line.");
  return true;
}

}  // namespace VELTRO::KELVO::ClientLib::Recording
