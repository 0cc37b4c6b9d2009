#include "services/FileHandle.h"

#include <algorithm>
#include <stdexcept>

#include "lists/Command.h"

namespace VELTRO::KELVO::ClientLib {

FileHandle::~FileHandle() {
  if (!isAnswering_) {
    caller_.Tell("FileClose", number_);
    return;
  }
  try {
    caller_.Call("FileClose", number_);
  } catch (...) {
    // Nobody is there to be told, and a connection that has ended has closed the file.
  }
}

void FileHandle::Write(const std::uint8_t* bytes, std::int32_t count) {
  constexpr auto Most = static_cast<std::int32_t>(MaxPacketSize);
  if (count <= Most) {
    Send(Bytes(bytes, bytes + std::max(count, 0)), count);
    return;
  }
  for (std::int32_t offset = 0, remaining = count; remaining > 0;) {
    const std::int32_t piece = std::min(Most, remaining);
    const std::int32_t length = piece - offset;  // sic: the oddity that the header tells of
    Bytes part(static_cast<std::size_t>(length));
    std::copy_n(bytes + offset, length, part.begin());
    Send(part, piece);
    remaining -= piece;
    offset += piece;
  }
}

void FileHandle::WriteText(std::string_view text) {
  constexpr std::size_t MostBytes = 0x7fffffff;
  if (text.size() > MostBytes) throw std::runtime_error("File is to large.");
  Call("FileWriteText", text);
}

}  // namespace VELTRO::KELVO::ClientLib
